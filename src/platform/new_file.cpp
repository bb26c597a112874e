#include "platform/new_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "platform/pipe.hpp"

namespace lorvane::platform {
namespace {

bool copyBytes(int from, int to) {
  std::vector<char> buffer(1 << 20);
  for (;;) {
    const ssize_t count = ::read(from, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count <= 0) {
      return count == 0;
    }
    ssize_t written = 0;
    while (written < count) {
      const ssize_t step =
          ::write(to, buffer.data() + written, static_cast<std::size_t>(count - written));
      if (step < 0 && errno == EINTR) {
        continue;
      }
      if (step < 0) {
        return false;
      }
      written += step;
    }
  }
}

}  // namespace

NewCopy copyToNewFile(const std::string& from, const std::string& to) {
  const FileDescriptor source(::open(from.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status {};
  if (!source.isOpen() || ::fstat(source.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return NewCopy::failed;
  }
  // Owner-only until the bytes are in, then the original's permission bits.
  FileDescriptor target(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!target.isOpen()) {
    return errno == EEXIST ? NewCopy::exists : NewCopy::failed;
  }
  const struct timespec times[2] = {status.st_atim, status.st_mtim};
  if (!copyBytes(source.get(), target.get()) ||
      ::fchmod(target.get(), status.st_mode & 07777) != 0 || ::futimens(target.get(), times) != 0) {
    target.close();
    ::unlink(to.c_str());
    return NewCopy::failed;
  }
  target.close();
  return NewCopy::made;
}

}  // namespace lorvane::platform
