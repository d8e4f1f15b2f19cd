"""Reading through the package: the shapes and meaning of what it returns, bad arguments, refused
files with their line, warnings, memory over many refused reads, the fuzz seeds, and reading
side by side in threads."""
import codecs
import concurrent.futures
import pathlib
import subprocess
import sys
import warnings

import numpy as np
import pytest

import orvasf
from conftest import SAMPLE_AMC, SAMPLE_ASF, SOURCE_DIR, needs_shared_data, shared_pair


@pytest.fixture(scope="module")
def walk():
    return orvasf.load(SAMPLE_ASF, SAMPLE_AMC)


def line_of(text, fragment):
    """1-based number of the line of text holding fragment."""
    return text[:text.index(fragment)].count("\n") + 1


def test_the_sample_walk_has_the_skeletons_joints_and_every_frame(walk):
    # The sample's tree, as the ASF hierarchy draws it (end nodes under the leaves):
    #   root - lhipjoint - lfemur - ltibia - lfoot - lfoot_End
    #        - rhipjoint - ...   (mirror)
    #        - lowerback - upperback - neck - head - head_End
    #                                         - lclavicle - ... / rclavicle - ...
    skeleton = walk.skeleton
    names = skeleton.joint_names
    assert walk.frame_count == len(walk) == 240 and walk.fps == 120.0
    assert names[:6] == ["root", "lhipjoint", "lfemur", "ltibia", "lfoot", "lfoot_End"]
    assert [names[p] for p in skeleton.parents[1:6]] == names[:5]
    assert names[skeleton.parents[names.index("lclavicle")]] == "upperback"
    assert skeleton.parents[0] == -1 and all(skeleton.parents[1:] < np.arange(1, len(names)))
    assert skeleton.dofs["lfemur"] == ("rx", "ry", "rz") and skeleton.dofs["lhipjoint"] == ()
    assert skeleton.units == {"mass": 1.0, "length": 0.45, "angle": 1.0}
    assert np.allclose(walk.times, np.arange(240) / 120.0)
    assert walk.positions().shape == (240, len(names), 3)
    assert walk.global_transforms().shape == (240, len(names), 4, 4)


def test_rest_offsets_add_up_to_the_rest_pose_of_a_skeleton_without_motion():
    rest = orvasf.load(SAMPLE_ASF)
    skeleton = rest.skeleton
    expected = np.zeros((len(skeleton.joint_names), 3))
    for joint, parent in enumerate(skeleton.parents):
        expected[joint] = skeleton.offsets[joint] + (expected[parent] if parent >= 0 else 0.0)
    assert rest.frame_count == 1
    assert np.allclose(rest.positions()[0], expected, atol=1e-9)
    # The sample's lfemur bone is 7.1 length units (0.45 inch each) long.
    femur = skeleton.joint_names.index("ltibia")
    assert np.linalg.norm(skeleton.offsets[femur]) == pytest.approx(7.1 / 0.45 * 2.54)


def test_arrays_own_their_memory_and_units_scale_them(walk):
    positions = walk.positions()
    assert positions.flags.owndata and positions.flags.c_contiguous and positions.dtype == np.float64
    assert np.allclose(walk.positions(unit="m"), positions / 100.0)
    assert np.allclose(walk.positions(unit="in"), positions / 2.54)


def test_slices_are_the_frames_they_name(walk):
    positions = walk.positions()
    for frames in [slice(10, 20), slice(None, None, 7), slice(-5, None), slice(100, 50), slice(3, 200, 3)]:
        view = walk[frames]
        assert np.array_equal(view.positions(), positions[frames])
        assert np.array_equal(view.times, walk.times[frames])
    assert np.array_equal(walk[5:100:2][10:20:3].positions(), positions[5:100:2][10:20:3])
    assert np.array_equal(walk[-1].positions()[0], positions[-1])
    assert walk[::4].fps == 30.0


def test_global_transforms_carry_the_positions_and_local_rotations_compose_them(walk):
    globals_ = walk.global_transforms()
    assert np.array_equal(globals_[..., :3, 3], walk.positions())
    locals_ = walk.local_rotations(kind="matrix")
    parents = walk.skeleton.parents
    # The world rotation of every joint is its parent's times its own local rotation.
    composed = np.einsum("fjab,fjbc->fjac", globals_[:, parents[1:], :3, :3], locals_[:, 1:])
    assert np.abs(composed - globals_[:, 1:, :3, :3]).max() < 1e-9


