#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Uses the zip for 64-bit Windows as its reader would: looks at the DLL, builds the example host against the unpacked
# folder alone, and has host and command measure a simulated parcel of 300 x 200 x 150 mm under Wine.
#   tests/package/windows-zip.sh ZIP
# The environment variable WINEPREFIX names a prefix that is ready to use.
set -euo pipefail

source_dir="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
zip="$(realpath "${1:?usage: windows-zip.sh ZIP}")"
version="$(sed -n 's/^project(quorvel VERSION \([0-9.]*\) .*/\1/p' "$source_dir/CMakeLists.txt")"
: "${WINEPREFIX:?set it to a Wine prefix for tests; it is the caller who ends its server}"
triplet=x86_64-w64-mingw32
export WINEDEBUG=-all
unset WINEPATH

fail() {
  echo "windows-zip: $*" >&2
  exit 1
}

# Runs a program under Wine, which says nothing when a DLL is missing, and gives its lines the ends they have here.
run() {
  wine "$@" | tr -d '\r' || fail "${1##*/} failed with exit code ${PIPESTATUS[0]} (53: a DLL is missing): $*"
}

# Windows' form of a path here.
windows_path() {
  echo "Z:${1//\//\\}"
}

# Three sizes near the parcel's: near WHO LENGTH WIDTH HEIGHT
near() {
  awk -v length_mm="$2" -v width_mm="$3" -v height_mm="$4" 'BEGIN {
    exit !(length_mm > 285 && length_mm < 310 && width_mm > 185 && width_mm < 210 && height_mm > 138 && height_mm < 158)
  }' || fail "$1 measured '$2' x '$3' x '$4' mm, far from 300 x 200 x 150 mm"
  echo "windows-zip: $1 measured $2 x $3 x $4 mm"
}

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
unpacked="$work/unpacked here"
mkdir "$unpacked"
(cd "$unpacked" && cmake -E tar xf "$zip")
folders=("$unpacked"/*)
[[ ${#folders[@]} -eq 1 ]] || fail "more than one folder at the top of the zip: ${folders[*]##*/}"
top="${folders[0]}"

echo "windows-zip: what the DLL exports"
cmake "-DLIBRARY=$top/bin/quorvel.dll" "-DHEADER=$top/include/quorvel/quorvel.h" "-DOBJDUMP=$triplet-objdump" \
  "-DFILTER=$triplet-c++filt" -P "$source_dir/tests/package/exports.cmake"

echo "windows-zip: the version resource"
"$triplet-g++-posix" -std=c++17 -Wall -Wextra -Werror -static "$source_dir/tests/package/version_info.cpp" \
  -o "$work/version_info.exe" -lversion
resource="$(run "$work/version_info.exe" "$(windows_path "$top/bin/quorvel.dll")")"
expected="$(printf '%s\n' Quorvel "library for 3D measurement" "$version" "$version" "$version")"
[[ "$resource" == "$expected" ]] || fail "the version resource says:"$'\n'"$resource"$'\n'"expected:"$'\n'"$expected"

echo "windows-zip: DLLs that nothing loads"
# What the given files load, by name.
imports() {
  local file
  for file in "$@"; do "$triplet-objdump" -p "$file" | sed -n 's/^\tDLL Name: //p'; done
}
# The library itself is for hosts: the one below has to load it.
loaded="$(echo quorvel.dll && imports "$top"/bin/*)"
for dll in "$top"/bin/*.dll; do
  grep -qxF "${dll##*/}" <<<"$loaded" || fail "${dll##*/} is loaded by nothing"
done

echo "windows-zip: licences"
for of in quorvel opencv libpng libtiff zlib yaml-cpp nlohmann-json cli11 gcc-runtime mingw-w64; do
  [[ -n "$(find "$top/licenses/$of" -type f -size +0)" ]] || fail "the licence of $of is missing"
done
grep -q "GCC RUNTIME LIBRARY EXCEPTION" "$top/licenses/gcc-runtime/copyright" || fail "the exception of GCC is missing"

echo "windows-zip: the command"
quorvel="$top/bin/quorvel.exe"
mkdir "$work/measured"
cd "$work/measured"
[[ "$(run "$quorvel" --version)" == *"$version"* ]] || fail "quorvel.exe --version says $(run "$quorvel" --version)"
run "$quorvel" simulate --preset parcel --out parcel >/dev/null
frame=(--camera parcel/camera.json --mode kiosk)
run "$quorvel" calibrate "${frame[@]}" --color parcel/empty_color.png --depth parcel/empty_depth.png \
  --calibration-area 0.6 >/dev/null
[[ -s param/cal.txt ]] || fail "calibrate left no param/cal.txt in the working directory"
measured="$(run "$quorvel" measure "${frame[@]}" --color parcel/color.png --depth parcel/depth.png --area 0.5)"
size() {
  awk -v name="$1" '$1 == name && $3 == "mm" { print $2 }' <<<"$measured"
}
near "the command" "$(size length)" "$(size width)" "$(size height)"

echo "windows-zip: the example host, built against the unpacked folder alone"
# The toolchain file searches the compiler's own folders and the one that this variable names.
export QUORVEL_WINDOWS_PREFIX="$top"
cmake -G Ninja -S "$top/examples/host" -B "$work/host" -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$top" \
  -DCMAKE_TOOLCHAIN_FILE="$source_dir/cmake/toolchains/windows-mingw.cmake" >"$work/host.log" ||
  { cat "$work/host.log" && fail "the host cannot be configured"; }
for package in quorvel OpenCV; do
  grep -q "^${package}_DIR:PATH=$top/" "$work/host/CMakeCache.txt" || fail "$package was found outside the folder"
done
cmake --build "$work/host" >"$work/host.log" || { cat "$work/host.log" && fail "the host cannot be built"; }
grep -qxF quorvel.dll <<<"$(imports "$work/host/host.exe")" || fail "the host does not load quorvel.dll"
printed="$(WINEPATH="$(windows_path "$top/bin")" run "$work/host/host.exe" parcel/empty_color.png \
  parcel/empty_depth.png parcel/color.png parcel/depth.png)"
[[ "$printed" =~ ^([0-9.]+)\ x\ ([0-9.]+)\ x\ ([0-9.]+)\ mm$ ]] || fail "the host printed: $printed"
near "the host" "${BASH_REMATCH[@]:1:3}"
echo "windows-zip: all is well"
