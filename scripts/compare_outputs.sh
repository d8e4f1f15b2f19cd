#!/usr/bin/env bash
# Runs every subcommand of an orvasf binary on every shared data file (and the bundled sample)
# with several flag sets, and records per run its exit status and the SHA-256 of its standard
# output, standard error and output files. Two records made by two builds are compared with
# diff: any line that differs is a changed message, key value or output byte.
#
#   scripts/compare_outputs.sh BINARY RECORD.txt        # make a record
#   diff before.txt after.txt                           # compare two records
set -euo pipefail

if [ $# -ne 2 ]; then
  echo "usage: $0 BINARY RECORD.txt" >&2
  exit 2
fi
binary=$(realpath "$1")
record=$(realpath -m "$2")
cd "$(dirname "$0")/.."
data=../shared/data
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
: >"$record"

# Runs the binary with the given arguments; OUT in an argument names the output file (or
# files, with OUT2). Appends one line to the record and the standard error text after it.
run() {
  rm -f "$work"/out*
  local status=0
  local args=()
  for a in "$@"; do args+=("${a//OUT/$work/out}"); done
  "$binary" "${args[@]}" >"$work/stdout" 2>"$work/stderr" || status=$?
  local outputs=""
  for f in "$work"/out*; do
    [ -e "$f" ] && outputs+=" $(basename "$f")=$(sha256sum <"$f" | cut -c1-16)"
  done
  echo "${*//$work/WORK} | status $status | stdout $(sha256sum <"$work/stdout" | cut -c1-16) |$outputs" >>"$record"
  sed 's/^/    /' "$work/stderr" | sed "s#$work#WORK#g" | head -n 20 >>"$record"
}

source "scripts/shared_pairs.sh"

flag_sets=(
  ""
  "--rotation-offset --pre-rotation --limits --reduce-keys"
  "--rotation-offset"
  "--pre-rotation --rotation-filter unroll"
  "--remove-dummy --rotation-filter gimbal --fps 30 --take Walk"
)

asf_files=(examples/walker.asf "$data"/asf/*.asf)
for asf in "${asf_files[@]}"; do
  run check "$asf"
  run tree "$asf"
  run format "$asf" -o OUT.asf
  run export "$asf" -o OUT.asf
  run export "$asf" -o OUT.asf --translation-dofs --scale 2,1,0.5 --local-transform
  run import "$asf"
done

pairs=("examples/walker.asf examples/walker.amc")
for amc in "$data"/amc/*.amc; do
  name=$(basename "$amc" .amc)
  [ -n "${skeleton_of[$name]:-}" ] && pairs+=("$data/asf/${skeleton_of[$name]}.asf $amc")
done
for pair in "${pairs[@]}"; do
  read -r asf amc <<<"$pair"
  for flags in "${flag_sets[@]}"; do
    # shellcheck disable=SC2086
    run import "$asf" --motion "$amc" $flags
    # shellcheck disable=SC2086
    run pose "$asf" "$amc" --frames 0,1,50-60 $flags
    # shellcheck disable=SC2086
    run convert "$asf" --motion "$amc" -o OUT.bvh $flags
  done
  run pose "$asf" "$amc"
  run convert "$asf" --motion "$amc" -o OUT.asf --motion-out OUT2.amc
done

for bvh in "$data"/bvh/*.bvh; do
  run convert "$bvh" -o OUT.bvh
  run convert "$bvh" -o OUT.asf --motion-out OUT2.amc
  run convert "$bvh" -o OUT.bvh --rotation-offset --pre-rotation
done
# Bad input, made here: the messages and exit statuses of every reader.
bad=$work/bad
mkdir -p "$bad"
printf ':version 1.10\n:name bad\n:units\n  length x0.45\n:root\n  order TX TY TZ RX RY RZ\n' >"$bad/number.asf"
printf ':version 1.10\n:name nul\n# a \0 byte\n' >"$bad/nul.asf"
printf '\xff\xfe:\0v\0' >"$bad/utf16.asf"
printf ':FULLY-SPECIFIED\n:DEGREES\n1\nroot 0 0 0 0 0 0\nlfemur 1 2\n' >"$bad/count.amc"
printf ':DEGREES\n1\nroot 0 0 0 0 0 x\n' >"$bad/value.amc"
printf ':DEGREES\n1\nroot 0 0 0 0 0 0\nnobody 1\nnobody 2\n2\nroot 0 0 0 0 0 0\n1\n' >"$bad/order.amc"
printf ':DEGREES\n' >"$bad/empty.amc"
printf 'HIERARCHY\nROOT hip\n{\n  OFFSET 0 0 0\n  CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation\n}\nMOTION\nFrames: 2\nFrame Time: 0.01\n0 0 0 0 0 0\n' >"$bad/short.bvh"
for asf in "$bad"/*.asf; do run check "$asf"; done
for amc in "$bad"/*.amc; do run import examples/walker.asf --motion "$amc"; done
run convert "$bad/short.bvh" -o OUT.bvh
run pose examples/walker.asf examples/walker.amc --frames 5000
run import "$bad/missing.asf"

echo "compare_outputs: $(grep -c ' | status ' "$record") runs recorded in $record" >&2
