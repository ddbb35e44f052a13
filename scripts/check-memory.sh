#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs a short life of every part of the library under valgrind's memcheck, once with the wide and once with the
# narrow pixel loops: an invalid access, a decision on an uninitialised value or a lost block fails. One minute of one
# core.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh --dev
cmake --preset release >/dev/null
cmake --build --preset release --target thread_tests library_tests >/dev/null

# usage: check LOOPS PROGRAM TESTS
check() {
  local log=build/memcheck-$1-$2.log
  echo "memcheck: $2 with the $1 loops"
  # Memory that is still reachable at the end is kept for the next call, by the library and by OpenCV.
  if ! QUORVEL_LOOPS=$1 LOCPATH=$PWD/build/release/tests/locale \
    valgrind --quiet --error-exitcode=1 --leak-check=full \
    --errors-for-leak-kinds=definite,indirect,possible --show-leak-kinds=definite,indirect,possible \
    --num-callers=30 --suppressions=tests/memcheck.supp \
    "build/release/bin/$2" --gtest_brief=1 --gtest_filter="$3" >"$log" 2>&1; then
    cat "$log" >&2
    return 1
  fi
  # A run without any test passes too, when the filter matches nothing.
  grep -qE 'PASSED +\] [1-9]' "$log"
}

# Four modes on four threads, copies, shared frames and output, parameter files, captures and their replay.
threads='ComingAndGoing.TheFirst*:Copies.Measure*:SharedFrames.*:MixedModes.*:SharedCaptureTree.*'
threads+=':Formats/*Different*:SharedOutput.*'
# Every start, refused and odd frames and batches, parameter files that are wrong, sampling calibration to replay.
stages='CommaLocale.TheLife*:OfflineStart*:RulerParameters*:BatchIntake*:MeasureOnce*:FrameIntake*:MeasureMultiple*'
for loops in avx2 baseline; do
  check "$loops" thread_tests "$threads"
  check "$loops" library_tests "$stages"
done
