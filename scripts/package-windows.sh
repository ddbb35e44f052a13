#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Packs a finished cross build for 64-bit Windows into a zip that a host is built against and run from, with nothing
# else: library, command, the DLLs they load, headers, CMake configs, licences and the example host. Builds nothing.
#   scripts/package-windows.sh [BUILD_DIR] [OUTPUT.zip]
# BUILD_DIR is build/windows-mingw by default; OUTPUT.zip lies in it and is named by version and compiler. The same
# build packed twice gives the same bytes. Prints the zip's path as its last line.
set -euo pipefail

source_dir="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${1:-$source_dir/build/windows-mingw}"
triplet=x86_64-w64-mingw32
system_libraries="/usr/$triplet/lib"

fail() {
  echo "package-windows: $*" >&2
  exit 1
}

# A variable of the build: cached NAME
cached() {
  sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"
}

[[ -f "$build/CMakeCache.txt" ]] || fail "$build is no build folder; run: cmake --preset windows-mingw"
for built in bin/quorvel.dll bin/quorvel.exe lib/libquorvel.dll.a; do
  [[ -f "$build/$built" ]] || fail "$build/$built is missing; run: cmake --build --preset windows-mingw"
done
command -v zip >/dev/null || fail "the program zip is missing; install the package zip"

version="$(cached CMAKE_PROJECT_VERSION)"
objdump="$(cached CMAKE_OBJDUMP)"
strip="$(cached CMAKE_STRIP)"
prefix="$(cd "$(cached OpenCV_DIR)/../../.." && pwd)"
compiler_libraries="$(dirname "$("$triplet-g++-posix" -print-file-name=libstdc++-6.dll)")"
name="quorvel-$version-windows-x64-mingw"
output="$(realpath -m "${2:-$build/$name.zip}")"
export SOURCE_DATE_EPOCH="${SOURCE_DATE_EPOCH:-$(git -C "$source_dir" log -1 --format=%ct)}"

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
top="$work/$name"

# The DLLs that a file loads by name.
imports() {
  "$objdump" -p "$1" | sed -n 's/^\tDLL Name: //p'
}

# Copies the DLLs that a file loads, and the DLLs that those load, beside it. DLLs of Windows are left out: for each of
# them the compiler has an import library.
add_imports() {
  local dll folder
  for dll in $(imports "$1"); do
    if [[ -f "$top/bin/$dll" ]]; then
      continue
    fi
    for folder in "$prefix/bin" "$compiler_libraries" "$system_libraries"; do
      if [[ -f "$folder/$dll" ]]; then
        cp "$folder/$dll" "$top/bin/"
        add_imports "$top/bin/$dll"
        continue 2
      fi
    done
    local stem="${dll%.*}"
    [[ -f "$system_libraries/lib${stem,,}.a" ]] || fail "$dll, which $(basename "$1") loads, is nowhere to be found"
  done
}

# The notices of a Debian package whose code is in the zip: add_licence NAME PACKAGE
add_licence() {
  local notice="/usr/share/doc/$2/copyright"
  [[ -f "$notice" ]] || fail "$notice, the licence of $1, is missing; install the package $2"
  mkdir -p "$top/licenses/$1"
  cp -L "$notice" "$top/licenses/$1/copyright"
}

cmake --install "$build" --prefix "$top" >/dev/null
add_imports "$top/bin/quorvel.dll"
add_imports "$top/bin/quorvel.exe"
"$strip" --strip-unneeded "$top"/bin/*.dll "$top"/bin/*.exe

# OpenCV's part of the prefix: what the header includes and what a host needs to link and to read pictures.
mkdir -p "$top/include" "$top/lib/cmake"
cp -r "$prefix/include/opencv4" "$top/include/"
cp -r "$prefix/lib/cmake/opencv4" "$top/lib/cmake/"
cp "$prefix"/lib/libopencv_*.dll.a "$top/lib/"

add_licence opencv libopencv-core-dev
cp "$prefix/LICENSE" "$prefix"/share/licenses/opencv4/* "$top/licenses/opencv/"
add_licence libpng libpng16-16
add_licence libtiff libtiff6
add_licence zlib libz-mingw-w64-dev
add_licence yaml-cpp libyaml-cpp-dev
add_licence nlohmann-json nlohmann-json3-dev
add_licence cli11 libcli11-dev
add_licence gcc-runtime gcc-mingw-w64-x86-64-posix-runtime
# The compiler's notices add an exception to this licence, and give its path on Debian.
cp -L /usr/share/common-licenses/GPL-3 "$top/licenses/gcc-runtime/"
add_licence mingw-w64 mingw-w64-x86-64-dev

mkdir -p "$top/examples" "$top/docs"
cp -r "$source_dir/examples/host" "$top/examples/"
cp "$source_dir/docs/windows.md" "$source_dir/docs/host-guide.md" "$top/docs/"
sed -e "s/@VERSION@/$version/" -e "s/@COMPILER@/$("$triplet-g++-posix" -dumpfullversion)/" -e 's/$/\r/' \
  "$source_dir/cmake/windows-zip.txt.in" >"$top/README.txt"

# The archive keeps dates, modes and the order of its entries: all three are fixed.
find "$top" -type f -exec chmod 644 {} + -exec touch -d "@$SOURCE_DATE_EPOCH" {} +
rm -f "$output"
(cd "$work" && find "$name" -type f | LC_ALL=C sort | TZ=UTC zip -q -X -9 -@ "$output")
echo "$output"
