#include "platform/small_file.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/pipe.hpp"

namespace lorvane::platform {

std::optional<std::string> readFileStart(const std::string& path, std::size_t limit) {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) {
    return std::nullopt;
  }
  std::string contents(limit, '\0');
  std::size_t filled = 0;
  while (filled < limit) {
    const ssize_t count = ::read(file.get(), contents.data() + filled, limit - filled);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0) {
      return std::nullopt;
    }
    if (count == 0) {
      break;
    }
    filled += static_cast<std::size_t>(count);
  }
  contents.resize(filled);
  return contents;
}

}  // namespace lorvane::platform
