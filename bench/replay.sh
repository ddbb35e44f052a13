#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# How fast `quorvel replay` is: makes a tree of simulated captures, then replays it with one and with two jobs.
#   bench/replay.sh [COUNT] [FOLDER]     1000 captures in a fresh folder by default; a folder that is there is used again
# Prints captures a second and peak memory of each run. Needs a release build and the package "time".
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

count="${1:-1000}"
folder="${2:-$(mktemp -d)}"
quorvel="$PWD/build/release/bin/quorvel"
presets=(parcel small-box flat-box clutter cylinder diagonal)
# A capture is named by its second, so this many rulers capture at the same time, each in its own folder.
rulers=12

# Makes every `rulers`-th capture, beginning with number $1.
capture_some() {
  local number preset work="$folder/ruler-$1"
  mkdir -p "$work"
  for ((number = $1; number < count; number += rulers)); do
    preset="${presets[number % ${#presets[@]}]}"
    "$quorvel" -C "$work" simulate --preset "$preset" --seed "$number" --out scene >/dev/null
    "$quorvel" -C "$work" capture --camera scene/camera.json --color scene/color.png --depth scene/depth.png \
      --empty-depth scene/empty_depth.png --calibration-area 0.6 --mode kiosk --area 0.5 >/dev/null 2>&1
  done
  rm -rf "$work/scene" "$work/param"
}

if [[ ! -d "$folder/ruler-0/log" ]]; then
  echo "capturing $count simulated frames"
  for ((ruler = 0; ruler < rulers; ++ruler)); do
    capture_some "$ruler" &
  done
  wait
fi
du -sh "$folder" | sed 's/\t.*/ of captures/'
for jobs in 1 2; do
  echo "--jobs $jobs:"
  # The first run of a tree also reads it from the disk; here it is in the page cache, just written.
  command time -f '%M KiB at most' "$quorvel" replay "$folder" --area 0.5 --tolerance 0 --jobs "$jobs" | tail -n 1
done
