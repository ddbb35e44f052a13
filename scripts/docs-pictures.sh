#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Makes the pictures of the documents anew with the release build's command: docs/images/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh --dev
scripts/demo.sh
mkdir -p docs/images
for picture in demo/overlay.png demo/stages/*.png; do
  # 128 colours are enough for drawings and keep the repository small.
  pngquant --force --speed 1 --output "docs/images/$(basename "$picture")" 128 "$picture"
done
