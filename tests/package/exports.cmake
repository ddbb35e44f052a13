# SPDX-License-Identifier: Apache-2.0
# Compares the shared library's dynamic symbols with the methods that the public header marks for export.
execute_process(COMMAND "${NM}" -D -C --defined-only "${LIBRARY}" OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
file(STRINGS "${HEADER}" declarations REGEX "^    QUORVEL_API .*\\(")

set(declared "")
foreach(declaration IN LISTS declarations)
  string(REGEX MATCH "([A-Za-z~=]+)\\(" unused "${declaration}")
  list(APPEND declared "Quorvel::${CMAKE_MATCH_1}")
endforeach()
list(REMOVE_DUPLICATES declared)

set(exported "")
string(REGEX MATCHALL "[^\n]+" lines "${symbols}")
foreach(line IN LISTS lines)
  string(REGEX REPLACE "^[0-9a-f]+ [A-Za-z] " "" name "${line}")
  string(REGEX REPLACE "(\\[abi:[a-z0-9]+\\])?\\(.*" "" name "${name}")
  list(APPEND exported "${name}")
endforeach()
list(REMOVE_DUPLICATES exported)

list(SORT declared)
list(SORT exported)
if(NOT declared STREQUAL exported)
  message(FATAL_ERROR "declared for export: ${declared}\nexported: ${exported}")
endif()
list(LENGTH exported count)
message(STATUS "${count} names exported, all of them public methods")
