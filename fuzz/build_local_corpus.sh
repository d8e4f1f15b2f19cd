#!/usr/bin/env bash
# Builds a larger seed corpus from the real motion-capture files of the shared data folder
# (default ../shared/data), when it is there, into fuzz/local-corpus/, which git ignores.
# fuzz/run.sh adds it to the generated seeds of each target.
#
# Usage: fuzz/build_local_corpus.sh [DATA_FOLDER]
set -euo pipefail
cd "$(dirname "$0")/.."
data="${1:-../shared/data}"
if [ ! -d "$data/asf" ] || [ ! -d "$data/amc" ]; then
  echo "build_local_corpus: no shared data in $data, nothing to do" >&2
  exit 0
fi
rm -rf fuzz/local-corpus
python3 fuzz/make_corpus.py --shared "$data" fuzz/local-corpus
for target in fuzz/local-corpus/*; do
  echo "$(basename "$target"): $(ls "$target" | wc -l) seeds"
done
