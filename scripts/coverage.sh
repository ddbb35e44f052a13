#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Builds with coverage counters, runs all tests and reports the line coverage of src/. Fails below 97 %.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh --dev
cmake --preset coverage
cmake --build --preset coverage
find build/coverage -name '*.gcda' -delete
ctest --preset coverage --parallel "$(nproc)"
gcovr --root . --filter 'src/' --object-directory build/coverage --exclude-throw-branches --print-summary \
  --fail-under-line 97 build/coverage
