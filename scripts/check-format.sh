#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Fails, naming the lines, when a source is not formatted as .clang-format has it. --fix formats instead.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

mode=(--dry-run --Werror)
if [[ "${1:-}" == "--fix" ]]; then
  mode=(-i)
fi
git ls-files -z '*.cpp' '*.h' '*.h.in' | xargs -0 clang-format "${mode[@]}"
