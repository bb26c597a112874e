#pragma once

#include <chrono>
#include <optional>
#include <span>

#include "platform/pipe.hpp"

namespace lorvane::platform {

using Clock = std::chrono::steady_clock;

// Lets any thread wake one that waits in `waitUntilReady` on `fd()`. Without a descriptor
// (the system had none left to give) notifying does nothing, and the waiter must wait in
// short slices and look for itself.
class Wakeup {
public:
  Wakeup();

  // Never blocks, so it may be called while holding a lock.
  void notify() const;
  // Takes back every notification so far; the next wait blocks again.
  void clear() const;
  // -1 when there is no descriptor.
  int fd() const { return pipe_.readEnd.get(); }

private:
  Pipe pipe_;
};

// A descriptor to wait for, to read from or to write to; a negative one is left out.
struct Watch {
  int fd = -1;
  bool forWriting = false;
  // Set by the wait: readable or writable now, or the other end has gone.
  bool ready = false;
};

// Blocks until one of the descriptors is ready or `until` has passed; nothing: no time limit.
void waitUntilReady(std::span<Watch> watches, std::optional<Clock::time_point> until);

}  // namespace lorvane::platform
