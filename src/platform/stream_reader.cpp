#include "platform/stream_reader.hpp"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <thread>

namespace lorvane::platform {
namespace {

// Large enough that a fast writer filling an enlarged pipe is drained in few calls.
constexpr std::size_t chunkCapacity = 1024 * 1024;

// The tool flushes every line it prints, so a reader that takes each line as it comes wakes up,
// and wakes the writer's side of the pipe, tens of thousands of times a second. When short
// chunks follow each other, output is trickling: the reader lets the pipe fill for a moment
// instead, so lines wait at most this long and the tool writes into a pipe nobody waits on. A
// single short chunk amid large ones (a fast writer caught up with) doesn't pause.
constexpr auto shortChunkPause = std::chrono::microseconds(500);
constexpr std::size_t shortChunk = 4 * 1024;

void readUntilEnd(int fd, const StreamReader::ChunkHandler& handler) {
  const auto buffer = std::make_unique_for_overwrite<std::byte[]>(chunkCapacity);
  bool lastWasShort = false;
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
    const bool isShort = static_cast<std::size_t>(count) < shortChunk;
    if (isShort && lastWasShort) {
      std::this_thread::sleep_for(shortChunkPause);
    }
    lastWasShort = isShort;
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
