#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The whole pipeline on a simulated parcel: set-up, release build, simulate, calibrate, measure, compare with the truth.
# Leaves everything in the folder demo/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release --target quorvel-cli
quorvel="build/release/bin/quorvel"

rm -rf demo
mkdir demo
echo
echo "# A parcel under a depth camera at 1000 mm"
"$quorvel" simulate --preset parcel --out demo/parcel
echo
echo "# Calibrate on the empty surface"
"$quorvel" -C demo calibrate --camera parcel/camera.json --color parcel/empty_color.png \
  --depth parcel/empty_depth.png --mode kiosk --calibration-area 0.6
echo
echo "# Measure"
measure=("$quorvel" -C demo measure --camera parcel/camera.json --color parcel/color.png --depth parcel/depth.png
  --mode kiosk --area 0.5)
"${measure[@]}" --overlay overlay.png --stages stages
"${measure[@]}" --json > demo/measured.json
echo
echo "# Measured beside true"
jq --raw-output --slurpfile truth demo/parcel/truth.json '
  . as $measured
  | $truth[0].objects[$truth[0].nearest_middle] as $true
  | "dimension  measured      true     error",
    ( ["length", "width", "height"][]
      | . as $name
      | $measured[$name + "_mm"] as $m | $true[$name + "_mm"] as $t
      | [$name, $m, $t, $m - $t] | @tsv )' demo/measured.json |
  awk -F'\t' 'NR == 1 { print; next } { printf "%-9s %7.1f mm %6.1f mm %+6.1f mm\n", $1, $2, $3, $4 }'
echo
echo "The box in the picture: demo/overlay.png; every stage: demo/stages/"
