#pragma once

#include <lorvane/atomic_queue.hpp>
#include <lorvane/et_output.hpp>

#include <atomic>
#include <functional>
#include <string>
#include <string_view>

#include "platform/wait.hpp"

namespace lorvane {

// What the threads around one child, or one command of a kept child, tell the thread that
// waits for it: a request to stop, the ends of its two streams (of a command: the ends of its
// frames on them), and a wakeup for each of these.
class ChildSignals {
public:
  ChildSignals() = default;
  ChildSignals(const ChildSignals&) = delete;
  ChildSignals& operator=(const ChildSignals&) = delete;

  // From any thread: the run should end its tool and finish.
  void requestStop();
  bool isStopRequested() const { return stopRequested_; }

  // A stream has ended; from the thread that read it.
  void streamEnded();
  bool haveStreamsEnded() const { return endedStreams_ == 2; }

  // Notified on a stop request and at each end of a stream.
  const platform::Wakeup& wakeup() const { return wakeup_; }

private:
  std::atomic<bool> stopRequested_ = false;
  std::atomic<int> endedStreams_ = 0;
  platform::Wakeup wakeup_;
};

// What one run shares between its threads: the instance's output behind its guard, the
// progress handler, and the signals of its child. The run owns it; the stream readers and
// `ETProcess::cancel` reach the run only through it.
class RunState : public ChildSignals {
public:
  using Call = std::function<void()>;

  // `output` is guarded by `atomic`; `onProgress` calls the caller's handler, if any.
  RunState(AtomicQueue& atomic, ETOutput& output, Call onProgress = {});

  // The only way to change the output during a run: one exclusive step. Never nest.
  template <class Change>
  auto change(Change&& change) {
    return atomic_.write([&] { return change(output_); });
  }
  // Stores one line the tool didn't print (a failure of the run itself); a line feed follows.
  void appendUnknownLine(std::string_view line);

  // Stores the new progress, then calls the progress handler outside the guard.
  void setProgress(double progress);
  // Calls a handler of the caller. Whatever it throws stays here and becomes an unknown line
  // that names the handler and says what it threw; of a progress handler, the first throw.
  void callHandler(std::string_view name, const Call& handler);

private:
  AtomicQueue& atomic_;
  ETOutput& output_;
  Call onProgress_;
  std::atomic<bool> progressHandlerFailed_ = false;
};

}  // namespace lorvane
