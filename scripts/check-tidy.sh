#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs clang-tidy on the library, the kit, the command and the simulator; any finding fails. It reads about twelve sources
# at a time as one, because most of its time goes into the headers. Such a group that was clean is not read again until
# a source in it, a header that it includes, its compile command, .clang-tidy or clang-tidy itself changes.
#   scripts/check-tidy.sh [FOLDER]    only the sources of this folder, for example src or tests/library
#   scripts/check-tidy.sh --long      the tests and benchmarks too
#   scripts/check-tidy.sh --all       also what was clean before; goes with the other forms
# What was clean is kept in the folder quorvel-tidy of the user's cache, for all clones.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

all=false
folders='src|kit|tools|sim'
for argument in "$@"; do
  case "$argument" in
    --all) all=true ;;
    --long) folders+='|tests|bench' ;;
    -*) echo "usage: scripts/check-tidy.sh [--all] [--long] [FOLDER]" >&2 && exit 2 ;;
    *) folders=${argument%/} ;;
  esac
done

# In a group the sources are included. What is off for tests and benchmarks besides, and why:
#   bugprone-suspicious-memory-comparison, cert-exp42-c, cert-flp37-c   comparing the bits of floats is their purpose
#   bugprone-use-after-move          what is left of a moved value is tested
#   bugprone-integer-division        positions on whole pixels are drawn that way
#   bugprone-macro-parentheses, cppcoreguidelines-macro-usage   the lists of members
#   cert-msc32-c, cert-msc51-cpp     a fixed seed, so that a failure comes again
#   cert-err33-c                     removing a file that may be gone
#   cert-env33-c                     commands are run by the shell
#   cppcoreguidelines-avoid-non-const-global-variables   what the tests of a suite share
#   cppcoreguidelines-pro-type-*     pixels are looked at as bytes
#   cppcoreguidelines-special-member-functions, -virtual-class-destructor   the framework never copies a fixture
#   modernize-return-braced-init-list   a matrix or an empty one reads better with its name
#   modernize-raw-string-literal     two styles of quotes in a list read worse than one
#   performance-*                    written for the reader
#   readability-suspicious-call-argument   images are swapped on purpose
export library_checks='-bugprone-suspicious-include'
export test_checks="$library_checks,-bugprone-suspicious-memory-comparison,-cert-exp42-c,-cert-flp37-c,\
-bugprone-use-after-move,-bugprone-integer-division,-bugprone-macro-parentheses,-cppcoreguidelines-macro-usage,\
-cert-msc32-c,-cert-msc51-cpp,-cert-err33-c,-cert-env33-c,\
-cppcoreguidelines-avoid-non-const-global-variables,-cppcoreguidelines-pro-type-*,\
-cppcoreguidelines-special-member-functions,-cppcoreguidelines-virtual-class-destructor,\
-modernize-raw-string-literal,-modernize-return-braced-init-list,-performance-*,-readability-suspicious-call-argument"

cmake --preset tidy >/dev/null
clean="${XDG_CACHE_HOME:-$HOME/.cache}/quorvel-tidy"
mkdir -p "$clean"
find "$clean" -type f -mtime +60 -delete
common=$(clang-tidy --version && cat .clang-tidy)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# usage: key COMMAND CHECKS. A clone in another folder has the same keys.
key() {
  local preprocess
  preprocess=$(sed -E 's/ -o [^ ]+//; s/ -c / -E -P -C /' <<<"$1")
  { echo "$common" && echo "$1" "$2" && (cd build/tidy && eval "$preprocess" 2>&1); } |
    sed "s#$PWD/##g" | sha256sum | cut -c1-64
}

# usage: tidy SOURCE COMMAND
tidy() {
  local mark output checks=$library_checks
  if [[ "$1" =~ ^"$PWD"/(build/tidy/)?(tests|bench)/ ]]; then
    checks=$test_checks
  fi
  mark="$clean/$(key "$2" "$checks")"
  if [[ -e "$mark" ]] && ! $all; then
    touch "$mark"
    return 0
  fi
  echo "${1#"$PWD/"}" | tee -a "$work/read"
  if output=$(clang-tidy -quiet -p build/tidy --checks="$checks" "$1" 2>&1); then
    touch "$mark"
    return 0
  fi
  # The rest is progress and counts of warnings in system headers.
  grep -vE 'warnings? (generated|treated)|^Suppressed|^Use -header-filter|^$' <<<"$output" || true
  return 1
}
export -f key tidy
export all clean common work

touch "$work/read"
jq --join-output --arg here "$PWD/" --arg folders "^(build/tidy/)?($folders)/" '
    .[] | select(.file | ltrimstr($here) | test($folders)) |
    .file + "\u0000" + .command + "\u0000"' build/tidy/compile_commands.json >"$work/sources"
status=0
xargs --null --no-run-if-empty -P "$(nproc)" -n 2 bash -c 'tidy "$@"' _ <"$work/sources" || status=1
echo "check-tidy: $(wc -l <"$work/read") of $(($(tr -cd '\0' <"$work/sources" | wc -c) / 2)) groups of sources read, the others were clean"
exit "$status"
