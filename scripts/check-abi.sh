#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Compares the binary interface of the public class with the kept description of it; docs/abi.md says what may change
# and when. Any difference fails.
#   scripts/check-abi.sh             compare
#   scripts/check-abi.sh --update    keep the interface as it is now
# ABI_BUILD is the folder of the build (build/abi). Exit code 77: skipped, because this machine cannot tell.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

build="${ABI_BUILD:-build/abi}"
kept=tests/package/abi/libquorvel.so.3-x86_64.abi

skip() {
  echo "check-abi: skipped: $*"
  exit 77
}

command -v abidw >/dev/null && command -v abidiff >/dev/null ||
  skip "abidw and abidiff are missing (scripts/setup.sh --dev)"
[[ "$(uname -sm)" == "Linux x86_64" ]] || skip "the interface is kept for Linux on x86_64"
g++ --version 2>/dev/null | grep -q "Free Software Foundation" || skip "g++ is not GCC, by which the interface is kept"

cmake -S tests/package/abi -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=g++ >/dev/null
cmake --build "$build" --target quorvel_interface >"$build/build.log" || { cat "$build/build.log" && exit 1; }

options=(
  --headers-dir include/quorvel --drop-private-types --drop-undefined-syms --exported-interfaces-only
  --suppressions tests/package/abi/others.abignore
  --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed --no-parameter-names
)
abidw "${options[@]}" --out-file "$build/now.abi" "$build/libquorvel.so"
# An empty description would agree with an empty one.
for name in Quorvel MeasureResult; do
  grep -q "<class-decl name='$name' size-in-bits" "$build/now.abi" || { echo "check-abi: $name is missing"; exit 1; }
done
if [[ "${1:-}" == "--update" ]]; then
  cp "$build/now.abi" "$kept"
  echo "check-abi: kept in $kept"
  exit 0
fi

status=0
abidiff --harmless "$kept" "$build/now.abi" || status=$?
if ((status & 3)); then
  echo "check-abi: abidiff failed" >&2
elif ((status)); then
  echo "check-abi: the interface has changed: docs/abi.md says whether QUORVEL_ABI_VERSION has to move;" \
    "scripts/check-abi.sh --update keeps the new one" >&2
else
  echo "check-abi: the interface is the kept one"
fi
exit "$status"
