#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Cross-builds what the library, the command and the tests need on 64-bit Windows: OpenCV's core, imgproc and imgcodecs
# with libpng and libtiff, yaml-cpp and GoogleTest, from Debian's source packages (with Debian's patches); the
# header-only libraries are copied. Prints the prefix as its last line.
#
# The prefix is kept in a cache folder, named by the versions, the flags and the compiler: QUORVEL_WINDOWS_CACHE, by
# default quorvel-windows in the user's cache folder. A missing one is built anew.
# Exit code 3: this machine's package sources offer no source packages.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

readonly no_sources=3
toolchain="$PWD/cmake/toolchains/windows-mingw.cmake"
triplet=x86_64-w64-mingw32
source_packages=(opencv libpng1.6 tiff yaml-cpp)
cache="${QUORVEL_WINDOWS_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/quorvel-windows}"

# Messages go to standard error, because standard output is only the prefix.
say() {
  echo "windows-deps: $*" >&2
}

cache_key() {
  {
    apt-cache policy libopencv-dev libpng-dev libtiff-dev libyaml-cpp-dev googletest libcli11-dev nlohmann-json3-dev |
      grep -E '^[a-z]|Candidate'
    "$triplet-g++-posix" --version
    cat "$toolchain" "scripts/windows-deps.sh"
  } | sha256sum | cut -c1-16
}

prefix="$cache/$(cache_key)"
if [[ -f "$prefix/complete" ]]; then
  echo "$prefix"
  exit 0
fi
work="$cache/work"
rm -rf "$prefix" "$work"
mkdir -p "$prefix" "$work/lists/partial" "$work/sources"

# Downloads the source packages. Their list is kept in this folder: the machine's own sources, changed from binary to
# source packages, with only the suite of the release.
download() {
  local uri release component
  local keyring=/usr/share/keyrings/debian-archive-keyring.gpg
  apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' | sort -u |
    while read -r uri release component; do
      if [[ "$release" == bookworm ]]; then
        echo "deb-src [signed-by=$keyring] $uri $release $component"
      fi
    done >"$work/sources.list"
  local options=(-qq -o "Dir::Etc::SourceList=$work/sources.list" -o Dir::Etc::SourceParts=-
    -o "Dir::State::Lists=$work/lists" -o "APT::Sandbox::User=root")
  [[ -s "$work/sources.list" ]] && apt-get "${options[@]}" update >&2 &&
    (cd "$work/sources" && apt-get "${options[@]}" source --download-only "${source_packages[@]}" >&2)
}

if ! download; then
  say "this machine's package sources offer no source packages of bookworm (${source_packages[*]});" \
    "the Windows build cannot be made here"
  exit "$no_sources"
fi

# Unpacks a source package with Debian's patches: unpack NAME FOLDER
unpack() {
  dpkg-source --no-check -x "$work/sources/$1"_*.dsc "$work/$2" >"$work/$2.unpack.log"
}

# Configures, builds and installs one of them: build FOLDER [CMake options]
build() {
  local name="$1"
  shift
  say "building $name"
  if ! {
    cmake -S "$work/$name" -B "$work/$name-build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
      -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_PREFIX_PATH="$prefix" \
      -DZLIB_LIBRARY=/usr/$triplet/lib/libz.a -DZLIB_INCLUDE_DIR=/usr/$triplet/include "$@" &&
      cmake --build "$work/$name-build" && cmake --install "$work/$name-build"
  } >"$work/$name.log" 2>&1; then
    say "building $name failed:"
    tail -n 40 "$work/$name.log" >&2
    exit 1
  fi
}

export QUORVEL_WINDOWS_PREFIX="$prefix"
unpack libpng1.6 png
unpack tiff tiff
unpack yaml-cpp yaml-cpp
unpack opencv opencv
cp -r /usr/src/googletest "$work/googletest"

build png -DPNG_SHARED=OFF -DPNG_TESTS=OFF -DPNG_EXECUTABLES=OFF
build tiff -DBUILD_SHARED_LIBS=OFF -Dtiff-tools=OFF -Dtiff-tests=OFF -Dtiff-contrib=OFF -Dtiff-docs=OFF \
  -Djpeg=OFF -Dold-jpeg=OFF -Djbig=OFF -Dlerc=OFF -Dlzma=OFF -Dzstd=OFF -Dwebp=OFF -Dlibdeflate=OFF -Dcxx=OFF
build yaml-cpp -DYAML_CPP_BUILD_TESTS=OFF -DYAML_CPP_BUILD_TOOLS=OFF -DYAML_BUILD_SHARED_LIBS=OFF
build googletest
# Results are promised bit for bit: the base instruction set alone, and no dispatch to wider code at run time.
build opencv -DBUILD_LIST=core,imgproc,imgcodecs -DBUILD_SHARED_LIBS=ON \
  -DBUILD_TESTS=OFF -DBUILD_PERF_TESTS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_DOCS=OFF -DBUILD_JAVA=OFF \
  -DBUILD_opencv_python2=OFF -DBUILD_opencv_python3=OFF -DBUILD_opencv_apps=OFF \
  -DBUILD_ZLIB=OFF -DBUILD_PNG=OFF -DBUILD_TIFF=OFF -DBUILD_JPEG=OFF \
  -DWITH_PNG=ON -DWITH_TIFF=ON -DWITH_JPEG=OFF -DWITH_WEBP=OFF -DWITH_OPENJPEG=OFF -DWITH_JASPER=OFF \
  -DWITH_OPENEXR=OFF -DWITH_IMGCODEC_HDR=OFF -DWITH_IMGCODEC_SUNRASTER=OFF -DWITH_IMGCODEC_PXM=OFF \
  -DWITH_IMGCODEC_PFM=OFF -DWITH_GDCM=OFF -DWITH_GDAL=OFF -DWITH_IPP=OFF -DWITH_ITT=OFF -DWITH_TBB=OFF \
  -DWITH_OPENMP=OFF -DWITH_PTHREADS_PF=OFF -DWITH_EIGEN=OFF -DWITH_LAPACK=OFF -DWITH_OPENCL=OFF \
  -DWITH_DIRECTX=OFF -DWITH_WIN32UI=OFF -DWITH_FFMPEG=OFF -DWITH_GSTREAMER=OFF -DWITH_MSMF=OFF \
  -DWITH_DSHOW=OFF -DWITH_VTK=OFF -DWITH_GTK=OFF -DWITH_QT=OFF -DWITH_QUIRC=OFF -DWITH_ADE=OFF \
  -DWITH_PROTOBUF=OFF -DWITH_OPENVX=OFF -DWITH_V4L=OFF -DWITH_1394=OFF \
  -DENABLE_PRECOMPILED_HEADERS=OFF -DCPU_BASELINE=SSE2 -DCPU_BASELINE_DISABLE=SSE3 -DCPU_DISPATCH= \
  -DOPENCV_DOWNLOAD_TRIES_LIST= -DOPENCV_GENERATE_SETUPVARS=OFF

mkdir -p "$prefix/include" "$prefix/lib/cmake"
cp -r /usr/include/CLI /usr/include/nlohmann "$prefix/include/"
for name in CLI11 nlohmann_json; do
  cp -r "$(dirname "$(find /usr/share/cmake /usr/lib/*/cmake /usr/lib/cmake -iname "${name}Config.cmake" -print -quit 2>/dev/null)")" "$prefix/lib/cmake/"
done
(cd "$work/sources" && ls ./*.dsc) >"$prefix/versions.txt"
rm -rf "$work"
touch "$prefix/complete"
echo "$prefix"
