#!/usr/bin/env bash
# Counts code lines (not blank, not comment-only) of the tracked .cpp/.h/.py/.sh/.mjs files, the
# tests (tests/ and python/tests/) against everything else, and prints the share of tests in all
# code lines.
set -euo pipefail
cd "$(dirname "$0")/.."
code_lines() {
  xargs -r cat -- | awk '{ sub(/^[ \t]+/, "") }
    $0 == "" || /^\/\// || /^#( |!|$)/ || /^\/\*/ || /^\*( |\/|$)/ { next }
    { n++ } END { print n + 0 }'
}
kinds=('*.cpp' '*.h' '*.py' '*.sh' '*.mjs')
tests=$(git ls-files -- "${kinds[@]/#/tests/}" "${kinds[@]/#/python/tests/}" | code_lines)
other=$(git ls-files -- "${kinds[@]}" ':!tests/' ':!python/tests/' | code_lines)
echo "tests: $tests lines; other code: $other lines; tests share: $(awk -v t="$tests" -v o="$other" 'BEGIN { printf "%.1f%%", 100 * t / (t + o) }')"
