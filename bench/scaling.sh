#!/usr/bin/env bash
# Prints how the whole import scales: the cost per frame at 1x, 4x and 16x the length of a
# motion (its frames repeated with rising frame numbers), the cost per bone and frame with
# generated skeletons of 31, 62 and 124 bones, and the peak resident memory of `orvasf import`
# against the size of the key data it produces (one 8-byte time and one 4-byte value per key);
# then the jobs users run (`pose` of every frame to CSV, `convert` to BVH) against the import, and
# the whole-pose evaluation per frame.
#
# Usage: bench/scaling.sh [BUILD_DIR]   (default build/release, with the targets bench and orvasf
# built). Times are CPU times (wall times for the jobs), the best of several runs; the motion is the longest shared one
# (../shared/data) when present, else the bundled examples/walker.amc.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
bench=$build/bench/orv_bench
tool=$build/tools/orvasf/orvasf
for program in "$bench" "$tool"; do
  [ -x "$program" ] || { echo "scaling: $program is missing; build the bench and orvasf targets" >&2; exit 1; }
done
[ -x /usr/bin/time ] || { echo "scaling: /usr/bin/time is missing (scripts/setup.sh installs it)" >&2; exit 1; }

if [ -f ../shared/data/amc/mo_135_02.amc ]; then
  skeleton=../shared/data/asf/mo_martialwalk.asf motion=../shared/data/amc/mo_135_02.amc
else
  skeleton=examples/walker.asf motion=examples/walker.amc
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The motion repeated pCount times, frame numbers rising throughout.
repeat_motion() {
  python3 - "$1" "$2" <<'EOF'
import sys
path, count = sys.argv[1], int(sys.argv[2])
lines = open(path, 'rb').read().decode('latin-1').splitlines()
first = next(i for i, l in enumerate(lines) if l.strip().isdigit())
header, body = lines[:first], lines[first:]
frames = sum(1 for l in body if l.strip().isdigit())
out = header[:]
for k in range(count):
    out += [str(int(l) + k * frames) if l.strip().isdigit() else l for l in body]
sys.stdout.write('\n'.join(out) + '\n')
EOF
}

# A skeleton of pBones bones (the root included) in chains of six below the root, every bone
# with three rotation DOFs and its own axis, and a smooth motion of pFrames frames for it.
generate_pair() {
  python3 - "$1" "$2" "$3" "$4" <<'EOF'
import math, sys
bones, frames, asf_path, amc_path = int(sys.argv[1]), int(sys.argv[2]), sys.argv[3], sys.argv[4]
names = ['b%d' % i for i in range(1, bones)]
with open(asf_path, 'w') as asf:
    asf.write(':version 1.10\n:name generated\n:units\n  mass 1.0\n  length 0.45\n  angle deg\n')
    asf.write(':root\n  order TX TY TZ RX RY RZ\n  axis XYZ\n  position 0 0 0\n  orientation 0 0 0\n:bonedata\n')
    for i, name in enumerate(names, 1):
        asf.write('  begin\n    id %d\n    name %s\n    direction 0 -0.6 0.8\n    length %.1f\n' % (i, name, 2 + i % 5))
        asf.write('    axis %d %d %d XYZ\n    dof rx ry rz\n  end\n' % (i * 7 % 90, i * 13 % 60 - 30, i * 29 % 120 - 60))
    asf.write(':hierarchy\n  begin\n')
    children = {}
    for i, name in enumerate(names):
        parent = 'root' if i % 6 == 0 else names[i - 1]
        children.setdefault(parent, []).append(name)
    for parent, kids in children.items():
        asf.write('    %s %s\n' % (parent, ' '.join(kids)))
    asf.write('  end\n')
with open(amc_path, 'w') as amc:
    amc.write(':FULLY-SPECIFIED\n:DEGREES\n')
    for f in range(1, frames + 1):
        t = f / 120.0
        amc.write('%d\nroot %.6g %.6g %.6g %.6g %.6g %.6g\n' % (f, 10 * math.sin(t), 17 + math.sin(3 * t), 5 * t,
                                                                 20 * math.sin(t), 90 * t, 5 * math.cos(t)))
        for i, name in enumerate(names, 1):
            amc.write('%s %.6g %.6g %.6g\n' % (name, 40 * math.sin(t + i), 25 * math.sin(2 * t + i),
                                               15 * math.cos(t + 2 * i)))
EOF
}

# Best time (ms) of the whole import of pSkeleton + pMotion over repeated runs, sampled on
# pThreads threads (default 1): CPU time for one thread, wall time for more.
import_ms() {
  local threads=${3:-1} column=4
  [ "$threads" = 1 ] || column=3
  ORV_BENCH_SKELETON=$1 ORV_BENCH_MOTION=$2 "$bench" --benchmark_filter="^BM_WholeImport/threads:$threads/" \
    --benchmark_repetitions=5 --benchmark_format=csv 2>/dev/null |
    awk -F, -v c="$column" -v name="\"BM_WholeImport/threads:$threads/real_time\"" \
      '$1 == name { if (best == "" || $c < best) best = $c } END { print best }'
}

frame_count() { grep -c -E '^[0-9]+[[:space:]]*$' "$1" || true; }

# "keys peak_kB" of one `orvasf import --summary` run of pSkeleton (and pMotion, when given).
import_memory() {
  /usr/bin/time -v -o "$work/time.txt" "$tool" import "$1" ${2:+--motion "$2"} --summary > "$work/summary.txt" 2>/dev/null
  echo "$(awk '/^  keys/ { print $2 }' "$work/summary.txt") $(awk '/Maximum resident/ { print $NF }' "$work/time.txt")"
}

