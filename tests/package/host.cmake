# SPDX-License-Identifier: Apache-2.0
# Builds the example host as a user would, against the installed package (WAY installed) or with the sources as a
# subdirectory (WAY subdirectory), and has it measure a simulated parcel of 300 x 200 x 150 mm.
function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}/frames")
if(WAY STREQUAL "installed")
  run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/prefix")
  set(host "${SOURCE}/examples/host")
  set(options "-DCMAKE_PREFIX_PATH=${WORK}/prefix")
else()
  set(host "${SOURCE}/examples/host-subdirectory")
  set(options "-DQUORVEL_SOURCE=${SOURCE}")
endif()
run("${CMAKE_COMMAND}" -G Ninja -S "${host}" -B "${WORK}/build" -DCMAKE_BUILD_TYPE=Release
  "-DCMAKE_CXX_COMPILER=${COMPILER}" ${options})
run("${CMAKE_COMMAND}" --build "${WORK}/build")

set(frames "${WORK}/frames")
run("${COMMAND}" simulate --preset parcel --out "${frames}")
execute_process(
  COMMAND "${WORK}/build/host" "${frames}/empty_color.png" "${frames}/empty_depth.png" "${frames}/color.png"
    "${frames}/depth.png"
  WORKING_DIRECTORY "${WORK}" OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)

if(NOT output MATCHES "^([0-9.]+) x ([0-9.]+) x ([0-9.]+) mm")
  message(FATAL_ERROR "the host printed: ${output}")
endif()
set(sizes "${CMAKE_MATCH_1}" "${CMAKE_MATCH_2}" "${CMAKE_MATCH_3}")
message(STATUS "the host printed: ${output}")
list(GET sizes 0 length)
list(GET sizes 1 width)
list(GET sizes 2 height)
if(length LESS 285 OR length GREATER 310 OR width LESS 185 OR width GREATER 210 OR height LESS 138 OR
   height GREATER 158)
  message(FATAL_ERROR "far from 300 x 200 x 150 mm: ${output}")
endif()
