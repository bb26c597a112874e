# Runs at install time: makes the links of the installed binaries folder from
# LORVANE_LINKS ("name=/path/of/the/tool" each) in LORVANE_LINK_FOLDER (relative to the prefix).
#
# A tool inside the install prefix gets a relative link, as Debian wants within /usr
# (../../../bin/perl; CPack installs to /usr under DESTDIR); a tool outside it keeps an
# absolute link, so that a prefix moved later still finds the machine's tools.
set(folder "${CMAKE_INSTALL_PREFIX}/${LORVANE_LINK_FOLDER}")
file(MAKE_DIRECTORY "$ENV{DESTDIR}${folder}")
foreach(link IN LISTS LORVANE_LINKS)
  string(REGEX MATCH "^([^=]*)=(.*)$" matched "${link}")
  set(name "${CMAKE_MATCH_1}")
  set(target "${CMAKE_MATCH_2}")
  cmake_path(IS_PREFIX CMAKE_INSTALL_PREFIX "${target}" NORMALIZE inside)
  if(inside)
    file(RELATIVE_PATH target "${folder}" "${target}")
  endif()
  message(STATUS "Installing: $ENV{DESTDIR}${folder}/${name} -> ${target}")
  file(REMOVE "$ENV{DESTDIR}${folder}/${name}")
  file(CREATE_LINK "${target}" "$ENV{DESTDIR}${folder}/${name}" SYMBOLIC)
endforeach()
