# SPDX-License-Identifier: Apache-2.0
# Installs the library, its headers and a package that find_package(quorvel) or pkg-config finds; the command when it is
# built.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/quorvel")
install(TARGETS quorvel EXPORT quorvel-targets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/quorvel" "${PROJECT_BINARY_DIR}/include/quorvel"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" FILES_MATCHING PATTERN "*.h")
install(EXPORT quorvel-targets NAMESPACE quorvel:: DESTINATION "${package_dir}")
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/quorvel-config.cmake.in"
  "${PROJECT_BINARY_DIR}/quorvel-config.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/quorvel-config-version.cmake" COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/quorvel-config.cmake"
  "${PROJECT_BINARY_DIR}/quorvel-config-version.cmake"
  DESTINATION "${package_dir}")
if(NOT WIN32)
  include(QuorvelPkgConfig)
  install(FILES "${PROJECT_BINARY_DIR}/quorvel.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endif()
# On Windows the installed tree is handed on as a folder of its own, with the licences of what lies beside the DLL.
if(WIN32)
  set(license_dir licenses/quorvel)
else()
  set(license_dir "${CMAKE_INSTALL_DOCDIR}")
endif()
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${license_dir}")
if(QUORVEL_BUILD_TOOLS)
  install(TARGETS quorvel-cli RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()
