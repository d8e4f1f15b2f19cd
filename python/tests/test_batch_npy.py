"""`orvasf batch --to npy`: the arrays load with NumPy to the positions `pose` prints, in metres,
and the JSON beside each names the joints in the array's order."""
import json
import pathlib
import subprocess

import numpy as np
import pytest

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