echo "Scaling of the whole import (CPU time, best of 5; the machine: $(nproc) cores, $(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2 | sed 's/^ *//'))"
echo
echo "Motion length ($(basename "$motion") on $(basename "$skeleton"), frames repeated):"
printf '  %-6s %8s %10s %10s %8s\n' length frames ms us/frame vs_1x
base_per_frame=""
for count in 1 4 16; do
  if [ "$count" = 1 ]; then file=$motion; else file=$work/motion_x$count.amc; repeat_motion "$motion" "$count" > "$file"; fi
  frames=$(frame_count "$file")
  ms=$(import_ms "$skeleton" "$file")
  per_frame=$(awk -v m="$ms" -v f="$frames" 'BEGIN { printf "%.3f", m * 1000 / f }')
  [ -n "$base_per_frame" ] || base_per_frame=$per_frame
  printf '  %-6s %8d %10.2f %10.3f %7.1f%%\n' "${count}x" "$frames" "$ms" "$per_frame" \
    "$(awk -v p="$per_frame" -v b="$base_per_frame" 'BEGIN { print (p / b - 1) * 100 }')"
done

echo
echo "Skeleton size (generated, 2,000 frames, 3 rotation DOFs per bone):"
printf '  %-6s %8s %10s %10s %14s %8s\n' bones frames ms us/frame ns/bone-frame vs_31
base_per_bone=""
for bones in 31 62 124; do
  generate_pair "$bones" 2000 "$work/gen_$bones.asf" "$work/gen_$bones.amc"
  ms=$(import_ms "$work/gen_$bones.asf" "$work/gen_$bones.amc")
  per_bone=$(awk -v m="$ms" -v b="$bones" 'BEGIN { printf "%.1f", m * 1e6 / 2000 / b }')
  [ -n "$base_per_bone" ] || base_per_bone=$per_bone
  printf '  %-6s %8d %10.2f %10.3f %14.1f %7.1f%%\n' "$bones" 2000 "$ms" \
    "$(awk -v m="$ms" 'BEGIN { print m * 1000 / 2000 }')" "$per_bone" \
    "$(awk -v p="$per_bone" -v b="$base_per_bone" 'BEGIN { print (p / b - 1) * 100 }')"
done

echo
echo "Peak resident memory of orvasf import --summary against the key data (12 bytes per key):"
read -r _ fixed_kb <<< "$(import_memory "$skeleton")"
printf '  %-22s %10s %12s %12s %16s\n' input keys key_data_MiB peak_MiB "(peak-fixed)/key"
printf '  %-22s %10s %12s %12.1f\n' "skeleton only (fixed)" - - "$(awk -v k="$fixed_kb" 'BEGIN { print k / 1024 }')"
for file in "$motion" "$work/motion_x4.amc" "$work/motion_x16.amc"; do
  read -r keys peak_kb <<< "$(import_memory "$skeleton" "$file")"
  awk -v n="$(basename "$file")" -v k="$keys" -v p="$peak_kb" -v f="$fixed_kb" 'BEGIN {
    data = k * 12 / 1048576; printf "  %-22s %10d %12.1f %12.1f %16.2f\n", n, k, data, p / 1024, (p - f) / 1024 / data }'
done

# Best wall time (ms) of 5 runs of the tool with the given arguments.
tool_ms() {
  local best=""
  for _ in 1 2 3 4 5; do
    local start end
    start=$(date +%s%N)
    "$tool" "$@" > /dev/null 2>&1
    end=$(date +%s%N)
    local ms=$(( (end - start) / 1000000 ))
    if [ -z "$best" ] || [ "$ms" -lt "$best" ]; then best=$ms; fi
  done
  echo "$best"
}

echo
echo "Sampling threads ($(basename "$motion"), wall time for 2, CPU time for 1):"
for threads in 1 2; do
  ms=$(import_ms "$skeleton" "$motion" "$threads")
  awk -v t="$threads" -v m="$ms" -v f="$(frame_count "$motion")" \
    'BEGIN { printf "  %d thread(s) %10.2f ms %8.3f us/frame\n", t, m, m * 1000 / f }'
done

echo
echo "Jobs against the import ($(basename "$motion") on $(basename "$skeleton"), wall time, best of 5):"
frames=$(frame_count "$motion")
import_wall=$(tool_ms import "$skeleton" --motion "$motion" --summary)
printf '  %-34s %8s %10s %8s\n' job ms us/frame vs_import
for job in "import --summary" "pose (every frame to CSV)" "convert (to BVH)"; do
  case $job in
    import*) ms=$import_wall ;;
    pose*) ms=$(tool_ms pose "$skeleton" "$motion" -o "$work/pose.csv") ;;
    convert*) ms=$(tool_ms convert "$skeleton" --motion "$motion" -o "$work/convert.bvh") ;;
  esac
  awk -v j="$job" -v m="$ms" -v f="$frames" -v i="$import_wall" \
    'BEGIN { printf "  %-34s %8d %10.2f %7.2fx\n", j, m, m * 1000 / f, m / (i > 0 ? i : 1) }'
done
evaluator_ns=$("$bench" --benchmark_filter='^BM_PoseEvaluatorPerFrame$' --benchmark_repetitions=5 \
  --benchmark_format=csv 2>/dev/null | awk -F, '/^"BM_PoseEvaluatorPerFrame"/ { if (best == "" || $4 < best) best = $4 } END { print best }')
printf '  %-34s %8s %10.2f\n' "whole-pose evaluation (benchmark)" - "$(awk -v n="$evaluator_ns" 'BEGIN { print n / 1000 }')"
