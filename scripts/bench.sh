#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Measures every stage and every public operation in the plain and in the fast form, and writes docs/performance.md
# with its plots; build/bench/ keeps the raw numbers. Takes some minutes; other work on the machine blurs the result.
#   scripts/bench.sh            writes the document
#   scripts/bench.sh --quick    a smoke run of all steps: too few repetitions to be believed; the document goes into
#                               build/bench/ instead
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

quick=false
if [[ "${1:-}" == "--quick" ]]; then
  quick=true
fi
out=$PWD/build/bench  # the benchmark works in a folder of its own
bin=$PWD/build/release/bin
document=docs/performance.md
images=docs/images
if $quick; then
  document=$out/performance.md
  images=$out/images
fi
pipeline_sizes=(640x480 1280x720 1920x1080)
sweep_sizes=(320x240 640x480 848x480 1280x720 1920x1080 2560x1440 3840x2160)
works=(intake measureOnce single-shot sampling-calibration growing-calibration sampling-calibration-no-files
  growing-calibration-no-files tracking-frame batch-of-four)

scripts/setup.sh --dev
cmake --preset release >/dev/null
cmake --build --preset release \
  --target quorvel_bench quorvel_one_call quorvel_allocations quorvel_peak_memory >/dev/null
rm -rf "$out"
mkdir -p "$out" "$images"

# usage: time_works NAME FILTER REPETITIONS SECONDS_EACH
time_works() {
  local repetitions=$3 seconds=$4
  if $quick; then
    repetitions=2 seconds=0.001
  fi
  echo "timing: $1"
  "$bin/quorvel_bench" --benchmark_filter="$2" --benchmark_repetitions="$repetitions" \
    --benchmark_min_time="$seconds" --benchmark_enable_random_interleaving=true \
    --benchmark_report_aggregates_only=true --benchmark_out="$out/$1.json" >"$out/$1.log" 2>&1
}

# Prints "WORK POINT FORM INSTRUCTIONS".
count_instructions() {
  local name=$1 log
  log=$(mktemp)
  # Without these the C library copies and clears large blocks with one repeated instruction, which valgrind counts once
  # a byte.
  GLIBC_TUNABLES=glibc.cpu.x86_rep_movsb_threshold=0x7fffffff:glibc.cpu.x86_rep_stosb_threshold=0x7fffffff \
    valgrind --tool=callgrind --instr-atstart=no --callgrind-out-file=/dev/null \
    "$bin/quorvel_one_call" "$name" >"$log" 2>&1 || { cat "$log" >&2; return 1; }
  awk -v name="$name" '/I +refs:/ { gsub(",", "", $NF); gsub("/", " ", name); print name, $NF; found = 1 }
    END { exit !found }' "$log"
  rm -f "$log"
}
export -f count_instructions
export bin

time_works pipeline-640x480 '/640x480/' 7 0.05
time_works pipeline-large '/(1280x720|1920x1080)/' 5 0.02
time_works sweeps '^(size|regions|coverage|area-[a-z]+|batch)/' 5 0.01

echo "counting instructions"
counted_sizes=("${pipeline_sizes[@]}")
if $quick; then
  counted_sizes=(640x480)
fi
for size in "${counted_sizes[@]}"; do
  for work in "${works[@]}"; do
    printf '%s\n' "$work/$size/plain" "$work/$size/fast"
  done
done | xargs --max-procs="$(nproc)" -I{} bash -c 'set -euo pipefail; count_instructions {}' >"$out/instructions.txt"
jq --raw-input --null-input '[inputs | split(" ") | {work: .[0], point: .[1], form: .[2], count: (.[3] | tonumber)}]' \
  "$out/instructions.txt" >"$out/instructions.json"

echo "counting allocations"
"$bin/quorvel_allocations" >"$out/allocations.json"

echo "measuring memory"
for size in "${sweep_sizes[@]}"; do
  for work in measure calibrate batch-of-four; do
    "$bin/quorvel_peak_memory" "$work" "${size%x*}" "${size#*x}"
  done
done | jq --slurp . >"$out/memory.json"

echo "writing $document"
jq --slurp '[.[].benchmarks[]]' "$out/pipeline-640x480.json" "$out/pipeline-large.json" >"$out/pipeline.json"
jq '.benchmarks' "$out/sweeps.json" >"$out/sweep-rows.json"
for sweep in size regions coverage area-sampling area-growing batch; do
  jq --raw-output --arg sweep "$sweep" -L bench 'include "report"; plot_data($sweep)' \
    "$out/sweep-rows.json" >"$out/$sweep.dat"
