# SPDX-License-Identifier: Apache-2.0
# Writes quorvel.pc for hosts that build without CMake. OpenCV's own file, where there is one, names every module that
# OpenCV has; this one names those that Quorvel uses: opencv_core for everybody, the others for static links alone.

# A folder of the installed tree as pkg-config sees it: below the prefix, which can be moved, unless it is absolute.
function(quorvel_pc_folder folder result)
  if(IS_ABSOLUTE "${folder}")
    set(${result} "${folder}" PARENT_SCOPE)
  else()
    set(${result} "\${prefix}/${folder}" PARENT_SCOPE)
  endif()
endfunction()

# The prefix as seen from the folder of quorvel.pc.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(pc_prefix "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH pc_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  string(REGEX REPLACE "/$" "" pc_prefix "\${pcfiledir}/${pc_prefix}")
endif()
quorvel_pc_folder("${CMAKE_INSTALL_LIBDIR}" pc_libdir)
quorvel_pc_folder("${CMAKE_INSTALL_INCLUDEDIR}" pc_includedir)

get_target_property(opencv_library opencv_core LOCATION)
cmake_path(GET opencv_library PARENT_PATH opencv_folder)
set(opencv_search "")
if(NOT opencv_folder IN_LIST CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES)
  set(opencv_search "-L${opencv_folder} ")
endif()

set(pc_cflags "-I\${includedir}")
foreach(folder IN LISTS OpenCV_INCLUDE_DIRS)
  string(APPEND pc_cflags " -I${folder}")
endforeach()
set(pc_libs "-L\${libdir} -lquorvel ${opencv_search}-lopencv_core")
set(pc_private_libs "-lopencv_imgcodecs -lopencv_imgproc")
get_target_property(type quorvel TYPE)
if(type STREQUAL "STATIC_LIBRARY")
  # There is nothing but the archive: what it needs is needed with and without --static, and before opencv_core.
  string(APPEND pc_cflags " -DQUORVEL_STATIC")
  set(pc_libs "-L\${libdir} -lquorvel ${opencv_search}${pc_private_libs} -lopencv_core")
  set(pc_private_libs "")
endif()
configure_file("${CMAKE_CURRENT_LIST_DIR}/quorvel.pc.in" "${PROJECT_BINARY_DIR}/quorvel.pc" @ONLY)
