#pragma once

#include <filesystem>
#include <string>

namespace lorvane {

// The library's resource folder (it holds "binaries" and the Localizable tables):
// $LORVANE_RESOURCE_DIR when set; the build tree's share/lorvane for a library that was loaded
// from its build tree; else the share/lorvane that belongs to the installed library, found
// beside the library file so that a moved prefix still works, and last the compiled-in
// install location. The folder is not checked for existence.
std::filesystem::path resourceFolder();

// The same as text. For a library in its build tree it comes without parsing a path, which
// keeps the language lookup on the first touch of a catalogue tag cheap.
std::string resourceFolderName();

}  // namespace lorvane