def rotation_about(axis, degrees):
    c, s = np.cos(np.radians(degrees)), np.sin(np.radians(degrees))
    i, j = [(1, 2), (2, 0), (0, 1)][axis]
    matrix = np.eye(3)
    matrix[i, i], matrix[i, j], matrix[j, i], matrix[j, j] = c, -s, s, c
    return matrix


def test_euler_angles_and_quaternions_describe_the_local_rotation_matrices(walk):
    matrices = walk.local_rotations(kind="matrix")
    eulers = walk.local_rotations(kind="euler")
    quats = walk.local_rotations(kind="quat")
    for frame in (0, 77, 239):
        for joint, order in enumerate(walk.skeleton.rotation_orders):
            built = np.eye(3)
            for letter in order:
                axis = "XYZ".index(letter)
                built = rotation_about(axis, eulers[frame, joint, axis]) @ built
            assert np.allclose(built, matrices[frame, joint], atol=1e-9)
            w, x, y, z = quats[frame, joint]
            from_quat = np.array([[1 - 2 * (y * y + z * z), 2 * (x * y - w * z), 2 * (x * z + w * y)],
                                  [2 * (x * y + w * z), 1 - 2 * (x * x + z * z), 2 * (y * z - w * x)],
                                  [2 * (x * z - w * y), 2 * (y * z + w * x), 1 - 2 * (x * x + y * y)]])
            assert w >= 0 and np.allclose(from_quat, matrices[frame, joint], atol=1e-9)


@pytest.mark.parametrize("call, error, text", [
    (lambda m: orvasf.read_asf(42), TypeError, "path must be a path"),
    (lambda m: orvasf.read_amc(SAMPLE_AMC, "walker.asf"), TypeError, "orvasf.Skeleton"),
    (lambda m: orvasf.read_amc(SAMPLE_AMC, orvasf.read_bvh(SOURCE_DIR / "missing.bvh")), orvasf.ReadError, ""),
    (lambda m: orvasf.load(SAMPLE_ASF, SAMPLE_AMC, fps=0), ValueError, "fps"),
    (lambda m: orvasf.load(SAMPLE_ASF, SAMPLE_AMC, fps=float("nan")), ValueError, "fps"),
    (lambda m: orvasf.load(SAMPLE_ASF, SAMPLE_AMC, fps="fast"), TypeError, "incompatible"),
    (lambda m: orvasf.load(SAMPLE_ASF, SAMPLE_AMC, rotation_filter="smooth"), ValueError, "rotation_filter"),
    (lambda m: orvasf.load(SAMPLE_ASF, SAMPLE_AMC, threads=-1), ValueError, "threads"),
    (lambda m: orvasf.load(SAMPLE_ASF, SAMPLE_AMC, turbo=True), TypeError, "turbo"),
    (lambda m: m.positions(unit="km"), ValueError, "unit"),
    (lambda m: m.local_rotations(kind="axis-angle"), ValueError, "kind"),
    (lambda m: m[::-1], ValueError, "reversed"),
    (lambda m: m[240], IndexError, "outside"),
    (lambda m: m["x"], TypeError, "incompatible"),
    (lambda m: m.to_bvh(SOURCE_DIR / "no such folder" / "x.bvh"), OSError, "no such folder"),
])
def test_bad_arguments_raise_the_matching_python_error(walk, call, error, text):
    with pytest.raises(error, match=text):
        call(walk)


def utf16(text):
    return codecs.BOM_UTF16_LE + text.encode("utf-16-le")


SAMPLE_ASF_TEXT = SAMPLE_ASF.read_text()
SAMPLE_AMC_TEXT = SAMPLE_AMC.read_text()
BAD_VALUE_AMC = SAMPLE_AMC_TEXT.replace("\nltibia ", "\nltibia five ", 1)
NUL_AMC = SAMPLE_AMC_TEXT.replace("\nhead ", "\nhead\0 ", 1)


def sample_bvh(tmp_path):
    orvasf.load(SAMPLE_ASF, SAMPLE_AMC)[:3].to_bvh(tmp_path / "good.bvh")
    return (tmp_path / "good.bvh").read_text()


def short_frame_line(text):
    lines = text.split("\n")
    lines[-2] = lines[-2].rsplit(" ", 1)[0]
    return "\n".join(lines), len(lines) - 1


