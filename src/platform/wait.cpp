#include "platform/wait.hpp"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <system_error>
#include <vector>

namespace lorvane::platform {

Wakeup::Wakeup() {
  try {
    pipe_ = makePipe();
  } catch (const std::system_error&) {
    return;  // out of descriptors: the waiter falls back to short slices
  }
  setNonBlocking(pipe_.readEnd.get());
  setNonBlocking(pipe_.writeEnd.get());
}

void Wakeup::notify() const {
  if (pipe_.writeEnd.isOpen()) {
    // A full pipe already wakes the waiter, so a refused byte is no loss.
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(pipe_.writeEnd.get(), &byte, 1);
  }
}

void Wakeup::clear() const {
  if (!pipe_.readEnd.isOpen()) {
    return;
  }
  char buffer[64];
  while (::read(pipe_.readEnd.get(), buffer, sizeof buffer) > 0) {
  }
}

void waitUntilReady(std::span<Watch> watches, std::optional<Clock::time_point> until) {
  std::vector<pollfd> polled;
  polled.reserve(watches.size());
  for (const auto& watch : watches) {
    polled.push_back({watch.fd, static_cast<short>(watch.forWriting ? POLLOUT : POLLIN), 0});
  }
  int timeout = -1;
  if (until) {
    // Rounded up, so the wait never ends before the deadline and spins on a zero timeout.
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*until - Clock::now());
    timeout =
        static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, INT_MAX));
  }
  const int count = ::poll(polled.data(), polled.size(), timeout);
  for (std::size_t i = 0; i < watches.size(); ++i) {
    watches[i].ready = count > 0 && polled[i].revents != 0;
  }
}

}  // namespace lorvane::platform
