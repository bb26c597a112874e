# `cpack -G DEB` in a release build makes three Debian packages from the install components:
# liblorvane0 (the library and its resource folder), liblorvane-dev (headers, CMake package,
# pkg-config file) and lorvane (the program). Configure with CMAKE_INSTALL_PREFIX=/usr (the
# deb preset does) so that the library lands in Debian's multiarch folder.
set(CPACK_PACKAGE_NAME lorvane)
set(CPACK_PACKAGE_VENDOR "The Lorvane developers")
set(CPACK_PACKAGE_CONTACT "The Lorvane developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_COMPONENTS_ALL runtime dev)
if(LORVANE_BUILD_PROGRAM)
  list(APPEND CPACK_COMPONENTS_ALL program)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
# dpkg-shlibdeps names the ICU, C++ and C runtimes the binaries were linked against.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The program's liblorvane comes from the runtime package of this same build.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "liblorvane${PROJECT_VERSION_MAJOR}")
# The library starts ExifTool through the links of its binaries folder; AtomicParsley is only
# for removing an iTunMOVI atom.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libimage-exiftool-perl, perl")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS atomicparsley)

set(CPACK_DEBIAN_DEV_PACKAGE_NAME liblorvane-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
# For lorvane::json and <lorvane/json.hpp>.
set(CPACK_DEBIAN_DEV_PACKAGE_RECOMMENDS nlohmann-json3-dev)

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME lorvane)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION graphics)

# Each Debian package carries the license as its copyright file.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER "${component}" upper)
  install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" RENAME copyright COMPONENT ${component}
    DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
endforeach()

include(CPack)
cpack_add_component(runtime DISPLAY_NAME "Lorvane library"
  DESCRIPTION "ExifTool runs and a localised catalogue of its tags (C++ library)")
cpack_add_component(dev DISPLAY_NAME "Lorvane development files" DEPENDS runtime
  DESCRIPTION "ExifTool runs and a localised catalogue of its tags (C++ headers, CMake package, pkg-config file)")
if(LORVANE_BUILD_PROGRAM)
  cpack_add_component(program DISPLAY_NAME "lorvane program" DEPENDS runtime
    DESCRIPTION "The lorvane command: the metadata of files with localised tag titles and value labels")
endif()
