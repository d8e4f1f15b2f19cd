#!/usr/bin/env bash
# Prints the throughput of `orvasf batch --to bvh` with one and with two jobs on a library laid out
# like the CMU database: one folder per shared ASF/AMC pair (../shared/data), holding the
# skeleton as NN.asf and its motion under 14 names NN_01.amc ... NN_14.amc, all symbolic links
# (210 motion files; nothing is copied). Each run converts the whole library afresh (--force)
# into a scratch folder; the best wall time of three runs counts.
#
# Usage: bench/batch_throughput.sh [BUILD_DIR]   (default build/release, with orvasf built)
set -euo pipefail
cd "$(dirname "$0")/.."
tool=${1:-build/release}/tools/orvasf/orvasf
data=$(realpath -m ../shared/data)
[ -x "$tool" ] || { echo "batch_throughput: $tool is missing; build the orvasf target" >&2; exit 1; }
[ -d "$data" ] || { echo "batch_throughput: no shared data folder at $data" >&2; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

source "scripts/shared_pairs.sh"
subject=0
frames=0
for motion in "${!skeleton_of[@]}"; do
  subject=$((subject + 1))
  folder=$(printf '%s/library/%02d' "$work" "$subject")
  mkdir -p "$folder"
  ln -s "$data/asf/${skeleton_of[$motion]}.asf" "$(printf '%s/%02d.asf' "$folder" "$subject")"
  count=$(grep -c -E '^[0-9]+[[:space:]]*$' "$data/amc/$motion.amc" || true)
  for take in $(seq 1 14); do
    ln -s "$data/amc/$motion.amc" "$(printf '%s/%02d_%02d.amc' "$folder" "$subject" "$take")"
    frames=$((frames + count))
  done
done
files=$(find "$work/library" -name '*.amc' | wc -l)

# Best wall time in milliseconds of three whole conversions with pJobs jobs.
batch_ms() {
  local best=""
  for _ in 1 2 3; do
    local start end
    start=$(date +%s%N)
    "$tool" batch "$work/library" -o "$work/out" --to bvh --jobs "$1" --force > /dev/null 2>&1 || true
    end=$(date +%s%N)
    local ms=$(( (end - start) / 1000000 ))
    if [ -z "$best" ] || [ "$ms" -lt "$best" ]; then best=$ms; fi
  done
  echo "$best"
}

echo "orvasf batch --to bvh: $files motion files, $frames frames ($(nproc) cores)"
one=$(batch_ms 1)
two=$(batch_ms 2)
for jobs in 1 2; do
  ms=$one
  [ "$jobs" = 2 ] && ms=$two
  awk -v j="$jobs" -v m="$ms" -v f="$frames" -v o="$one" 'BEGIN {
    printf "  --jobs %d: %8.2f s %12.0f frames/minute %6.2fx the throughput of one job\n", j, m / 1000, f * 60000 / m, o / m }'
done
