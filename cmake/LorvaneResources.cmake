# The library's resource folder: share/lorvane in the build tree, with a binaries folder
# whose entries point at the tools installed on this machine, so runs work out of the box.
set(LORVANE_BUILD_RESOURCE_DIR "${PROJECT_BINARY_DIR}/share/lorvane")

find_program(LORVANE_PERL perl REQUIRED)
find_program(LORVANE_EXIFTOOL exiftool REQUIRED)
find_program(LORVANE_ATOMICPARSLEY NAMES AtomicParsley atomicparsley)
find_path(LORVANE_PERLLIB Image/ExifTool.pm PATHS /usr/share/perl5 /usr/local/share/perl5 REQUIRED)
if(NOT LORVANE_ATOMICPARSLEY)
  message(WARNING "AtomicParsley not found: the binaries folder will lack 'atomicparsley'")
endif()

file(MAKE_DIRECTORY "${LORVANE_BUILD_RESOURCE_DIR}/binaries")
foreach(entry IN ITEMS perl exiftool perllib atomicparsley)
  string(TOUPPER "${entry}" upper)
  if(LORVANE_${upper})
    file(CREATE_LINK "${LORVANE_${upper}}" "${LORVANE_BUILD_RESOURCE_DIR}/binaries/${entry}" SYMBOLIC)
  endif()
endforeach()

# Resources kept in the source tree (the Localizable tables) are copied beside the links.
if(EXISTS "${PROJECT_SOURCE_DIR}/share/lorvane")
  file(COPY "${PROJECT_SOURCE_DIR}/share/lorvane/" DESTINATION "${LORVANE_BUILD_RESOURCE_DIR}")
endif()
