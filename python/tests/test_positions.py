"""World positions from the package against the orvasf tool's `pose`, against forward
kinematics written here from the ASF/AMC and BVH texts themselves, and through a BVH round trip."""
import subprocess
import warnings

import numpy as np
import pytest

import orvasf
from conftest import SAMPLE_AMC, SAMPLE_ASF, SHARED_BVH, SHARED_PAIRS, TOOL, needs_shared_data, shared_bvh, shared_pair

CM_PER_INCH = 2.54


def tool_pose_rows(asf, amc, decimals=4):
    """The rows of `orvasf pose ASF AMC` for every frame, header dropped."""
    run = subprocess.run([TOOL, "pose", str(asf), str(amc), "--decimals", str(decimals)], capture_output=True,
                         text=True, check=True)
    return run.stdout.splitlines()[1:]


def formatted_like_the_tool(value):
    return "0.0000" if abs(value) < 0.00005 else f"{value:.4f}"


@needs_shared_data
@pytest.mark.parametrize("asf_name, amc_name", SHARED_PAIRS)
def test_positions_print_as_the_pose_command_prints_them(asf_name, amc_name):
    asf, amc = shared_pair(asf_name, amc_name)
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", orvasf.ReadWarning)
        motion = orvasf.load(asf, amc)
    positions = motion.positions()
    names = motion.skeleton.joint_names
    rows = tool_pose_rows(asf, amc)
    assert len(rows) == positions.shape[0] * positions.shape[1]
    expected = np.array([[float(v) for v in row.rsplit(",", 3)[1:]] for row in rows]).reshape(positions.shape)
    # The tool prints four decimals: every printed digit must agree.
    assert np.abs(positions - expected).max() <= 0.00005 + 1e-9
    # With nine, the positions themselves agree to 1e-6 cm.
    precise = np.array([[float(v) for v in row.rsplit(",", 3)[1:]] for row in tool_pose_rows(asf, amc, 9)])
    assert np.abs(positions - precise.reshape(positions.shape)).max() <= 1e-6
    for index, row in enumerate(rows):
        frame, joint = divmod(index, len(names))
        ours = ",".join([str(frame), names[joint]] + [formatted_like_the_tool(v) for v in positions[frame, joint]])
        assert row == ours


# --- Forward kinematics of ASF/AMC, from the file texts --------------------------------------------


def axis_rotation(axis, degrees):
    """Rotation matrices about axis 'x', 'y' or 'z' for an array of angles: (..., 3, 3)."""
    radians = np.radians(np.asarray(degrees, dtype=float))
    c, s = np.cos(radians), np.sin(radians)
    one, zero = np.ones_like(c), np.zeros_like(c)
    rows = {
        "x": [[one, zero, zero], [zero, c, -s], [zero, s, c]],
        "y": [[c, zero, s], [zero, one, zero], [-s, zero, c]],
        "z": [[c, -s, zero], [s, c, zero], [zero, zero, one]],
    }[axis]
    return np.moveaxis(np.array(rows), (0, 1), (-2, -1))


def rotation_in_order(axes, degrees):
    """The rotation that turns about axes[0] first, then axes[1], then axes[2]."""
    matrix = np.eye(3)
    for axis, angle in zip(axes, degrees):
        matrix = axis_rotation(axis.lower(), angle) @ matrix
    return matrix


def parse_asf(text):
    """Bones of an ASF text: name -> dict(direction, length, frame, dofs, children), and the units."""
    units = {"length": 1.0, "angle": "deg"}
    bones = {"root": {"direction": np.zeros(3), "length": 0.0, "children": []}}
    section, bone = None, None
    for line in text.splitlines():
        words = line.split()
        if not words or words[0].startswith("#"):
            continue
        if words[0].startswith(":"):
            section = words[0]
            continue
        key, values = words[0].lower(), words[1:]
        if section == ":units" and key in units:
            units[key] = float(values[0]) if key == "length" else values[0].lower()
        elif section == ":root":
            root = bones["root"]
            if key == "order":
                root["dofs"] = [v.lower() for v in values]
            elif key == "axis":
                root["axis_order"] = values[0]
            elif key == "orientation":
                root["axis"] = [float(v) for v in values]
        elif section == ":bonedata":
            if key == "begin":
                bone = {"children": [], "dofs": []}
            elif key == "end":
                bones[bone["name"]] = bone
            elif key == "name":
                bone["name"] = values[0]
            elif key == "direction":
                bone["direction"] = np.array([float(v) for v in values])
            elif key == "length":
                bone["length"] = float(values[0])
            elif key == "axis":
                bone["axis"], bone["axis_order"] = [float(v) for v in values[:3]], values[3]
            elif key == "dof":
                bone["dofs"] = [v.lower() for v in values]
        elif section == ":hierarchy" and key not in ("begin", "end"):
            bones[words[0]]["children"] += words[1:]
    angle_factor = 180.0 / np.pi if units["angle"].startswith("rad") else 1.0
    for bone in bones.values():
        bone["frame"] = rotation_in_order(bone["axis_order"], np.array(bone["axis"]) * angle_factor)
    return bones, units


