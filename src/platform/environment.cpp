#include "platform/environment.hpp"

#include <cstdlib>

namespace lorvane {

std::optional<std::string> environmentValue(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr || value[0] == '\0') {
    return std::nullopt;
  }
  return std::string(value);
}

}  // namespace lorvane
