#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Sets up, builds and runs all tests. Arguments go to ctest, e.g. scripts/test.sh -R Footprint
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh
cmake --preset release
cmake --build --preset release
ctest --preset release --parallel "$(nproc)" "$@"