def parse_amc(text):
    """bone name -> (frames, values) array of an AMC text, and whether its angles are radians."""
    frames, radians = [], False
    for line in text.splitlines():
        words = line.split()
        if not words or words[0].startswith("#"):
            continue
        if words[0].startswith(":"):
            radians = radians or words[0].upper() == ":RADIANS"
        elif words[0].isdigit():
            frames.append({})
        else:
            frames[-1][words[0]] = [float(v) for v in words[1:]]
    return {name: np.array([frame[name] for frame in frames]) for name in frames[0]}, radians


def asf_amc_world_positions(asf_text, amc_text):
    """joint name -> (frames, 3) world position in cm: each bone's joint and its leaves' ends ("_End")."""
    bones, units = parse_asf(asf_text)
    values, radians = parse_amc(amc_text)
    frame_count = len(values["root"])
    to_cm = CM_PER_INCH / units["length"]
    to_degrees = 180.0 / np.pi if radians else 1.0
    positions = {}

    def motion_of(bone, name):
        rotation, translation = np.broadcast_to(np.eye(3), (frame_count, 3, 3)), np.zeros((frame_count, 3))
        for column, dof in enumerate(bone["dofs"]):
            value = values[name][:, column] if name in values else np.zeros(frame_count)
            if dof.startswith("r"):
                rotation = axis_rotation(dof[1], value * to_degrees) @ rotation
            else:
                translation[:, "xyz".index(dof[1])] = value * to_cm
        return rotation, translation

    pending = [("root", np.broadcast_to(np.eye(3), (frame_count, 3, 3)), None)]
    while pending:
        name, parent_world, start = pending.pop()
        bone = bones[name]
        rotation, translation = motion_of(bone, name)
        world = parent_world @ bone["frame"] @ rotation @ bone["frame"].T
        start = translation if start is None else start
        end = start + world @ (bone["direction"] * bone["length"] * to_cm)
        positions[name] = start
        if not bone["children"] and bone["length"] > 0:
            positions[name + "_End"] = end
        pending += [(child, world, end) for child in bone["children"]]
    return positions


@needs_shared_data
@pytest.mark.parametrize("asf_name, amc_name", [
    ("cmu_09-run", "cmu_09_06-run"),
    ("cmu_16", "cmu_16_15"),
    ("cmu02_fzzzz_walk_vs", "cmu02_02_01_walk"),
    ("mo_mjackson", "mo_131_04_crlf"),
])
@pytest.mark.parametrize("setup", [{}, {"rotation_offset": True, "pre_rotation": True}])
def test_positions_equal_forward_kinematics_of_the_asf_and_amc_texts(asf_name, amc_name, setup):
    asf, amc = shared_pair(asf_name, amc_name)
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", orvasf.ReadWarning)
        motion = orvasf.load(asf, amc, **setup)
    expected = asf_amc_world_positions(asf.read_text(encoding="latin-1"), amc.read_text(encoding="latin-1"))
    positions = motion.positions()
    names = motion.skeleton.joint_names
    assert sorted(names) == sorted(expected)
    difference = max(np.abs(positions[:, j] - expected[name]).max() for j, name in enumerate(names))
    assert difference < 1e-4


# --- Forward kinematics of BVH, from the file text -------------------------------------------------


def bvh_world_positions(text):
    """joint name -> (frames, 3) world position of a BVH text; End Sites as "JOINT_End"."""
    words = text.split()
    joints, stack, at = [], [], 0
    while words[at].upper() != "MOTION":
        word = words[at].upper()
        if word in ("ROOT", "JOINT"):
            joints.append({"name": words[at + 1], "parent": stack[-1] if stack else None, "channels": []})
            at += 2
        elif word == "END":
            joints.append({"name": joints[stack[-1]]["name"] + "_End", "parent": stack[-1], "channels": []})
            at += 2
        elif word == "{":
            stack.append(len(joints) - 1)
            at += 1
        elif word == "}":
            stack.pop()
            at += 1
        elif word == "OFFSET":
            joints[-1]["offset"] = np.array([float(v) for v in words[at + 1:at + 4]])
            at += 4
        elif word == "CHANNELS":
            count = int(words[at + 1])
            joints[-1]["channels"] = [c.lower() for c in words[at + 2:at + 2 + count]]
            at += 2 + count
        else:  # HIERARCHY, Site
            at += 1
    frame_count = int(words[at + 2])
    first = at + 6  # MOTION Frames: N Frame Time: T
    channel_count = sum(len(j["channels"]) for j in joints)
    # The values as the file gives them, at the single precision animation curves keep.
    values = np.array(words[first:first + frame_count * channel_count], dtype=np.float32).astype(float)
    values = values.reshape(frame_count, channel_count)
    positions, worlds, column = {}, {}, 0
    for index, joint in enumerate(joints):
        local_rotation = np.broadcast_to(np.eye(3), (frame_count, 3, 3))
        translation = np.broadcast_to(joint["offset"], (frame_count, 3)).copy()
        for channel in joint["channels"]:
            if channel.endswith("rotation"):
                local_rotation = local_rotation @ axis_rotation(channel[0], values[:, column])
            else:
                translation[:, "xyz".index(channel[0])] += values[:, column]
            column += 1
        parent = joint["parent"]
        if parent is None:
            worlds[index], positions[joint["name"]] = local_rotation, translation
        else:
            worlds[index] = worlds[parent] @ local_rotation
            positions[joint["name"]] = positions[joints[parent]["name"]] + (worlds[parent] @ translation[..., None])[..., 0]
    return positions


