#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs cppcheck on the public header, the library, the simulator and the command; any finding fails. Half a minute.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

options=(
  --std=c++17 --enable=warning,performance,portability,style --inline-suppr --quiet --template=gcc
  --error-exitcode=1 -j "$(nproc)"
  -I include -I src -I . -I tools
  # A loop is kept where it reads better than an algorithm with a lambda.
  --suppress=useStlAlgorithm
  # Does not see a member used through Borrowed<Scratch> or a structured binding.
  --suppress=unusedStructMember
  # Takes an element of an array of pointers for what it points to; the language allows no such conversion anyway.
  --suppress=AssignmentIntegerToAddress
  --suppress=CastIntegerToAddressAtReturn
)
cppcheck "${options[@]}" include src sim tools
