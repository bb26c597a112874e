#include "platform/pipe.hpp"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>

namespace lorvane::platform {
namespace {

// Moves a descriptor above the standard ones (closing the old one), keeping close-on-exec.
// On failure the descriptor is closed with the object that holds it.
FileDescriptor aboveStandardStreams(FileDescriptor fd) {
  if (fd.get() > STDERR_FILENO) {
    return fd;
  }
  const int moved = fcntl(fd.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (moved < 0) {
    throw std::system_error(errno, std::generic_category(), "cannot move a pipe descriptor");
  }
  return FileDescriptor(moved);
}

}  // namespace

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
  if (this != &other) {
    close();
    fd_ = other.fd_;
    other.fd_ = -1;
  }
  return *this;
}

void FileDescriptor::close() {
  if (fd_ >= 0) {
    // Linux and macOS release the descriptor even when close reports EINTR, so no retry.
    ::close(fd_);
    fd_ = -1;
  }
}

Pipe makePipe(std::size_t capacity) {
  int ends[2];
#ifdef __APPLE__
  // No pipe2 here: the window until FD_CLOEXEC is set is open only to a fork of another thread.
  if (pipe(ends) != 0) {
    throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
  }
  fcntl(ends[0], F_SETFD, FD_CLOEXEC);
  fcntl(ends[1], F_SETFD, FD_CLOEXEC);
#else
  if (pipe2(ends, O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
  }
#endif
  // Both ends are owned before either is moved, so a failing move leaks neither.
  FileDescriptor readEnd(ends[0]);
  FileDescriptor writeEnd(ends[1]);
  Pipe pipe;
  pipe.readEnd = aboveStandardStreams(std::move(readEnd));
  pipe.writeEnd = aboveStandardStreams(std::move(writeEnd));
#ifdef F_SETPIPE_SZ
  if (capacity > 0) {
    // Refused beyond the system's limit for unprivileged users; the default size works too.
    fcntl(pipe.writeEnd.get(), F_SETPIPE_SZ, static_cast<int>(capacity));
  }
#else
  (void)capacity;
#endif
  return pipe;
}

void setNonBlocking(int fd) { fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK); }

std::error_code writeAvailable(int fd, std::span<const std::byte>& bytes) {
  // SIGPIPE is held back on this thread for the write. If the write raises it, it is taken off
  // again before the old mask returns, unless one was already waiting that isn't ours.
  sigset_t pipeSignal;
  sigemptyset(&pipeSignal);
  sigaddset(&pipeSignal, SIGPIPE);
  sigset_t oldMask;
  pthread_sigmask(SIG_BLOCK, &pipeSignal, &oldMask);
  sigset_t pending;
  sigpending(&pending);
  const bool wasPending = sigismember(&pending, SIGPIPE) == 1;

  int error = 0;
  while (!bytes.empty()) {
    const ssize_t written = ::write(fd, bytes.data(), bytes.size());
    if (written < 0) {
      if (errno == EINTR) {
        continue;
      }
      if (errno != EAGAIN && errno != EWOULDBLOCK) {
        error = errno;
      }
      break;
    }
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }

  if (error == EPIPE && !wasPending) {
    sigpending(&pending);
    if (sigismember(&pending, SIGPIPE) == 1) {
      int taken = 0;
      sigwait(&pipeSignal, &taken);  // pending, so it returns at once
    }
  }
  pthread_sigmask(SIG_SETMASK, &oldMask, nullptr);
  return error == 0 ? std::error_code() : std::error_code(error, std::generic_category());
}

std::vector<std::byte> readToEnd(int fd) {
  std::vector<std::byte> data;
  std::byte buffer[64 * 1024];
  for (;;) {
    const ssize_t count = ::read(fd, buffer, sizeof buffer);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count <= 0) {
      return data;
    }
    data.insert(data.end(), buffer, buffer + count);
  }
}

}  // namespace lorvane::platform
