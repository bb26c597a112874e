#pragma once

#include <optional>
#include <string>

namespace lorvane::platform {

// The file that this library's code was loaded from (the shared library, or the program when
// linked statically), as the loader named it: neither normalised nor with its symbolic links
// resolved; nothing when the system can't tell.
std::optional<std::string> libraryLocation();

}  // namespace lorvane::platform
