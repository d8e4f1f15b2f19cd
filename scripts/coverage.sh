#!/usr/bin/env bash
# Builds the coverage preset, runs the tests and prints the line coverage of the library code
# (orvsdk/, amc/, bvh/, driver/): the summary line and a per-file table.
set -euo pipefail
cd "$(dirname "$0")/.."
find build/coverage -name '*.gcda' -delete 2>/dev/null || true
cmake --preset coverage >/dev/null
cmake --build --preset coverage
ctest --preset coverage >/dev/null
# Counters are updated atomically (see the preset), as threaded tests otherwise corrupt them;
# any negative branch count left is skipped rather than stopping the report.
gcovr --root . --object-directory build/coverage --gcov-ignore-parse-errors \
  --filter 'orvsdk/' --filter 'amc/' --filter 'bvh/' --filter 'driver/' \
  --exclude 'tests/' --exclude 'tools/' --exclude 'bench/' --exclude 'fuzz/' \
  --txt --print-summary
