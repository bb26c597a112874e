#include "platform/library_location.hpp"

#include <dlfcn.h>

namespace lorvane::platform {

std::optional<std::filesystem::path> libraryLocation() {
  Dl_info info{};
  // Any function of ours will do to name the loaded object we belong to.
  if (dladdr(reinterpret_cast<const void*>(&libraryLocation), &info) == 0 ||
      info.dli_fname == nullptr || info.dli_fname[0] == '\0') {
    return std::nullopt;
  }
  std::error_code error;
  auto path = std::filesystem::weakly_canonical(info.dli_fname, error);
  if (error) {
    return std::nullopt;
  }
  return path;
}

}  // namespace lorvane::platform
