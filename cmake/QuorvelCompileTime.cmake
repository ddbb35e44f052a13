# SPDX-License-Identifier: Apache-2.0
# What makes our builds quick. None of it touches the code that is generated for the library.

# A compiler cache, when there is one and the user has not chosen a launcher. Paths below the source folder count as
# relative, so that a second clone finds what the first one compiled.
if(PROJECT_IS_TOP_LEVEL AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER AND NOT MSVC)
  find_program(QUORVEL_CCACHE ccache)
  mark_as_advanced(QUORVEL_CCACHE)
  if(QUORVEL_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env
      "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}" CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=pch_defines,time_macros
      "${QUORVEL_CCACHE}")
  endif()
endif()

# The headers of the option parser, of JSON and of the test framework cost seconds in every file: with pieces of several
# files each, kit and tests take less than half the time. The names in unnamed namespaces of one folder must differ then.
option(QUORVEL_UNITY "Compile kit, command and tests in a few large pieces" ON)
mark_as_advanced(QUORVEL_UNITY)

# A compiler cache can tell a precompiled header by its contents only with these.
function(quorvel_make_precompiled_cacheable target)
  target_compile_options(${target} PRIVATE
    $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>
    "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>")
endfunction()

# The headers that most files of a target include, read once. The files include them all the same: the linter's preset
# compiles without.
function(quorvel_precompile target)
  target_precompile_headers(${target} PRIVATE
    <algorithm> <array> <cmath> <cstdint> <filesystem> <fstream> <iostream> <limits> <optional> <sstream> <string>
    <utility> <vector> <opencv2/core.hpp> ${ARGN})
  quorvel_make_precompiled_cacheable(${target})
endfunction()

# The same, with the headers of another target that is compiled with the same flags.
function(quorvel_precompile_as target other)
  target_precompile_headers(${target} REUSE_FROM ${other})
  quorvel_make_precompiled_cacheable(${target})
endfunction()

# For code that no time is spent in. Compiling it takes half as long.
function(quorvel_optimise_lightly target)
  if(NOT MSVC)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O1>)
  endif()
endfunction()

# For large code that waits for other processes rather than computes: under the sanitizers, whose checks make it twice as
# large, nothing is optimised, which halves the time of compiling again. Tests that compute would run twice as long.
function(quorvel_do_not_optimise_sanitized target)
  if(QUORVEL_SANITIZE)
    target_compile_options(${target} PRIVATE -O0)
  endif()
endfunction()
