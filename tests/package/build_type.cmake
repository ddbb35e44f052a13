# SPDX-License-Identifier: Apache-2.0
# Without a build type the library's own build is Release; a project that adds the sources keeps what it has.
unset(ENV{CMAKE_BUILD_TYPE})

function(expect_build_type expected source)
  file(REMOVE_RECURSE "${WORK}")
  execute_process(COMMAND "${CMAKE_COMMAND}" -G Ninja -S "${source}" -B "${WORK}" "-DCMAKE_CXX_COMPILER=${COMPILER}"
      ${ARGN}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  load_cache("${WORK}" READ_WITH_PREFIX cached_ CMAKE_BUILD_TYPE)
  if(NOT "${cached_CMAKE_BUILD_TYPE}" STREQUAL "${expected}")
    message(FATAL_ERROR "${source} is built as '${cached_CMAKE_BUILD_TYPE}', not as '${expected}'")
  endif()
endfunction()

set(library_only -DQUORVEL_BUILD_TOOLS=OFF -DQUORVEL_BUILD_TESTS=OFF -DQUORVEL_BUILD_BENCHMARKS=OFF)
expect_build_type(Release "${SOURCE}" ${library_only})
expect_build_type(Debug "${SOURCE}" ${library_only} -DCMAKE_BUILD_TYPE=Debug)
expect_build_type("" "${SOURCE}/examples/host-subdirectory" "-DQUORVEL_SOURCE=${SOURCE}")
