# SPDX-License-Identifier: Apache-2.0
# Both programs write the same record and print the same lines over the same lives. Other lives make another record, so
# that the comparison can fail.
function(record program name first count)
  execute_process(COMMAND ${EMULATOR} "${program}" "${WORK}/${name}.txt" ${first} ${count}
    OUTPUT_FILE "${WORK}/${name}-printed.txt" RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${program} ended with ${status}")
  endif()
endfunction()

function(compare left right differs)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files "${WORK}/${left}" "${WORK}/${right}"
    RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET)
  set(${differs} ${status} PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
record("${SHARED}" shared 0 "${LIVES}")
record("${INTERNAL}" internal 0 "${LIVES}")
foreach(file .txt -printed.txt)
  compare(shared${file} internal${file} differs)
  if(differs)
    message(FATAL_ERROR "${WORK}/shared${file} and ${WORK}/internal${file} differ")
  endif()
endforeach()

record("${SHARED}" some 0 60)
record("${INTERNAL}" others 1 60)
foreach(file .txt -printed.txt)
  compare(some${file} others${file} differs)
  if(NOT differs)
    message(FATAL_ERROR "other lives left the same ${file}")
  endif()
endforeach()
