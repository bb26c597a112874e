# `cmake --install` puts the headers, the library, the resource folder, a CMake package, a
# pkg-config file and the program under the prefix, so other projects can take Lorvane in
# either way. Each file belongs to a component, one Debian package each: runtime (the library
# and its resources), dev (what building against it needs) and program.
include(CMakePackageConfigHelpers)

# In the lower-case spelling of the target and the pkg-config name: find_package matches the
# folder in any case and this file name for both "lorvane" and "Lorvane".
set(LORVANE_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/lorvane")

install(TARGETS lorvane EXPORT LorvaneTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/lorvane" DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT dev)
# The binaries folder holds links to the tools of the machine, made anew where it is installed.
install(DIRECTORY "${LORVANE_BUILD_RESOURCE_DIR}/" DESTINATION "${CMAKE_INSTALL_DATADIR}/lorvane"
  COMPONENT runtime PATTERN binaries EXCLUDE)
install(CODE "
  set(LORVANE_LINKS \"${LORVANE_BINARIES_LINKS}\")
  set(LORVANE_LINK_FOLDER \"${CMAKE_INSTALL_DATADIR}/lorvane/binaries\")
  include(\"${PROJECT_SOURCE_DIR}/cmake/LorvaneInstallLinks.cmake\")"
  COMPONENT runtime)

# The program finds the library relative to itself, so any prefix works without
# LD_LIBRARY_PATH, also one that was moved after the install.
if(LORVANE_BUILD_PROGRAM)
  file(RELATIVE_PATH LORVANE_BIN_TO_LIB "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
  set_target_properties(lorvane-cli PROPERTIES INSTALL_RPATH "$ORIGIN/${LORVANE_BIN_TO_LIB}")
  install(TARGETS lorvane-cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
  install(FILES "${PROJECT_BINARY_DIR}/apps/lorvane.1.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
    COMPONENT program)
  # Where bash-completion loads it from when "lorvane" is first completed.
  install(FILES "${PROJECT_SOURCE_DIR}/apps/lorvane/lorvane.bash-completion" RENAME lorvane
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT program)
endif()

install(EXPORT LorvaneTargets NAMESPACE lorvane:: DESTINATION ${LORVANE_CMAKE_DIR} COMPONENT dev)
if(TARGET lorvane_json)
  install(TARGETS lorvane_json EXPORT LorvaneJsonTargets COMPONENT dev)
  install(EXPORT LorvaneJsonTargets NAMESPACE lorvane:: DESTINATION ${LORVANE_CMAKE_DIR}
    COMPONENT dev)
endif()
configure_package_config_file(cmake/LorvaneConfig.cmake.in
  "${PROJECT_BINARY_DIR}/lorvane-config.cmake" INSTALL_DESTINATION ${LORVANE_CMAKE_DIR})
write_basic_package_version_file("${PROJECT_BINARY_DIR}/lorvane-config-version.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/lorvane-config.cmake"
  "${PROJECT_BINARY_DIR}/lorvane-config-version.cmake"
  DESTINATION ${LORVANE_CMAKE_DIR} COMPONENT dev)

# The .pc file finds its prefix from where it lies, so an installed tree can move.
file(RELATIVE_PATH LORVANE_PC_TO_PREFIX "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
configure_file(cmake/lorvane.pc.in "${PROJECT_BINARY_DIR}/lorvane.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/lorvane.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
  COMPONENT dev)
