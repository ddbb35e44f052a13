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
    target_compile_options(${target} PRIVATE
      -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=address,undefined)
  endif()
  if(QUORVEL_SANITIZE_THREADS)
    target_compile_options(${target} PRIVATE -fsanitize=thread -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=thread)
  endif()
  if(QUORVEL_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -O0)
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()
