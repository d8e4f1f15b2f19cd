#!/usr/bin/env bash
# Counts code lines (not blank, not comment-only) of the tracked .cpp/.h/.py/.sh files, tests/
# against everything else, and prints the share of tests in all code lines.
set -euo pipefail
cd "$(dirname "$0")/.."
code_lines() {
  xargs -r cat -- | awk '{ sub(/^[ \t]+/, "") }
    $0 == "" || /^\/\// || /^#( |!|$)/ || /^\/\*/ || /^\*( |\/|$)/ { next }
    { n++ } END { print n + 0 }'
}
tests=$(git ls-files -- 'tests/*.cpp' 'tests/*.h' 'tests/*.py' 'tests/*.sh' | code_lines)
other=$(git ls-files -- '*.cpp' '*.h' '*.py' '*.sh' ':!tests/' | code_lines)
echo "tests: $tests lines; other code: $other lines; tests share: $(awk -v t="$tests" -v o="$other" 'BEGIN { printf "%.1f%%", 100 * t / (t + o) }')"
