#pragma once

#include <filesystem>
#include <optional>

namespace lorvane::platform {

// The file that this library's code was loaded from (the shared library, or the program when
// linked statically), as the loader named it, symbolic links not resolved; nothing when the
// system can't tell.
std::optional<std::filesystem::path> libraryLocation();

}  // namespace lorvane::platform
