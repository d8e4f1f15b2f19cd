#!/usr/bin/env bash
# Draws the README's pictures of the bundled sample walk with the built orvasf tool:
# docs/images/sample_film_strip.svg (render) and docs/images/sample_plot.svg (plot).
# Usage: scripts/render_readme_images.sh [path/to/orvasf]   (default: the release build's)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
tool=${1:-$root/build/release/tools/orvasf/orvasf}
cd "$root"
"$tool" render examples/walker.asf --motion examples/walker.amc --view side -o docs/images/sample_film_strip.svg
"$tool" plot examples/walker.asf --motion examples/walker.amc --joint lfemur -o docs/images/sample_plot.svg
echo "wrote docs/images/sample_film_strip.svg and docs/images/sample_plot.svg"
