"""The README's Python example runs, and tells what the README's C++ example tells."""
import os
import re
import subprocess
import sys

import pytest

import orvasf
from conftest import SAMPLE_AMC, SAMPLE_ASF, SOURCE_DIR


def readme_python_example():
    readme = (SOURCE_DIR / "README.md").read_text()
    section = readme[readme.index("## Using it from Python"):]
    return re.search(r"```python\n(.*?)```", section, re.DOTALL).group(1)


def test_readme_example_is_ten_lines_that_run_and_agree_with_the_cpp_example(tmp_path):
    example = readme_python_example()
    assert len(example.splitlines()) == 10
    (tmp_path / "examples").symlink_to(SOURCE_DIR / "examples")
    package_parent = os.path.dirname(os.path.dirname(orvasf.__file__))
    env = dict(os.environ, PYTHONPATH=package_parent)
    run = subprocess.run([sys.executable, "-c", example], cwd=tmp_path, env=env, capture_output=True, text=True)
    assert run.returncode == 0, run.stderr
    lines = run.stdout.splitlines()
    assert lines[0].startswith("240 frames of 26 joints; lfoot after 1 s at (")
    assert lines[2] == "<orvasf.Motion 60 frames at 30.000000 fps>"
    cpp = os.environ.get("ORVASF_MINIMAL_IMPORT")
    if not cpp:
        pytest.skip("the C++ example's path is not given (ORVASF_MINIMAL_IMPORT)")
    cpp_line = subprocess.run([cpp, str(SAMPLE_ASF), str(SAMPLE_AMC)], capture_output=True, text=True).stdout
    assert lines[0].split("; ")[1] == cpp_line.strip().split("; ")[1]