def largest_difference(motion, expected):
    positions = motion.positions()
    return max(np.abs(positions[:, j] - expected[name]).max() for j, name in enumerate(motion.skeleton.joint_names))


@needs_shared_data
@pytest.mark.parametrize("name", SHARED_BVH)
def test_bvh_positions_equal_forward_kinematics_of_the_bvh_text(name):
    path = shared_bvh(name)
    motion = orvasf.read_bvh(path)
    expected = bvh_world_positions(path.read_text(encoding="latin-1"))
    assert sorted(motion.skeleton.joint_names) == sorted(expected)
    assert largest_difference(motion, expected) < 1e-6


@needs_shared_data
@pytest.mark.parametrize("asf_name, amc_name", SHARED_PAIRS)
def test_written_bvh_reads_back_to_the_same_positions(tmp_path, asf_name, amc_name):
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", orvasf.ReadWarning)
        motion = orvasf.load(*shared_pair(asf_name, amc_name))
    motion.to_bvh(tmp_path / "out.bvh")
    again = orvasf.read_bvh(tmp_path / "out.bvh")
    assert again.skeleton.joint_names == motion.skeleton.joint_names
    assert again.frame_count == motion.frame_count and again.fps == pytest.approx(motion.fps)
    # Nine significant digits in the file, single precision in the curves read back.
    assert np.abs(again.positions() - motion.positions()).max() < 1e-5
    # The written file means the same to the forward kinematics written above.
    expected = bvh_world_positions((tmp_path / "out.bvh").read_text())
    assert largest_difference(motion, expected) < 1e-5


def test_a_slice_written_as_bvh_keeps_its_frames_and_frame_rate(tmp_path):
    motion = orvasf.load(SAMPLE_ASF, SAMPLE_AMC)
    view = motion[3::4]
    view.to_bvh(tmp_path / "slice.bvh")
    again = orvasf.read_bvh(tmp_path / "slice.bvh")
    assert again.frame_count == len(range(3, motion.frame_count, 4))
    assert again.fps == pytest.approx(30.0)
    assert np.abs(again.positions() - motion.positions()[3::4]).max() < 1e-3


@needs_shared_data
@pytest.mark.parametrize("asf_name, amc_name", [("cmu_09-run", "cmu_09_06-run")])
def test_written_asf_and_amc_read_back_to_the_same_positions(tmp_path, asf_name, amc_name):
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", orvasf.ReadWarning)
        motion = orvasf.load(*shared_pair(asf_name, amc_name))
    view = motion[10:100:3]
    view.to_amc(tmp_path / "out.amc")
    again = orvasf.load(tmp_path / "out.asf", tmp_path / "out.amc", fps=view.fps)
    assert again.frame_count == view.frame_count
    ours = dict(zip(view.skeleton.joint_names, np.moveaxis(view.positions(), 1, 0)))
    theirs = dict(zip(again.skeleton.joint_names, np.moveaxis(again.positions(), 1, 0)))
    assert sorted(ours) == sorted(theirs)
    shared = list(ours)
    assert max(np.abs(ours[name] - theirs[name]).max() for name in shared) < 1e-3
    # The written skeleton means the same to the forward kinematics written above.
    expected = asf_amc_world_positions((tmp_path / "out.asf").read_text(), (tmp_path / "out.amc").read_text())
    assert max(np.abs(ours[name] - expected[name]).max() for name in shared) < 1e-3


def test_a_skeleton_written_as_asf_reads_back_to_the_same_rest_pose(tmp_path):
    # The skeleton of a motion: its rest pose, not the motion's first frame, is written.
    skeleton = orvasf.load(SAMPLE_ASF, SAMPLE_AMC).skeleton
    skeleton.to_asf(tmp_path / "rest.asf")
    again = orvasf.read_asf(tmp_path / "rest.asf")
    rest = dict(zip(skeleton.joint_names, orvasf.load(SAMPLE_ASF).positions()[0]))
    written = dict(zip(again.joint_names, orvasf.load(tmp_path / "rest.asf").positions()[0]))
    assert sorted(rest) == sorted(written)
    assert max(np.abs(rest[name] - written[name]).max() for name in written) < 1e-3