# (reader, file contents or a function of a good BVH text giving (contents, line), error line;
# None: any line).
HOSTILE_FILES = [
    ("asf", "", None),
    ("asf", bytes(range(256)) * 8, None),
    ("asf", utf16(SAMPLE_ASF_TEXT), 1),
    ("asf", SAMPLE_ASF_TEXT[:SAMPLE_ASF_TEXT.index(":hierarchy")], None),
    ("amc", "", 0),
    ("amc", "# nothing yet\n:FULLY-SPECIFIED\n:DEGREES\n", 3),
    ("amc", utf16(SAMPLE_AMC_TEXT), 1),
    ("amc", BAD_VALUE_AMC, line_of(BAD_VALUE_AMC, "ltibia five")),
    ("amc", NUL_AMC, line_of(NUL_AMC, "head\0")),
    ("bvh", "", None),
    ("bvh", "HIERARCHY\nROOT hips\n{\n  OFFSET 0 0 zero\n", 4),
    ("bvh", short_frame_line, "from case"),
]


@pytest.mark.parametrize("reader, contents, line", HOSTILE_FILES)
def test_refused_files_raise_read_error_naming_file_and_line(tmp_path, reader, contents, line):
    if callable(contents):
        contents, line = contents(sample_bvh(tmp_path))
    path = tmp_path / f"bad.{reader}"
    path.write_bytes(contents if isinstance(contents, bytes) else contents.encode())
    read = {"asf": orvasf.read_asf, "amc": lambda p: orvasf.load(SAMPLE_ASF, p), "bvh": orvasf.read_bvh}[reader]
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", orvasf.ReadWarning)
        with pytest.raises(orvasf.ReadError) as raised:
            read(path)
    error = raised.value
    assert isinstance(error, ValueError) and error.file == str(path)
    if line is not None:
        assert error.line == line
    where = f"{path}:{error.line}: error: " if error.line else f"{path}: error: "
    assert any(message.startswith(where) for message in error.messages), error.messages


def test_warnings_arrive_through_the_warnings_module_with_file_and_line(tmp_path):
    text = SAMPLE_AMC_TEXT.replace("\nhead ", "\nlthumb 1 2\nhead ", 1)
    (tmp_path / "extra.amc").write_text(text)
    with pytest.warns(orvasf.ReadWarning) as caught:
        orvasf.load(SAMPLE_ASF, tmp_path / "extra.amc")
    line = line_of(text, "lthumb")
    assert [str(w.message).split(" warning: ")[0] for w in caught] == [f"{tmp_path / 'extra.amc'}:{line}:"]
    assert caught[0].filename == __file__


def resident_bytes():
    with open("/proc/self/statm") as statm:
        return int(statm.read().split()[1]) * 4096


def test_a_thousand_refused_reads_do_not_grow_resident_memory(tmp_path):
    # A motion refused at its last frame: every frame before it was sampled into curves.
    last_frame = SAMPLE_AMC_TEXT.rindex("\nltibia ")
    (tmp_path / "late.amc").write_text(SAMPLE_AMC_TEXT[:last_frame] + "\nltibia five\n")
    (tmp_path / "cut.asf").write_text(SAMPLE_ASF_TEXT[:SAMPLE_ASF_TEXT.index(":hierarchy")])

    def refuse(count):
        for _ in range(count):
            for read in (lambda: orvasf.load(SAMPLE_ASF, tmp_path / "late.amc"),
                         lambda: orvasf.read_asf(tmp_path / "cut.asf")):
                with pytest.raises(orvasf.ReadError):
                    read()

    refuse(50)
    before = resident_bytes()
    refuse(500)
    assert resident_bytes() - before < 2 << 20


def fuzz_seeds(tmp_path):
    subprocess.run([sys.executable, str(SOURCE_DIR / "fuzz" / "make_corpus.py"), str(tmp_path / "seeds")], check=True)
    return tmp_path / "seeds"


