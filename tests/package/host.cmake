# SPDX-License-Identifier: Apache-2.0
# Builds the example host as a user would and has it measure a simulated parcel of 300 x 200 x 150 mm. WAY says how the
# host finds the library:
#   package       find_package(quorvel) in the installed tree PREFIX
#   pkg_config    pkg-config in the installed tree PREFIX, with the options PKG_CONFIG_OPTIONS; must give VERSION
#   subdirectory  add_subdirectory(SOURCE)

# A launcher may be a list, which no argument of a command could carry.
set(ENV{CMAKE_CXX_COMPILER_LAUNCHER} "${LAUNCHER}")

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# What pkg-config says about the library, as a list.
function(ask_pkg_config result)
  execute_process(COMMAND "${PKG_CONFIG}" ${ARGN} quorvel
    OUTPUT_VARIABLE answer OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(answer UNIX_COMMAND "${answer}")
  set(${result} "${answer}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}/frames" "${WORK}/build")
if(WAY STREQUAL "pkg_config")
  # Nothing but the installed tree, not even OpenCV's own file.
  file(GLOB_RECURSE file "${PREFIX}/*/quorvel.pc")
  cmake_path(GET file PARENT_PATH folder)
  set(ENV{PKG_CONFIG_LIBDIR} "${folder}")
  ask_pkg_config(version --modversion)
  if(NOT version STREQUAL VERSION)
    message(FATAL_ERROR "quorvel.pc has the version '${version}', not ${VERSION}")
  endif()
  ask_pkg_config(libs ${PKG_CONFIG_OPTIONS} --libs)
  if(NOT PKG_CONFIG_OPTIONS AND EXISTS "${PREFIX}/lib/libquorvel.so" AND libs MATCHES "imgproc|imgcodecs")
    message(FATAL_ERROR "a host of the shared library is told to link what only the library needs: ${libs}")
  endif()
  ask_pkg_config(flags ${PKG_CONFIG_OPTIONS} --cflags --libs)
  # The host reads pictures: that part of OpenCV is its own affair.
  run("${COMPILER}" -std=c++17 "${SOURCE}/examples/host/main.cpp" -o "${WORK}/build/host" -lopencv_imgcodecs ${flags}
    "-Wl,-rpath,${PREFIX}/lib")
else()
  if(WAY STREQUAL "package")
    set(host "${SOURCE}/examples/host")
    set(options "-DCMAKE_PREFIX_PATH=${PREFIX}")
  else()
    set(host "${SOURCE}/examples/host-subdirectory")
    set(options "-DQUORVEL_SOURCE=${SOURCE}")
  endif()
  run("${CMAKE_COMMAND}" -G Ninja -S "${host}" -B "${WORK}/build" -DCMAKE_BUILD_TYPE=Release
    "-DCMAKE_CXX_COMPILER=${COMPILER}" ${options})
  run("${CMAKE_COMMAND}" --build "${WORK}/build")
endif()

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
