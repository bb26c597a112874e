#include "platform/private_file.hpp"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <vector>

#include "platform/pipe.hpp"

namespace lorvane::platform {
namespace {

[[noreturn]] void fail(int error, const std::string& what) {
  throw std::system_error(error, std::generic_category(), what);
}

}  // namespace

std::filesystem::path PrivateFile::folder() {
  // Memory-backed on Linux: the bytes never reach a disk, and writing them costs a copy only.
  constexpr const char* memoryFolder = "/dev/shm";
  struct stat status {};
  if (::stat(memoryFolder, &status) == 0 && S_ISDIR(status.st_mode) &&
      ::access(memoryFolder, W_OK | X_OK) == 0) {
    return memoryFolder;
  }
  return std::filesystem::temp_directory_path();
}

PrivateFile::PrivateFile(std::span<const std::byte> bytes, std::string_view extension) {
  std::string name = (folder() / "lorvane-XXXXXX").string();
  const std::size_t suffix = extension.empty() ? 0 : extension.size() + 1;
  if (suffix > 0) {
    name.append(".").append(extension);
  }
  std::vector<char> buffer(name.begin(), name.end());
  buffer.push_back('\0');
  // mkostemps makes the file with mode 0600 and fails rather than open one that exists.
  const FileDescriptor file(::mkostemps(buffer.data(), static_cast<int>(suffix), O_CLOEXEC));
  if (!file.isOpen()) {
    const int error = errno;
    fail(error, "can't make a file in " + name);
  }
  path_.assign(buffer.data());
  std::size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t count = ::write(file.get(), bytes.data() + written, bytes.size() - written);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0) {
      const int error = errno;
      ::unlink(path_.c_str());
      fail(error, "can't write " + path_);
    }
    written += static_cast<std::size_t>(count);
  }
}

PrivateFile::~PrivateFile() { ::unlink(path_.c_str()); }

}  // namespace lorvane::platform
