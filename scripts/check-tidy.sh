#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs clang-tidy on the library, the simulator and the command. Arguments pick files by pattern: src/measure
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

cmake --preset tidy >/dev/null
pattern="${1:-(src|sim|tools)}"
run-clang-tidy -quiet -p build/tidy -j "$(nproc)" "$PWD/$pattern/.*\.cpp$" 2>&1 |
  grep -vE '^clang-tidy|warnings generated|^Suppressed|^Use -header-filter|^$' || true
exit "${PIPESTATUS[0]}"
