#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <thread>

namespace lorvane::platform {

// Reads one stream on a thread of its own: each chunk goes to the handler in order, the last
// call gets an empty chunk at end of stream (or when a read fails). A chunk lives only for
// the call. The descriptor must stay open until `waitForEnd()` has returned.
class StreamReader {
public:
  using ChunkHandler = std::function<void(std::span<const std::byte>)>;

  StreamReader(int fd, ChunkHandler handler);
  ~StreamReader();  // waits for the end, like `waitForEnd()`
  StreamReader(const StreamReader&) = delete;
  StreamReader& operator=(const StreamReader&) = delete;

  // Blocks until the stream has ended and its last chunk is handled.
  void waitForEnd();

private:
  std::thread thread_;
};

}  // namespace lorvane::platform
