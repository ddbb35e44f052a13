#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Fails, naming the line, when a source includes a file of a layer above its own or beside it, or when anything but
# src/ruler names the class.
#   scripts/check-layers.sh [FOLDER]     checks a source tree, this one when none is named
#   scripts/check-layers.sh --self-test  makes one violation of every kind and fails when one is not found
set -euo pipefail

# The one table of layers: a folder, and the folders whose files it may include besides its own. "public" is
# <quorvel/quorvel.h>, which holds the class.
table='
src/simd      :
src/image     : src/simd
src/geometry  : src/simd src/image
src/measure   : src/simd src/image src/geometry
src/calib     : src/simd src/image src/geometry
src/files     : src/simd src/image src/geometry
src/ruler     : src/simd src/image src/geometry src/measure src/calib src/files public
sim           :
kit           : src/simd src/image src/geometry src/measure src/calib src/files src/ruler public
tools         : src/simd src/image src/geometry src/measure src/calib src/files src/ruler kit sim public
'

# usage: check FOLDER; prints the violations and fails when there are any
check() (
  cd "$1"
  find src kit sim tools -name '*.h' -o -name '*.cpp' | sort | xargs awk -v table="$table" '
    BEGIN {
      rows = split(table, lines, "\n")
      for (i = 1; i <= rows; ++i) {
        count = split(lines[i], words, /[ :]+/)
        if (words[1] == "") continue
        layers[words[1]] = 1
        allowed[words[1], words[1]] = 1
        for (k = 2; k <= count; ++k) allowed[words[1], words[k]] = 1
      }
    }
    # The folder of the table that a path lies in.
    function layer(path,   parts, two) {
      split(path, parts, "/")
      two = parts[1] "/" parts[2]
      return (two in layers) ? two : parts[1]
    }
    # The layer that an included name belongs to; sources of src/ are included without "src/", those of tools/ without
    # "tools/".
    function target(name,   parts) {
      split(name, parts, "/")
      if (("src/" parts[1]) in layers) return "src/" parts[1]
      if (parts[1] == "commands" || parts[1] == "options") return "tools"
      return parts[1]
    }
    FNR == 1 {
      own = layer(FILENAME)
      if (!(own in layers)) { print FILENAME ":1: lies in no layer of the table"; bad = 1 }
      in_comment = 0
    }
    /^#include "/ {
      split($0, quoted, "\"")
      to = target(quoted[2])
      if (!((own, to) in allowed)) {
        print FILENAME ":" FNR ": " own " must not include " quoted[2] " of " to
        bad = 1
      }
      next
    }
    /^#include <quorvel\/quorvel.h>/ {
      if (!((own, "public") in allowed)) { print FILENAME ":" FNR ": " own " must not include the public header"; bad = 1 }
      next
    }
    own != "src/ruler" {
      line = $0
      gsub(/"([^"\\]|\\.)*"/, "", line)
      sub(/\/\/.*/, "", line)
      if (line ~ /(^|[^A-Za-z0-9_])Quorvel([^A-Za-z0-9_]|$)/) {
        print FILENAME ":" FNR ": only src/ruler names the class"
        bad = 1
      }
    }
    END { exit bad }'
)

# usage: expect KIND PATH TEXT; a tree with this file has to be refused, naming the file
expect() {
  local tree
  tree=$(mktemp -d)
  mkdir -p "$tree"/{src,kit,sim,tools} "$tree/$(dirname "$2")"
  printf '%s\n' "$3" >"$tree/$2"
  local found=0
  check "$tree" >"$tree/log" || found=1
  if [[ $found -eq 0 ]] || ! grep -q "^$2:1: " "$tree/log"; then
    echo "check-layers: $1 was not found" >&2
    rm -rf "$tree"
    return 1
  fi
  rm -rf "$tree"
}

if [[ "${1:-}" == "--self-test" ]]; then
  expect "a layer above" src/image/a.h '#include "geometry/plane_model.h"'
  expect "a peer" src/measure/a.cpp '#include "calib/normal_map.h"'
  expect "the kit in the library" src/ruler/a.cpp '#include "kit/draw/overlay.h"'
  expect "a face in the kit" kit/draw/a.cpp '#include "commands/app.h"'
  expect "the library in the simulator" sim/a.cpp '#include "geometry/camera.h"'
  expect "the public header below the ruler" src/files/a.h '#include <quorvel/quorvel.h>'
  expect "the class below the ruler" src/calib/a.cpp 'void fit(const Quorvel& ruler);'
  expect "the class in the kit" kit/measure/a.cpp 'Quorvel ruler;'
  expect "the class in the command" tools/commands/a.cpp 'Quorvel ruler;  // "Quorvel"'
  expect "a folder without a layer" src/common/a.h 'int a();'
  echo "check-layers: every kind of violation is found"
  exit 0
fi
check "${1:-$(dirname "${BASH_SOURCE[0]}")/..}"
