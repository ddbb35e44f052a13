#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Cross-builds the library, the command and all tests for 64-bit Windows and runs them under Wine; compares the numbers
# with those of the native build; packs the zip and tests it. From a bare Debian 12 machine: about 15 minutes on two
# cores, of which five are the dependencies, which are kept (scripts/windows-deps.sh).
#   scripts/test-windows.sh [CTEST OPTIONS]   everything
#   scripts/test-windows.sh --library         without the command's tests, which are half of the time
# Exit code 3: this machine's package sources offer no source packages, so nothing was tested.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

step() {
  echo "--- windows: $1 ($((SECONDS / 60)) min $((SECONDS % 60)) s)"
}

targets=()
if [[ "${1:-}" == "--library" ]]; then
  shift
  targets=(--target quorvel quorvel-cli library_tests shared_library_tests life_record_shared life_record_internal
    number_record)
  set -- -R '^(library_tests|shared_library_tests)_|^(shared|numbers)\.' "$@"
fi

scripts/setup.sh --windows

step "dependencies"
QUORVEL_WINDOWS_PREFIX="$(scripts/windows-deps.sh)"
export QUORVEL_WINDOWS_PREFIX

step "build"
cmake --preset windows-mingw
cmake --build --preset windows-mingw "${targets[@]}"
build=build/windows-mingw

step "Wine"
# A separate Wine prefix that shares nothing with the user's; it is stopped and removed at the end.
wine_folder="$(mktemp -d)"
export WINEPREFIX="$wine_folder/prefix" WINEDEBUG=-all
mkdir "$WINEPREFIX"
stop_wine() {
  wineserver -k || true
  rm -rf "$wine_folder"
}
trap stop_wine EXIT
wineserver -p
wineboot -i >/dev/null 2>&1
triplet=x86_64-w64-mingw32
runtime="$(dirname "$("$triplet-g++-posix" -print-file-name=libstdc++-6.dll)")"
export WINEPATH="Z:$runtime;Z:/usr/$triplet/lib;Z:$QUORVEL_WINDOWS_PREFIX/bin"
data="${QUORVEL_DATA_DIR:-$PWD/../shared/data}"
if [[ -d "$data" ]]; then
  QUORVEL_DATA_DIR="Z:$(realpath "$data")"
  export QUORVEL_DATA_DIR
fi

step "tests"
ctest --preset windows-mingw --parallel "$(nproc)" "$@"

step "the same numbers as on Linux"
cmake --preset release >/dev/null
cmake --build --preset release --target number_record
WINE=wine scripts/compare-numbers.sh build/release "$build"

step "zip"
zip="$(scripts/package-windows.sh "$build")"
tests/package/windows-zip.sh "$zip"

step "done"
