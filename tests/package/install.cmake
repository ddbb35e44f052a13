# SPDX-License-Identifier: Apache-2.0
# Installs the library into PREFIX: the finished shared build BUILD (KIND shared), or a static build that is made of
# SOURCE in WORK (KIND static).

# A launcher may be a list, which no argument of a command could carry.
set(ENV{CMAKE_CXX_COMPILER_LAUNCHER} "${LAUNCHER}")

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE "${PREFIX}")
if(KIND STREQUAL "static")
  set(BUILD "${WORK}/build")
  run("${CMAKE_COMMAND}" -G Ninja -S "${SOURCE}" -B "${BUILD}" -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF
    -DQUORVEL_BUILD_TOOLS=OFF -DQUORVEL_BUILD_TESTS=OFF -DQUORVEL_BUILD_BENCHMARKS=OFF
    "-DCMAKE_CXX_COMPILER=${COMPILER}")
  run("${CMAKE_COMMAND}" --build "${BUILD}" --target quorvel)
endif()
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${PREFIX}")

file(GLOB_RECURSE libraries RELATIVE "${PREFIX}" "${PREFIX}/*/libquorvel*")
string(REGEX MATCH "libquorvel\\.a" archive "${libraries}")
string(REGEX MATCH "libquorvel\\.so" shared "${libraries}")
if((KIND STREQUAL "static" AND (NOT archive OR shared)) OR (KIND STREQUAL "shared" AND (archive OR NOT shared)))
  message(FATAL_ERROR "the ${KIND} build installed ${libraries}")
endif()
