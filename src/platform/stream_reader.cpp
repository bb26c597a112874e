#include "platform/stream_reader.hpp"

#include <unistd.h>

#include <cerrno>
#include <memory>

namespace lorvane::platform {
namespace {

// Large enough that a fast writer filling an enlarged pipe is drained in few calls.
constexpr std::size_t chunkCapacity = 1024 * 1024;

void readUntilEnd(int fd, const StreamReader::ChunkHandler& handler) {
  const auto buffer = std::make_unique_for_overwrite<std::byte[]>(chunkCapacity);
  for (;;) {
    const ssize_t count = ::read(fd, buffer.get(), chunkCapacity);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count <= 0) {
      handler({});
      return;
    }
    handler(std::span<const std::byte>(buffer.get(), static_cast<std::size_t>(count)));
  }
}

}  // namespace

StreamReader::StreamReader(int fd, ChunkHandler handler)
    : thread_([fd, handler = std::move(handler)] { readUntilEnd(fd, handler); }) {}

StreamReader::~StreamReader() { waitForEnd(); }

void StreamReader::waitForEnd() {
  if (thread_.joinable()) {
    thread_.join();
  }
}

}  // namespace lorvane::platform
