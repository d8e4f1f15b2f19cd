"""`cmake --install` puts the package where the interpreter it was built for finds it."""
import os
import pathlib
import re
import subprocess
import sys

import pytest

from conftest import SOURCE_DIR


def project_version():
    return re.search(r"project\(orvasf VERSION ([0-9.]+)", (SOURCE_DIR / "CMakeLists.txt").read_text()).group(1)


def test_installed_package_lies_on_the_interpreters_path_and_imports(tmp_path):
    if "ORVASF_INSTALL" not in os.environ:
        pytest.skip("the build's install settings are not given (ORVASF_INSTALL)")
    cmake, build, prefix, site = os.environ["ORVASF_INSTALL"].split("|")
    if prefix != "/usr/local":
        pytest.skip(f"install prefix {prefix} is not the default, whose folder the interpreter searches")
    assert str(pathlib.Path(prefix) / site) in sys.path
    subprocess.run([cmake, "--install", build, "--component", "python"], env=dict(os.environ, DESTDIR=str(tmp_path)),
                   check=True, capture_output=True)
    installed = tmp_path / prefix.lstrip("/") / site
    run = subprocess.run([sys.executable, "-c", "import orvasf; print(orvasf.__file__, orvasf.__version__)"],
                         cwd=tmp_path, env=dict(os.environ, PYTHONPATH=str(installed)), capture_output=True,
                         text=True, check=True)
    assert run.stdout.split() == [str(installed / "orvasf" / "__init__.py"), project_version()]
