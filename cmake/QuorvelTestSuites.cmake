# SPDX-License-Identifier: Apache-2.0
# One CTest test for each GoogleTest suite, named program.suite without the program's "_tests". A process for each single
# case would spend more time starting, a tenth of a second each, than testing. The suites are asked for when ctest runs.

# quorvel_add_suites(target "VARIABLE=value;...")
function(quorvel_add_suites target environment)
  string(REGEX REPLACE "_tests$" "" prefix ${target})
  set(script "${CMAKE_CURRENT_BINARY_DIR}/${target}_suites.cmake")
  file(GENERATE OUTPUT "${script}" CONTENT "include([==[${PROJECT_SOURCE_DIR}/cmake/QuorvelListSuites.cmake]==])
quorvel_list_suites([==[$<TARGET_FILE:${target}>]==] ${prefix} [==[${environment}]==])
")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${script}")
endfunction()
