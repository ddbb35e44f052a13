# SPDX-License-Identifier: Apache-2.0
# Every variant of the pixel loops writes the same record; QUORVEL_LOOPS chooses the variant; an unknown name is
# ignored.
function(record name)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E env "QUORVEL_LOOPS=${name}"
    ${EMULATOR} "${PROGRAM}" "${WORK}/${name}.txt" scenes 0 3 RESULT_VARIABLE status OUTPUT_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${PROGRAM} ended with ${status} for ${name}")
  endif()
  string(REGEX MATCH "pixel loops: ([a-z0-9]+)" line "${output}")
  set(used "${CMAKE_MATCH_1}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
record(unknown)
set(widest "${used}")
foreach(name plain baseline avx2)
  record(${name})
  if(NOT used STREQUAL name AND NOT (name STREQUAL "avx2" AND used STREQUAL widest))
    message(FATAL_ERROR "QUORVEL_LOOPS=${name} ran the ${used} loops")
  endif()
  execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files "${WORK}/unknown.txt" "${WORK}/${name}.txt"
    RESULT_VARIABLE differs)
  if(differs)
    message(FATAL_ERROR "the ${used} loops wrote another record than the ${widest} loops")
  endif()
endforeach()
