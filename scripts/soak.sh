#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Uses the library for a long time in one process, with every mode, batches, calibrations, files and input that must be
# refused. Fails when memory or open files grow, when frames take longer than at the beginning or when the same
# frames no longer give the same bits. Prints a line a tenth; 200000 frames take some minutes.
# usage: scripts/soak.sh [FRAMES]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release --target soak
build/release/bin/soak "${1:-200000}"
