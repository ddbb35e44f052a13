# SPDX-License-Identifier: Apache-2.0
# Settings shared by all of our own targets; nothing here leaks to a project that links the library.

function(quorvel_target_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  # Results are promised bit for bit: no contraction into fused multiply-adds, no fast-math.
  if(MSVC)
    target_compile_options(${target} PRIVATE /fp:precise /W4 /permissive- /utf-8)
    target_compile_definitions(${target} PRIVATE _CRT_SECURE_NO_WARNINGS NOMINMAX)
    if(QUORVEL_WARNINGS_AS_ERRORS)
      target_compile_options(${target} PRIVATE /WX)
    endif()
    return()
  endif()
  target_compile_options(${target} PRIVATE
    -ffp-contract=off -fno-fast-math
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
  if(QUORVEL_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(QUORVEL_SANITIZE)
    # What "undefined" leaves out and is wrong in this code: a float that its integer cannot hold, an index beyond
    # the last array of a struct. Division of floats by zero stays out: a focal length of 0 gives an infinite
    # reciprocal, by intent. So do pointer-compare and pointer-subtract: GCC 12 takes the end of an array on the stack
    # for a pointer into another block.
    set(sanitizers address,undefined,float-cast-overflow,bounds-strict)
    target_compile_options(${target} PRIVATE
      -fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${sanitizers})
    # Indices of the standard library's containers.
    target_compile_definitions(${target} PRIVATE _GLIBCXX_ASSERTIONS)
  endif()
  if(QUORVEL_SANITIZE_THREADS)
    target_compile_options(${target} PRIVATE -fsanitize=thread -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=thread)
  endif()
  if(QUORVEL_FUZZ)
    # The standard library checks its indices; of the integer checks only what the list names is left out.
    set(checks address,undefined,float-cast-overflow,bounds,integer)
    # Neither ninja nor a compiler cache looks into the list: a change of it has to show in the command, by its name.
    set(list "${PROJECT_SOURCE_DIR}/tests/fuzz/ignorelist.txt")
    set_property(DIRECTORY "${PROJECT_SOURCE_DIR}" APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${list}")
    file(SHA256 "${list}" hash)
    set(named_list "${PROJECT_BINARY_DIR}/ignorelist-${hash}.txt")
    configure_file("${list}" "${named_list}" COPYONLY)
    target_compile_definitions(${target} PRIVATE _GLIBCXX_ASSERTIONS)
    target_compile_options(${target} PRIVATE
      -fsanitize=fuzzer-no-link,${checks} -fno-sanitize-recover=all -fno-omit-frame-pointer
      "-fsanitize-ignorelist=${named_list}")
    target_link_options(${target} PRIVATE -fsanitize=${checks})
  endif()
  if(QUORVEL_COVERAGE)
    target_compile_definitions(${target} PRIVATE QUORVEL_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -O0)
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()
