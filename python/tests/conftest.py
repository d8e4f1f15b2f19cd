"""Shared set-up of the orvasf package tests: where the sources, the shared motion files and the
orvasf tool are, and the pairs of skeleton and motion among the shared files."""
import os
import pathlib

import pytest

pytest.importorskip("numpy", reason="NumPy is not installed (Debian: python3-numpy)")
pytest.importorskip("orvasf", reason="the orvasf package is not built or not on PYTHONPATH")

SOURCE_DIR = pathlib.Path(os.environ.get("ORVASF_SOURCE_DIR", pathlib.Path(__file__).resolve().parents[2]))
DATA_DIR = SOURCE_DIR.parent / "shared" / "data"
TOOL = os.environ.get("ORVASF_TOOL", str(SOURCE_DIR / "build" / "release" / "tools" / "orvasf" / "orvasf"))
SAMPLE_ASF = SOURCE_DIR / "examples" / "walker.asf"
SAMPLE_AMC = SOURCE_DIR / "examples" / "walker.amc"

# Every motion of the shared data with the skeleton it was captured on (see its README).
SHARED_PAIRS = [
    ("cmu_01", "cmu_01_01"),
    ("cmu_11", "cmu_11_01"),
    ("cmu_07-walk", "cmu_07_05-walk"),
    ("cmu_07-walk", "cmu_07_12-walk"),
    ("cmu_09-run", "cmu_09_06-run"),
    ("cmu_131-dance", "cmu_131_04-dance"),
    ("mo_mjackson", "mo_131_04_crlf"),
    ("cmu_135-martialArts", "cmu_135_06-martialArts"),
    ("mo_martialwalk", "mo_135_02"),
    ("cmu_16", "cmu_16_15"),
    ("cmu02_fzzzz_walk_vs", "cmu02_02_01_walk"),
    ("cmu02_fzzzz_walk", "cmu02_fzzzz_walk_01_crlf"),
    ("mo_moderndance", "mo_md_walk"),
    ("mo_golf", "mo_golf_01"),
    ("mo_walk", "mo_null_pose"),
]
SHARED_BVH = ["cgspeed_01_01", "imusim_16_15"]

needs_shared_data = pytest.mark.skipif(not DATA_DIR.is_dir(), reason=f"shared motion files not found at {DATA_DIR}")


def shared_pair(asf, amc):
    return DATA_DIR / "asf" / f"{asf}.asf", DATA_DIR / "amc" / f"{amc}.amc"


def shared_bvh(name):
    return DATA_DIR / "bvh" / f"{name}.bvh"
