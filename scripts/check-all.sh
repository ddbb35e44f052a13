#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Everything there is, in the long form: .ci/run, the demo, clang-tidy on the tests, GCC's analyser, memcheck, soak and
# accuracy under the sanitizers, the binary interface, Clang's build, coverage, the whole of the Windows tests, the
# soak, the fuzzing targets and a smoke run of the benchmarks. Takes hours. A step that fails does not keep the others
# from running; the exit code is then 1.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

summary=()
failed=0

# usage: step NAME COMMAND...
step() {
  local name=$1 start=$SECONDS outcome=passed
  shift
  echo
  echo "=== $name"
  "$@" || outcome=FAILED
  [[ $outcome == passed ]] || failed=1
  summary+=("$(printf '%-8s %4d s  %s' "$outcome" $((SECONDS - start)) "$name")")
}

clang_build() {
  cmake --preset clang && cmake --build --preset clang && ctest --preset clang --parallel "$(nproc)"
}

scripts/setup.sh --dev
step "what a change has to pass" .ci/run
step "demo" scripts/demo.sh
step "clang-tidy, tests and benchmarks too" scripts/check-tidy.sh --long
step "soak and accuracy under the address and undefined-behaviour sanitizers" \
  env GTEST_FILTER="$(cat scripts/accuracy-tests.txt)" \
  ctest --preset asan-ubsan --parallel "$(nproc)" --tests-regex '^(soak|library_tests|command_tests)'
step "GCC's analyser" scripts/check-analyzer.sh
step "memcheck" scripts/check-memory.sh
step "binary interface" scripts/check-abi.sh
step "Clang" clang_build
step "coverage" scripts/coverage.sh
step "all tests for 64-bit Windows, under Wine" scripts/test-windows.sh
step "soak" scripts/soak.sh 200000
step "fuzzing, five minutes a target" scripts/fuzz.sh 5
step "benchmarks, a smoke run" scripts/bench.sh --quick

echo
printf '%s\n' "${summary[@]}"
exit "$failed"
