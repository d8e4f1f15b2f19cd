#!/usr/bin/env bash
# Builds the fuzz targets (the "fuzz" preset: clang, libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer) and runs each for SECONDS (default 20) on its seed corpus, one
# after the other. Exits non-zero as soon as a target reports a crash, a leak, a timeout or a
# sanitizer error; its input is then in build/fuzz/artifacts/TARGET/.
#
# Runs start from the seed FUZZ_SEED (default 1), so a CI run repeats itself.
#
# Usage: fuzz/run.sh [SECONDS [TARGET...]]
set -euo pipefail
cd "$(dirname "$0")/.."

seconds="${1:-20}"
shift || true
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(fuzz_asf_reader fuzz_textfile fuzz_amc_reader fuzz_amc_skeleton fuzz_gltf_reader)

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz >/dev/null

build=build/fuzz
seeds="$build/seeds"
rm -rf "$seeds"
python3 fuzz/make_corpus.py "$seeds"

dictionary_for() {
  case "$1" in
    fuzz_asf_reader) echo fuzz/asf.dict ;;
    fuzz_textfile) echo fuzz/textfile.dict ;;
    fuzz_amc_reader) echo fuzz/amc.dict ;;
    fuzz_gltf_reader) echo fuzz/gltf.dict ;;
    fuzz_amc_skeleton)
      cat fuzz/asf.dict fuzz/amc.dict fuzz/amc_skeleton.dict >"$build/fuzz_amc_skeleton.dict"
      echo "$build/fuzz_amc_skeleton.dict" ;;
  esac
}

for target in "${targets[@]}"; do
  # New inputs go to a scratch corpus that starts empty each run; the seeds stay as generated.
  corpus="$build/corpus/$target"
  artifacts="$build/artifacts/$target"
  rm -rf "$corpus"
  mkdir -p "$corpus" "$artifacts"
  inputs=("$corpus" "$seeds/$target")
  # A larger corpus from the shared data, when fuzz/build_local_corpus.sh has made one.
  [ -d "fuzz/local-corpus/$target" ] && inputs+=("fuzz/local-corpus/$target")
  echo "== $target: ${seconds} s =="
  "$build/fuzz/$target" -seed="${FUZZ_SEED:-1}" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
    -dict="$(dictionary_for "$target")" -artifact_prefix="$artifacts/" "${inputs[@]}" \
    2>"$build/$target.log" || {
    status=$?
    tail -n 60 "$build/$target.log" >&2
    echo "fuzz: $target failed (status $status); inputs in $artifacts/" >&2
    exit 1
  }
  grep -E '^#[0-9]+.*DONE' "$build/$target.log" | tail -n 1 || true
done
