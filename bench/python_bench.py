#!/usr/bin/env python3
"""Times the orvasf Python package on the longest shared motion (mo_135_02 on mo_martialwalk):
orvasf.load + positions(), the pure-Python reader of bench/python_reader.py as the yardstick,
and `orvasf pose` (the whole tool process, CSV to /dev/null). Checks that the yardstick's
positions agree with the package's before timing anything.

Usage (from the repository's root, after building the package and the tool):
    PYTHONPATH=build/release/python /usr/bin/python3 bench/python_bench.py [REPEATS]
The C++ figure without Python is BM_ImportAndPositions of build/release/bench/orv_bench.
"""
import os
import subprocess
import sys
import time
import warnings

import numpy as np

import orvasf

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
import python_reader  # noqa: E402

DATA = os.path.join(HERE, "..", "..", "shared", "data")
ASF = os.path.join(DATA, "asf", "mo_martialwalk.asf")
AMC = os.path.join(DATA, "amc", "mo_135_02.amc")
TOOL = os.path.join(HERE, "..", "build", "release", "tools", "orvasf", "orvasf")


def best_of(repeats, run):
    """The best wall-clock and the best CPU time (this process) of repeats runs, in seconds."""
    walls, cpus = [], []
    for _ in range(repeats):
        wall, cpu = time.perf_counter(), time.process_time()
        run()
        walls.append(time.perf_counter() - wall)
        cpus.append(time.process_time() - cpu)
    return min(walls), min(cpus)


def package_positions():
    return orvasf.load(ASF, AMC).positions()


def yardstick_positions():
    with open(ASF, encoding="latin-1") as asf, open(AMC, encoding="latin-1") as amc:
        return python_reader.world_positions(asf.read(), amc.read())


def main():
    repeats = int(sys.argv[1]) if len(sys.argv) > 1 else 5
    if not os.path.isfile(AMC):
        sys.exit(f"python_bench: {AMC} not found")
    warnings.simplefilter("ignore", orvasf.ReadWarning)
    motion = orvasf.load(ASF, AMC)
    positions = motion.positions()
    poses = yardstick_positions()
    names = motion.skeleton.joint_names
    expected = np.array([[pose[name] for name in names] for pose in poses])
    print(f"{motion.frame_count} frames x {len(names)} joints; yardstick agrees to "
          f"{np.abs(expected - positions).max():.2e} cm")

    package = best_of(repeats, package_positions)
    yardstick = best_of(max(1, repeats // 3), yardstick_positions)
    print(f"orvasf.load + positions():  wall {package[0] * 1000:8.1f} ms  CPU {package[1] * 1000:8.1f} ms")
    print(f"pure-Python reader with FK: wall {yardstick[0] * 1000:8.1f} ms  CPU {yardstick[1] * 1000:8.1f} ms"
          f"  ({yardstick[1] / package[1]:.0f} times the package's CPU time)")
    if os.path.isfile(TOOL):
        with open(os.devnull, "w") as null:
            tool = best_of(repeats, lambda: subprocess.run([TOOL, "pose", ASF, AMC], stdout=null,
                                                           stderr=subprocess.DEVNULL, check=True))
        print(f"orvasf pose (process, CSV to /dev/null): wall {tool[0] * 1000:8.1f} ms")


if __name__ == "__main__":
    main()
