#pragma once

#include <optional>
#include <string>

namespace lorvane {

// The value of a variable of the host's environment; nothing when it is unset or empty, which
// the system's conventions treat alike.
std::optional<std::string> environmentValue(const char* name);

}  // namespace lorvane
