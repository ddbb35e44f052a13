# SPDX-License-Identifier: Apache-2.0
# Read by ctest: asks a test program for its suites and adds a test for each.

function(quorvel_list_suites program prefix environment)
  if(NOT EXISTS "${program}")
    add_test(${prefix}.not_built "${program}")
    return()
  endif()
  execute_process(COMMAND "${program}" --gtest_list_tests
    OUTPUT_VARIABLE listing RESULT_VARIABLE failed TIMEOUT 60)
  if(failed)
    message(FATAL_ERROR "${program} does not list its tests: ${failed}")
  endif()
  # A suite's line ends in a dot or in a dot and a remark; its cases follow, indented.
  string(REGEX MATCHALL "(^|\n)[^ \n]+\\.[^\n]*(\n +[^\n]+)+" suites "${listing}")
  if(NOT suites)
    message(FATAL_ERROR "${program} lists no tests")
  endif()
  # Nothing passed, nothing failed, all was left out.
  set(all_skipped "\\[  PASSED  \\] 0 tests\\.\n\\[  SKIPPED \\] [^\n]*listed below:\n(\\[  SKIPPED \\] [^\n]*\n)+$")
  foreach(suite IN LISTS suites)
    string(REGEX MATCH "[^ \n]+\\." name "${suite}")
    string(REGEX MATCHALL "\n +" cases "${suite}")
    list(LENGTH cases cost)
    string(REGEX REPLACE "\\.$" "" bare "${name}")
    add_test("${prefix}.${bare}" "${program}" "--gtest_filter=${name}*")
    # The suites of most cases first: two cores then end at the same time.
    set_tests_properties("${prefix}.${bare}" PROPERTIES
      COST ${cost} TIMEOUT 600 SKIP_REGULAR_EXPRESSION "${all_skipped}" ENVIRONMENT "${environment}")
  endforeach()
endfunction()
