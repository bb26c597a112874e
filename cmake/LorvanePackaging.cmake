# `cpack -G DEB` in a release build makes three Debian packages from the install components:
# liblorvane0 (the library and its resource folder), liblorvane-dev (headers, CMake package,
# pkg-config file), lorvane (the program) and python3-lorvane (the Python package). Configure with CMAKE_INSTALL_PREFIX=/usr (the
# deb preset does) so that the library lands in Debian's multiarch folder.
set(CPACK_PACKAGE_NAME lorvane)
set(CPACK_PACKAGE_VENDOR "The Lorvane developers")
# The packages' maintainer, also the signer of the changelog's entries.
set(CPACK_PACKAGE_CONTACT "Lorvane maintainers <maintainers@users.noreply.c-seed-880ccd6b.example>")
# Each package's synopsis is the first line of its component's description below; CPack
# would put a shared summary in front of it.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_COMPONENTS_ALL runtime dev)
if(LORVANE_BUILD_PROGRAM)
  list(APPEND CPACK_COMPONENTS_ALL program)
endif()
if(LORVANE_BUILD_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
# dpkg-shlibdeps names the ICU, C++ and C runtimes the binaries were linked against.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# A shlibs file, so that packages built against the library depend on liblorvane0 of this
# version or later: the soname changes when the library's interface breaks.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# Binaries ship stripped; their debug information goes to a -dbgsym package each (a .ddeb).
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
# The program's liblorvane comes from the runtime package of this same build.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "liblorvane${PROJECT_VERSION_MAJOR}")
# The library starts ExifTool through the links of its binaries folder; AtomicParsley is only
# for removing an iTunMOVI atom.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libimage-exiftool-perl, perl")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS atomicparsley)
# The loader's cache is brought up to date by dpkg's ldconfig trigger. CPack would write a
# postinst and postrm calling ldconfig unless the extra control files name scripts of those
# names; it adds only the files that exist, so naming scripts that don't exist leaves the
# package without maintainer scripts, as Debian's library packages are.
file(WRITE "${PROJECT_BINARY_DIR}/debian/triggers" "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_BINARY_DIR}/debian/triggers"
  "${PROJECT_BINARY_DIR}/debian/none/postinst" "${PROJECT_BINARY_DIR}/debian/none/postrm")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME liblorvane-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
# For lorvane::json and <lorvane/json.hpp>.
set(CPACK_DEBIAN_DEV_PACKAGE_RECOMMENDS nlohmann-json3-dev)

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME lorvane)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION graphics)

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-lorvane)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
# The module is built for this one Python version, as Debian's python3-* packages of extension
# modules are.
math(EXPR lorvane_python_next "${Python3_VERSION_MINOR} + 1")
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
  "python3 (>= ${Python3_VERSION_MAJOR}.${Python3_VERSION_MINOR}), python3 (<< ${Python3_VERSION_MAJOR}.${lorvane_python_next})")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-dask, python3-distributed")

# The changelog's latest entry is this version's: a version bump needs an entry.
file(STRINGS cmake/changelog.in latest LIMIT_COUNT 1)
if(NOT latest MATCHES "^lorvane \\(${PROJECT_VERSION}\\) ")
  message(FATAL_ERROR "cmake/changelog.in starts with '${latest}', not an entry for "
    "version ${PROJECT_VERSION}")
endif()
configure_file(cmake/changelog.in "${PROJECT_BINARY_DIR}/debian/changelog" @ONLY)
find_program(LORVANE_GZIP gzip REQUIRED)
execute_process(COMMAND "${LORVANE_GZIP}" -9nc "${PROJECT_BINARY_DIR}/debian/changelog"
  OUTPUT_FILE "${PROJECT_BINARY_DIR}/debian/changelog.gz" COMMAND_ERROR_IS_FATAL ANY)

# Each Debian package carries the license as its copyright file, and the changelog; the
# packages are native (no separate upstream), so it is changelog.gz.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER "${component}" upper)
  set(doc "${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
  install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" RENAME copyright COMPONENT ${component}
    DESTINATION "${doc}")
  install(FILES "${PROJECT_BINARY_DIR}/debian/changelog.gz" COMPONENT ${component}
    DESTINATION "${doc}")
endforeach()

include(CPack)
# The first line of a description is the package's synopsis; lines of the rest stay within
# 72 characters, an empty one parts paragraphs.
set(about "Lorvane runs ExifTool as a supervised child process, with arguments made
from named options, and decodes what it prints. Its catalogue holds the
tags ExifTool knows, with titles and value labels in seven languages.")
cpack_add_component(runtime DISPLAY_NAME "Lorvane library"
  DESCRIPTION "ExifTool runs and a localised catalogue of its tags (C++ library)
${about}

This package holds the shared library and its resources.")
cpack_add_component(dev DISPLAY_NAME "Lorvane development files" DEPENDS runtime
  DESCRIPTION "ExifTool runs and a localised catalogue of its tags (C++ headers)
${about}

This package holds what building against the library needs: the C++
headers, a CMake package for find_package(lorvane) and a pkg-config file.")
if(LORVANE_BUILD_PROGRAM)
  cpack_add_component(program DISPLAY_NAME "lorvane program" DEPENDS runtime
    DESCRIPTION "show and edit the metadata of files in localised words
The lorvane command reads and writes the metadata of image, video, audio
and document files with ExifTool, and shows every tag with its title and
value labels in English, German, French, Italian, Spanish, Japanese or
Simplified Chinese.")
endif()
if(LORVANE_BUILD_PYTHON)
  # It depends on the library of this very build: it uses the library's own catalogue texts.
  cpack_add_component(python DISPLAY_NAME "Lorvane for Python" DEPENDS runtime
    DESCRIPTION "ExifTool runs and a localised catalogue of its tags (Python 3)
${about}

This package holds the Python 3 module lorvane: a Reader that streams
files' tags with kept ExifTools side by side, a Writer with checked
assignments, the catalogue, and lorvane.dask for reading on a Dask
cluster.")
endif()
