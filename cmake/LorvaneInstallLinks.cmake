# Runs at install time: makes the links of the installed binaries folder from
# LORVANE_LINKS ("name=/path/of/the/tool" each) in LORVANE_LINK_FOLDER (relative to the prefix).
#
# A tool inside the configured prefix gets a relative link, as Debian wants within /usr
# (../../../bin/perl), when the install goes to that prefix (also under a staging folder, as
# CPack's); every other link stays absolute, so that an install into another prefix, or a
# prefix moved later, still finds the machine's tools.
set(folder "${CMAKE_INSTALL_PREFIX}/${LORVANE_LINK_FOLDER}")
file(MAKE_DIRECTORY "$ENV{DESTDIR}${folder}")
string(LENGTH "${LORVANE_CONFIGURED_PREFIX}" length)
string(LENGTH "${CMAKE_INSTALL_PREFIX}" installLength)
math(EXPR start "${installLength} - ${length}")
set(toConfiguredPrefix FALSE)
if(start GREATER_EQUAL 0)
  string(SUBSTRING "${CMAKE_INSTALL_PREFIX}" ${start} -1 end)
  if(end STREQUAL LORVANE_CONFIGURED_PREFIX)
    set(toConfiguredPrefix TRUE)
  endif()
endif()
foreach(link IN LISTS LORVANE_LINKS)
  string(REGEX MATCH "^([^=]*)=(.*)$" matched "${link}")
  set(name "${CMAKE_MATCH_1}")
  set(target "${CMAKE_MATCH_2}")
  cmake_path(IS_PREFIX LORVANE_CONFIGURED_PREFIX "${target}" NORMALIZE inside)
  if(toConfiguredPrefix AND inside)
    file(RELATIVE_PATH target "${LORVANE_CONFIGURED_PREFIX}/${LORVANE_LINK_FOLDER}" "${target}")
  endif()
  message(STATUS "Installing: $ENV{DESTDIR}${folder}/${name} -> ${target}")
  file(REMOVE "$ENV{DESTDIR}${folder}/${name}")
  file(CREATE_LINK "${target}" "$ENV{DESTDIR}${folder}/${name}" SYMBOLIC)
endforeach()
