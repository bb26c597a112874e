#pragma once

#include <cstddef>
#include <span>
#include <system_error>
#include <vector>

namespace lorvane::platform {

// An owned file descriptor, closed when it is dropped or closed.
class FileDescriptor {
public:
  FileDescriptor() = default;
  explicit FileDescriptor(int fd) : fd_(fd) {}
  ~FileDescriptor() { close(); }
  FileDescriptor(FileDescriptor&& other) noexcept : fd_(other.fd_) { other.fd_ = -1; }
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  int get() const { return fd_; }
  bool isOpen() const { return fd_ >= 0; }
  void close();

private:
  int fd_ = -1;
};

// Both ends are closed on exec, so a pipe reaches a child only where a launch wires it to one
// of the child's standard streams, and both lie above the standard descriptors 0 to 2, so
// wiring never overwrites one end with another.
struct Pipe {
  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

// Makes a pipe; throws std::system_error when the system can't. A capacity asks the system for
// a larger buffer where it allows that (fewer, larger chunks for a fast writer); it is a hint.
Pipe makePipe(std::size_t capacity = 0);

// Makes reads and writes on the descriptor return at once instead of blocking.
void setNonBlocking(int fd);

// Writes to a non-blocking descriptor what it takes now and drops that from the front of
// `bytes`. A full pipe is no error. A reader that has gone ends the write quietly with EPIPE,
// never with the SIGPIPE that would kill the host. Gives the error that stopped the write.
std::error_code writeAvailable(int fd, std::span<const std::byte>& bytes);

// Reads until end of stream. A failing read ends the reading; what came before it is kept.
std::vector<std::byte> readToEnd(int fd);

}  // namespace lorvane::platform
