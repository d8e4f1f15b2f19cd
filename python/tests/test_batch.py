"""`orvasf batch` read back with Python's own parsers: `--to npy` arrays load with NumPy to the
positions `pose` prints, in metres, with the joints named in the JSON beside each; the manifest's
JSON holds the CSV's rows."""
import csv
import json
import pathlib
import shlex
import shutil
import subprocess

import numpy as np
import pytest

import orvasf
from conftest import DATA_DIR, SAMPLE_AMC, SAMPLE_ASF, TOOL, shared_pair


def pose_positions(asf, amc):
    """`pose` with nine decimals as frames x joints x 3 centimetres, and the joint names."""
    run = subprocess.run([TOOL, "pose", str(asf), str(amc), "--decimals", "9"], capture_output=True, text=True,
                         check=True)
    rows = [row.split(",") for row in run.stdout.splitlines()[1:]]
    frames = int(rows[-1][0]) + 1
    names = [row[1] for row in rows[: len(rows) // frames]]
    return np.array([[float(v) for v in row[2:]] for row in rows]).reshape(frames, len(names), 3), names


def batch_npy(tmp_path, asf, amc, *options):
    """Runs batch over a subject folder of links to asf and amc; returns the array and its JSON."""
    subject = tmp_path / "in" / "01"
    subject.mkdir(parents=True)
    (subject / "01.asf").symlink_to(pathlib.Path(asf).resolve())
    (subject / "01_01.amc").symlink_to(pathlib.Path(amc).resolve())
    subprocess.run([TOOL, "batch", str(tmp_path / "in"), "-o", str(tmp_path / "out"), "--to", "npy", *options],
                   capture_output=True, check=True)
    out = tmp_path / "out" / "01"
    return np.load(out / "01_01.npy"), json.loads((out / "01_01.json").read_text()), out / "01_01.npy"


MOTIONS = [pytest.param(SAMPLE_ASF, SAMPLE_AMC, id="walker")] + [
    pytest.param(*shared_pair(asf, amc), id=amc,
                 marks=pytest.mark.skipif(not DATA_DIR.is_dir(), reason=f"no shared motion files at {DATA_DIR}"))
    for asf, amc in [("cmu_07-walk", "cmu_07_05-walk"), ("cmu_131-dance", "cmu_131_04-dance")]
]


@pytest.mark.parametrize("asf, amc", MOTIONS)
def test_array_holds_the_pose_positions_in_metres(tmp_path, asf, amc):
    array, description, path = batch_npy(tmp_path, asf, amc)
    expected, names = pose_positions(asf, amc)
    assert array.dtype == np.dtype("<f4") and array.shape == expected.shape
    assert np.abs(array - expected / 100).max() <= 1e-6
    assert description["joints"] == names
    assert description["frames"] == expected.shape[0] and description["fps"] == 120 and description["units"] == "m"
    # Every joint's parent comes before it, and the first joint is the top.
    assert description["parents"][0] == -1
    assert all(0 <= parent < joint for joint, parent in enumerate(description["parents"][1:], start=1))
    # The data starts at a multiple of 64 bytes: the header is padded as the format asks.
    assert (path.stat().st_size - array.nbytes) % 64 == 0


def test_resampled_array_keeps_every_fourth_frame_at_a_quarter_of_the_rate(tmp_path):
    array, description, _ = batch_npy(tmp_path, SAMPLE_ASF, SAMPLE_AMC, "--resample", "30")
    expected, _ = pose_positions(SAMPLE_ASF, SAMPLE_AMC)
    assert description["fps"] == 30 and array.shape[0] == 60
    assert np.abs(array - expected[::4] / 100).max() <= 1e-6


def one_good_one_broken(tmp_path):
    """in/01/01.asf 01_01.amc (the walker) and 01_02.amc (a root value that is not a number)."""
    subject = tmp_path / "in" / "01"
    subject.mkdir(parents=True)
    (subject / "01.asf").write_bytes(pathlib.Path(SAMPLE_ASF).read_bytes())
    motion = pathlib.Path(SAMPLE_AMC).read_text()
    (subject / "01_01.amc").write_text(motion)
    (subject / "01_02.amc").write_text(motion.replace("root 0 16.9 0 0 0 0", "root 0 abc 0 0 0 0"))


def test_manifest_json_holds_the_csv_rows_with_numbers_as_numbers(tmp_path):
    one_good_one_broken(tmp_path)
    run = subprocess.run([TOOL, "batch", str(tmp_path / "in"), "-o", str(tmp_path / "out"), "--to", "bvh",
                          "--resample", "50", "--manifest-json"], capture_output=True)
    assert run.returncode == 1
    with open(tmp_path / "out" / "manifest.csv", newline="") as table:
        rows = list(csv.DictReader(table))
    records = json.loads((tmp_path / "out" / "manifest.json").read_text())
    assert [record["output"] for record in records] == ["01/01_01.bvh", "01/01_02.bvh"]
    for row, record in zip(rows, records):
        assert list(record) == list(row)
        for name, text in row.items():
            assert record[name] == (text if isinstance(record[name], str) else pytest.approx(float(text)))
    assert (records[0]["frames"], records[0]["fps"], records[0]["status"]) == (100, 50, "ok")
    assert records[1]["status"] == "failed" and ":5: error: " in records[1]["message"]


@pytest.mark.skipif(shutil.which("script") is None, reason="util-linux script is not installed")
def test_on_a_terminal_one_progress_line_counts_files_and_failures(tmp_path):
    one_good_one_broken(tmp_path)
    command = shlex.join([TOOL, "batch", str(tmp_path / "in"), "-o", str(tmp_path / "out"), "--to", "bvh"])
    # script runs the tool on a pseudo-terminal and copies what it shows.
    shown = subprocess.run(["script", "-qec", command, "/dev/null"], capture_output=True).stdout.decode()
    assert "\rbatch: 2/2 files, " in shown and " frames/s, " in shown and " s left, 1 failed\x1b[K" in shown
    assert "01_02.amc:5: error: " in shown
    assert "[1/2]" not in shown
    assert "batch: 2 files: 1 ok, 0 with warnings, 0 up to date, 1 failed" in shown

    plain = subprocess.run([TOOL, "batch", str(tmp_path / "in"), "-o", str(tmp_path / "plain"), "--to", "bvh"],
                           capture_output=True, text=True).stderr
    assert "\r" not in plain and "[2/2] " in plain


def test_positions_at_another_frame_rate_match_the_resampled_batch(tmp_path):
    motion = orvasf.load(SAMPLE_ASF, SAMPLE_AMC)
    own = motion.positions()
    # 120 to 30 fps: the same times as every fourth frame.
    assert np.array_equal(motion.positions(fps=30), own[::4])
    # 120 to 50 fps: the root moves by its translation alone, linear between keys, so NumPy's
    # interpolation of the original frames gives it (to the curves' float32 keys).
    at50 = motion.positions(fps=50)
    assert at50.shape == (100, own.shape[1], 3)
    times = np.arange(100) / 50
    for axis in range(3):
        assert np.abs(at50[:, 0, axis] - np.interp(times, motion.times, own[:, 0, axis])).max() < 1e-5
    array, _, _ = batch_npy(tmp_path, SAMPLE_ASF, SAMPLE_AMC, "--resample", "50")
    assert np.abs(array - at50 / 100).max() <= 1e-6
    # A view resamples from its own first frame to its last.
    assert np.array_equal(motion[8:].positions(fps=30)[0], own[8])
    with pytest.raises(ValueError):
        motion.positions(fps=0)
