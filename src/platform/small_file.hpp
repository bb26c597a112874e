#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace lorvane::platform {

// At most the first `limit` bytes of a file, read with one open, read and close and no stream
// buffer to set up: for the small settings files read on a catalogue's first touch. Nothing
// when the file can't be opened or read.
std::optional<std::string> readFileStart(const std::string& path, std::size_t limit);

}  // namespace lorvane::platform
