#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Builds the fuzzing targets and runs each for a time, with as many side by side as there are processor cores.
#   scripts/fuzz.sh MINUTES               all targets
#   scripts/fuzz.sh MINUTES TARGET...     e.g. scripts/fuzz.sh 30 object_life camera_file
# Each target starts from tests/fuzz/corpus/TARGET and from what earlier runs left in build/fuzz/corpus/TARGET, where it
# puts what it finds new. Prints a line a target; exits 1 when a target found a defect, with the input kept in
# build/fuzz/finds/TARGET and the command that shows the defect again.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

usage() {
  echo "usage: scripts/fuzz.sh MINUTES [TARGET...]" >&2
  exit 2
}
[[ $# -ge 1 && "$1" =~ ^[0-9]+$ && "$1" -gt 0 ]] || usage
minutes=$1
shift
targets=("$@")
if [[ ${#targets[@]} -eq 0 ]]; then
  for folder in tests/fuzz/corpus/*/; do
    targets+=("$(basename "$folder")")
  done
fi

for target in "${targets[@]}"; do
  if [[ ! -d tests/fuzz/corpus/$target ]]; then
    echo "fuzz: there is no target $target; tests/fuzz/corpus has a folder for each" >&2
    exit 2
  fi
done

scripts/setup.sh --dev
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

# The targets write many small files, so they use a folder in memory if there is one.
memory=/tmp
[[ -d /dev/shm && -w /dev/shm ]] && memory=/dev/shm
TMPDIR=$(mktemp --directory "$memory/quorvel-fuzz-XXXXXX")
trap 'rm -rf "$TMPDIR"' EXIT
export TMPDIR
export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1"

fuzz() {
  local target=$1
  local corpus=$PWD/build/fuzz/corpus/$target
  local finds=$PWD/build/fuzz/finds/$target
  mkdir -p "$corpus" "$finds"
  # Inputs of a few kB are enough for every target.
  "$PWD/build/fuzz/bin/fuzz_$target" \
    -max_total_time=$((minutes * 60)) -max_len=4096 -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
    -close_fd_mask=1 "-artifact_prefix=$finds/" \
    "$corpus" "$PWD/tests/fuzz/corpus/$target" >"build/fuzz/$target.log" 2>&1 || true
}

running=0
for target in "${targets[@]}"; do
  if [[ $running -ge $(nproc) ]]; then
    wait -n
    running=$((running - 1))
  fi
  fuzz "$target" &
  running=$((running + 1))
done
wait

statistic() {  # LOG NAME
  sed -n "s/^stat::$2: *//p" "$1" | tail -1
}

status=0
printf '%-18s %12s %8s %7s %7s %6s %6s\n' target executions exec/s cov ft new finds
for target in "${targets[@]}"; do
  log=build/fuzz/$target.log
  executions=$(statistic "$log" number_of_executed_units)
  if [[ -z "$executions" ]]; then
    echo "$target did not run; see $log"
    status=1
    continue
  fi
  last=$(grep -a ' cov: ' "$log" | tail -1 || true)
  # Inputs that this run kept; libFuzzer names them in the log.
  mapfile -t found < <(sed -n 's/.*Test unit written to //p' "$log")
  printf '%-18s %12s %8s %7s %7s %6s %6s\n' "$target" \
    "$executions" "$(statistic "$log" average_exec_per_sec)" \
    "$(sed -n 's/.* cov: \([0-9]*\).*/\1/p' <<<"$last")" "$(sed -n 's/.* ft: \([0-9]*\).*/\1/p' <<<"$last")" \
    "$(statistic "$log" new_units_added)" "${#found[@]}"
  if [[ ${#found[@]} -gt 0 ]]; then
    status=1
    for file in "${found[@]}"; do
      echo "  build/asan-ubsan/bin/fuzz_$target $file    (or build/fuzz/bin/..., see build/fuzz/$target.log)"
    done
  fi
done
exit $status
