# `cmake --install` puts the headers, the library, the resource folder, a CMake package and a
# pkg-config file under the prefix, so other projects can take Lorvane in either way.
include(CMakePackageConfigHelpers)

set(LORVANE_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/Lorvane")

install(TARGETS lorvane EXPORT LorvaneTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/lorvane" DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# The binaries folder holds links to the tools of the machine; they are installed as links.
install(DIRECTORY "${LORVANE_BUILD_RESOURCE_DIR}/" DESTINATION "${CMAKE_INSTALL_DATADIR}/lorvane")
install(TARGETS lorvane-cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

install(EXPORT LorvaneTargets NAMESPACE lorvane:: DESTINATION ${LORVANE_CMAKE_DIR})
configure_package_config_file(cmake/LorvaneConfig.cmake.in
  "${PROJECT_BINARY_DIR}/LorvaneConfig.cmake" INSTALL_DESTINATION ${LORVANE_CMAKE_DIR})
write_basic_package_version_file("${PROJECT_BINARY_DIR}/LorvaneConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/LorvaneConfig.cmake" "${PROJECT_BINARY_DIR}/LorvaneConfigVersion.cmake"
  DESTINATION ${LORVANE_CMAKE_DIR})

# The .pc file finds its prefix from where it lies, so an installed tree can move.
file(RELATIVE_PATH LORVANE_PC_TO_PREFIX "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
configure_file(cmake/lorvane.pc.in "${PROJECT_BINARY_DIR}/lorvane.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/lorvane.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
