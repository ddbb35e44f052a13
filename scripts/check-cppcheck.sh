#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs cppcheck on the public header, the library, the kit, the simulator, the command, the tests and the benchmarks; any
# finding fails. A minute.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

options=(
  --std=c++17 --inline-suppr --quiet --template=gcc
  --error-exitcode=1 -j "$(nproc)"
  -I include -I src -I . -I tools
  # A loop is kept where it reads better than an algorithm with a lambda.
  --suppress=useStlAlgorithm
  # Does not see a member used through Borrowed<Scratch> or a structured binding.
  --suppress=unusedStructMember
  # Confuses a pointer in an array with the value that it points to; the compiler would refuse such a conversion anyway.
  --suppress=AssignmentIntegerToAddress
  --suppress=CastIntegerToAddressAtReturn
)
cppcheck "${options[@]}" --enable=warning,performance,portability,style include src kit sim tools

test_options=(
  -I tests --library=googletest
  # Does not know a list of functions in a loop, an index into the bytes of a value, "a(b, c) < d || e > f".
  --suppress=legacyUninitvar:bench/work.cpp
  --suppress=objectIndex:tests/soak/digest.cpp
  --suppress=syntaxError:tests/numbers/exact_scene.cpp
)
cppcheck "${options[@]}" "${test_options[@]}" --enable=warning,performance,portability tests bench
