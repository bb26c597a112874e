# The library's resource folder: share/lorvane in the build tree, with a binaries folder
# whose entries point at the tools installed on this machine, so runs work out of the box.
set(LORVANE_BUILD_RESOURCE_DIR "${PROJECT_BINARY_DIR}/share/lorvane")

find_program(LORVANE_PERL perl)
find_program(LORVANE_EXIFTOOL exiftool)
find_path(LORVANE_PERLLIB Image/ExifTool.pm PATHS /usr/share/perl5 /usr/local/share/perl5)
find_program(LORVANE_ATOMICPARSLEY NAMES AtomicParsley atomicparsley)

# The library builds without the tools: a run then fails to start until the application names
# a binaries folder of its own, so a missing tool is a warning, not an error.
file(MAKE_DIRECTORY "${LORVANE_BUILD_RESOURCE_DIR}/binaries")
set(missing "")
set(LORVANE_BINARIES_LINKS "")
foreach(entry IN ITEMS perl exiftool perllib atomicparsley)
  string(TOUPPER "${entry}" upper)
  if(LORVANE_${upper})
    file(CREATE_LINK "${LORVANE_${upper}}" "${LORVANE_BUILD_RESOURCE_DIR}/binaries/${entry}" SYMBOLIC)
    list(APPEND LORVANE_BINARIES_LINKS "${entry}=${LORVANE_${upper}}")
  else()
    list(APPEND missing "'${entry}'")
  endif()
endforeach()
if(missing)
  list(JOIN missing ", " missing)
  message(WARNING "The binaries folder will lack ${missing}: runs need ExifTool and its Perl, "
    "removing an iTunMOVI atom needs AtomicParsley "
    "(on Debian: apt-get install libimage-exiftool-perl atomicparsley)")
endif()

# Resources kept in the source tree (the Localizable tables) are copied beside the links.
if(EXISTS "${PROJECT_SOURCE_DIR}/share/lorvane")
  file(COPY "${PROJECT_SOURCE_DIR}/share/lorvane/" DESTINATION "${LORVANE_BUILD_RESOURCE_DIR}")
endif()
