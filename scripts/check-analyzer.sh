#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Compiles the library and the simulator with GCC's static analyser; any finding fails. Two minutes of one core.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

if ! g++ --version | grep -q "Free Software Foundation"; then
  echo "check-analyzer: g++ is not GCC" >&2
  exit 1
fi

flags=(
  -fanalyzer
  # The analyser of GCC 12 is made for C. It does not understand std::vector and std::unique_ptr: it reports reads
  # through the null pointer of an empty vector, leaks of owned pointers, and uninitialised values named "<unknown>".
  # Uninitialised values, leaks and null pointers are left to valgrind, the sanitizers and clang's analyser.
  -Wno-analyzer-use-of-uninitialized-value
  -Wno-analyzer-malloc-leak
  -Wno-analyzer-null-dereference
  -Wno-analyzer-possible-null-dereference
)
cmake -S . -B build/analyzer -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=g++ \
  -DCMAKE_CXX_FLAGS="${flags[*]}" -DQUORVEL_BUILD_TESTS=OFF -DQUORVEL_BUILD_BENCHMARKS=OFF >/dev/null
# Without the AVX2 loops: the same sources once more, and the headers of the widest registers.
targets=(quorvel_objects quorvel_loops_plain quorvel_loops_baseline quorvel_sim)
# From the beginning: a file that was compiled before would keep its findings to itself.
cmake --build build/analyzer --target clean
cmake --build build/analyzer --target "${targets[@]}" -- -k 0 | sed '/^\[[0-9/]*\] \(Building\|Linking\)/d'
