#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Records all numbers of 200 scenes in every mode with a Linux build and, under Wine, with a Windows build, and fails,
# showing the first lines that differ, when the records are not the same file. The simulator's scenes follow.
# usage: scripts/compare-numbers.sh LINUX_BUILD WINDOWS_BUILD
# $WINE is the Wine program; WINEPREFIX and WINEPATH (the folders of the DLLs) are the caller's.
set -euo pipefail

if (($# != 2)); then
  echo "usage: $0 LINUX_BUILD WINDOWS_BUILD" >&2
  exit 2
fi
linux=$1/bin/number_record
windows=$2/bin/number_record.exe
wine=${WINE:-wine64}
for program in "$linux" "$windows"; do
  if [[ ! -f $program ]]; then
    echo "$program is missing: build the target number_record" >&2
    exit 2
  fi
done
if ! command -v "$wine" >/dev/null; then
  echo "$wine is no program: set WINE to the Wine program" >&2
  exit 2
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

record() {
  local file=$1
  shift
  if ! "$@"; then
    echo "recording failed: $*" >&2
    exit 1
  fi
  if [[ ! -s $file ]]; then
    echo "nothing was recorded: $*" >&2
    exit 1
  fi
}

compare() {
  local name=$1
  shift
  record "$work/$name-linux.txt" "$linux" "$work/$name-linux.txt" "$@" &
  local recording=$!
  record "$work/$name-windows.txt" "$wine" "$windows" "Z:$work/$name-windows.txt" "$@"
  wait "$recording" || return 1
  if ! cmp "$work/$name-linux.txt" "$work/$name-windows.txt"; then
    echo "the first lines that differ, Linux left ('<'), Windows right ('>'):" >&2
    diff "$work/$name-linux.txt" "$work/$name-windows.txt" | head -n 40 >&2 || true
    return 1
  fi
  echo "$name: $(grep -c '^# ' "$work/$name-linux.txt") rulers, $(wc -l <"$work/$name-linux.txt") lines, all the same"
}

failed=0
compare scenes scenes 0 200 || failed=1
compare presets presets || failed=1
exit "$failed"