def test_the_fuzz_seeds_read_through_every_entry_point_without_crashing(tmp_path):
    # Each seed is a flags byte (remove dummies, rotation offset, pre-rotation) and the text,
    # with "@amc" between skeleton and motion where both are given.
    seeds = fuzz_seeds(tmp_path)
    outcomes = {"read": 0, "refused": 0}

    def attempt(read, *paths, flags=0):
        settings = {"remove_dummy": bool(flags & 1), "rotation_offset": bool(flags & 2),
                    "pre_rotation": bool(flags & 4)}
        try:
            motion = read(*paths, **settings) if read is orvasf.load else read(*paths)
            # A few frames: a seed's frame numbers may span billions of frames.
            motion[:3].positions(), motion[-3:].local_rotations(kind="quat"), motion.skeleton.offsets
            outcomes["read"] += 1
        except orvasf.ReadError:
            outcomes["refused"] += 1

    with warnings.catch_warnings():
        warnings.simplefilter("ignore", orvasf.ReadWarning)
        for seed in sorted(seeds.rglob("*")):
            if not seed.is_file():
                continue
            data = seed.read_bytes()
            flags, text = (data[0], data[1:]) if seed.parent.name != "fuzz_textfile" else (0, data)
            skeleton, _, motion = text.partition(b"\n@amc\n")
            (tmp_path / "s.asf").write_bytes(skeleton)
            (tmp_path / "m.amc").write_bytes(motion or text)
            (tmp_path / "t.bvh").write_bytes(text)
            attempt(orvasf.load, tmp_path / "s.asf", flags=flags)
            attempt(orvasf.load, tmp_path / "s.asf" if motion else SAMPLE_ASF, tmp_path / "m.amc", flags=flags)
            attempt(orvasf.read_bvh, tmp_path / "t.bvh")
    assert outcomes["read"] > 0 and outcomes["refused"] > 0


@needs_shared_data
def test_sampling_threads_give_the_positions_of_one_thread():
    # 471 frames: long enough for the reader to hand frames to sampling threads.
    files = shared_pair("cmu_16", "cmu_16_15")
    alone = orvasf.load(*files, threads=1).positions()
    assert np.array_equal(orvasf.load(*files, threads=2).positions(), alone)


def test_threads_read_side_by_side_with_the_results_of_one_thread(tmp_path):
    expected = orvasf.load(SAMPLE_ASF, SAMPLE_AMC).positions()
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        results = list(pool.map(lambda _: orvasf.load(SAMPLE_ASF, SAMPLE_AMC).positions(), range(8)))
    assert all(np.array_equal(result, expected) for result in results)


# --- Raw channels, against the file texts read here ------------------------------------------------


def amc_lines(path):
    """frame index -> {bone: values} of an AMC text, frames counted from the first frame number."""
    frames, first = {}, None
    for line in pathlib.Path(path).read_text(encoding="latin-1").splitlines():
        words = line.split()
        if not words or words[0].startswith(("#", ":")):
            continue
        if words[0].isdigit():
            first = int(words[0]) if first is None else first
            current = frames.setdefault(int(words[0]) - first, {})
        else:
            current[words[0]] = [float(v) for v in words[1:]]
    return frames


def test_amc_channels_are_the_values_the_file_writes_in_the_skeletons_dof_order(walk):
    names, values = walk.channels()
    assert names[:6] == ["root.tx", "root.ty", "root.tz", "root.rx", "root.ry", "root.rz"]
    assert values.shape == (walk.frame_count, len(names))
    expected = np.full(values.shape, np.nan)
    for index, bones in amc_lines(SAMPLE_AMC).items():
        for column, name in enumerate(names):
            bone, dof = name.split(".")
            if bone in bones:
                expected[index, column] = bones[bone][walk.skeleton.dofs[bone].index(dof)]
    np.testing.assert_array_equal(values, expected)
    # A slice reads the frames it names.
    part_names, part = walk[10:40:3].channels()
    assert part_names == names
    np.testing.assert_array_equal(part, values[10:40:3])


@needs_shared_data
def test_bvh_channels_are_the_files_motion_values_as_floats():
    from conftest import shared_bvh
    path = shared_bvh("cgspeed_01_01")
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", orvasf.ReadWarning)
        motion = orvasf.read_bvh(path)
    names, values = motion.channels()
    # The file's own channel list, read here: joint and channel per column of its MOTION lines.
    text = path.read_text(encoding="latin-1").split("MOTION")
    columns, joint = [], None
    for line in text[0].splitlines():
        words = line.split()
        if words[:1] in (["ROOT"], ["JOINT"]):
            joint = words[1]
        elif words[:1] == ["CHANNELS"]:
            columns += [f"{joint}.{channel}" for channel in words[2:]]
    rows = [line.split() for line in text[1].splitlines()[3:] if line.strip()]
    data = np.array(rows[:motion.frame_count], dtype=float).astype(np.float32).astype(float)
    assert sorted(names) == sorted(columns)
    for column, name in enumerate(names):
        np.testing.assert_array_equal(values[:, column], data[:, columns.index(name)], err_msg=name)
