#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs the missing packages that building and testing need. Asks nothing; does nothing when all are installed.
#   scripts/setup.sh          to build, run the demo and the tests
#   scripts/setup.sh --dev    also for the checks and the documents: formatter, linter, Clang, coverage, fuzzing, the
#                             binary interface, instruction counts and plots
#   scripts/setup.sh --windows    also for the build for Windows: cross compiler, Wine, tools for source packages
set -euo pipefail

packages=(
  ca-certificates git g++ cmake ninja-build
  libopencv-dev
  libcli11-dev nlohmann-json3-dev libyaml-cpp-dev jq
  libgtest-dev libgmock-dev libbenchmark-dev locales parallel ccache pkgconf
)
if [[ "${1:-}" == "--dev" ]]; then
  packages+=(clang libclang-rt-dev llvm clang-format clang-tidy gcovr pngquant time valgrind cppcheck gnuplot-nox
    abigail-tools)
fi
if [[ "${1:-}" == "--windows" ]]; then
  packages+=(g++-mingw-w64-x86-64-posix libz-mingw-w64-dev wine64 wine googletest dpkg-dev xz-utils bzip2 zip unzip)
fi

missing=()
for package in "${packages[@]}"; do
  status=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
  [[ "$status" == "installed" ]] || missing+=("$package")
done
if [[ ${#missing[@]} -eq 0 ]]; then
  exit 0
fi

as_root=()
if [[ $EUID -ne 0 ]]; then
  if ! command -v sudo >/dev/null; then
    echo "setup: these packages are missing: ${missing[*]}; run this as root, or install sudo" >&2
    exit 1
  fi
  as_root=(sudo)
fi
echo "setup: installing ${missing[*]}"
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq update
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq install --yes --no-install-recommends \
  "${missing[@]}" >/dev/null