done
gnuplot -e "data='$out'; images='$images'" bench/plots.gp
for plot in "$images"/performance-*.png; do
  pngquant --force --speed 1 --output "$plot" 64 "$plot"
done

# usage: report TABLE FILE
report() {
  jq --raw-output -L bench --slurpfile instructions "$out/instructions.json" "include \"report\"; $1" "$2"
}

machine() {
  lscpu | awk -F': +' '/^(Model name|CPU\(s\)|L1d cache|L2 cache|L3 cache):/ { print "- " $1 ": " $2 }'
  echo "- Compiler: $(c++ --version | head -n 1)"
  local flags
  flags=$(jq --raw-output '.[] | select(.file | endswith("src/measure/height_cut.cpp")) | .command' \
    build/release/compile_commands.json | tr ' ' '\n' | grep -E '^-(O|DNDEBUG|std|f|m)' | tr '\n' ' ')
  echo "- Flags: \`${flags% }\`"
  echo "- OpenCV: $(jq --raw-output '.context.opencv_version' "$out/sweeps.json"), one thread"
}

{
  cat <<'TEXT'
# Performance

<!-- Written by scripts/bench.sh; the text on what was found stands in docs/performance-notes.md.in. -->

Every stage and every public operation in two forms: *plain* is the literal step-by-step form that the tests compare
with (`tests/library/plain`), *fast* is the library. Both are in one program and their repetitions alternate at random;
one thread; medians of the thread's processor time. Both forms give the same bits. The scene is a simulated parcel of
400 x 300 x 200 mm seen from 1 m. At 640 x 480 the focal length is 600 pixels and the noise 1 mm; for other pictures
the focal length is scaled with the width, and the noise inversely, as the distance between neighbouring points is.

TEXT
  cat docs/performance-notes.md.in
  printf '\n## The machine\n\n'
  machine
  printf '\n## The public operations\n\n'
  cat <<'TEXT'
Bytes are a call's images read once and written once. Instructions are those of one call under callgrind, which has AVX2
but no AVX-512. A batch's frames a second are those of its four frames.

TEXT
  report 'pipeline_table($instructions[0])' "$out/pipeline.json"
  printf '\n## The stages\n\nAt 640 x 480, each alone on a whole picture. In measureOnce the surface filter and the footprint '
  printf "see only the object's\nwindow of it.\n\n"
  report 'stage_table' "$out/pipeline.json"
  printf '\n## Over the size of the picture\n\nIntake and measurement of one frame, kiosk mode.\n\n'
  printf '![Time of a frame over the picture size](images/performance-size.png)\n\n'
  report 'sweep_table("size"; "picture")' "$out/sweep-rows.json"
  printf '\n## Over clutter\n\nSmall raised blocks around the parcel, each a region of its own; 640 x 480.\n\n'
  printf '![Time of a frame over the number of blocks](images/performance-regions.png)\n\n'
  report 'sweep_table("regions"; "blocks")' "$out/sweep-rows.json"
  printf "\n## Over the object's size\n\nShare of the picture that the box's top covers; 640 x 480.\n\n"
  printf "![Time of a frame over the object's share of the picture](images/performance-coverage.png)\n\n"
  report 'sweep_table("coverage"; "object, %")' "$out/sweep-rows.json"
  printf '\n## Over the calibration area\n\n'
  printf 'Share of width and height; the sampling fit (kiosk) needs more than 4000 pixels, which 10 %% has not.\n\n'
  printf '![Time of a calibration over the calibration area](images/performance-area.png)\n\nSampling fit:\n\n'
  report 'sweep_table("area-sampling"; "area, %")' "$out/sweep-rows.json"
  printf '\nGrowing fit:\n\n'
  report 'sweep_table("area-growing"; "area, %")' "$out/sweep-rows.json"
  printf '\n## Over the length of a batch\n\nIntake and measurement of the whole batch, 640 x 480.\n\n'
  printf '![Time of a batch over its length](images/performance-batch.png)\n\n'
  report 'sweep_table("batch"; "frames")' "$out/sweep-rows.json"
  printf '\n## Allocations\n\nBlocks above 64 KiB that a frame asks for once the buffers are warm; 640 x 480.\n\n'
  report 'allocation_table' "$out/allocations.json"
  printf '\n## Memory\n\n'
  cat <<'TEXT'
Peak resident size of a process of its own, MiB; in brackets what it was before the first call: the program, OpenCV and
the host's frames.

TEXT
  report 'memory_table' "$out/memory.json"
} >"$document"
echo "done in $((SECONDS / 60)) min $((SECONDS % 60)) s"
