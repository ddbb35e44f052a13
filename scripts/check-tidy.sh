#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs clang-tidy on the library, the simulator and the command. Arguments pick files by pattern: src/measure
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

cmake --preset tidy >/dev/null
pattern="${1:-(src|sim|tools)}"
log=build/tidy/clang-tidy.log
status=0
run-clang-tidy -quiet -p build/tidy -j "$(nproc)" "$PWD/$pattern/.*\.cpp$" >"$log" 2>&1 || status=$?
# What is left names findings; the rest is progress and counts of what system headers raise.
grep -vE '^clang-tidy|warnings generated|^Suppressed|^Use -header-filter|^$' "$log" || true
exit "$status"
