#pragma once

#include <lorvane/et_input.hpp>

#include <array>
#include <chrono>
#include <memory>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/child_process.hpp"
#include "platform/pipe.hpp"
#include "platform/stream_reader.hpp"
#include "platform/wait.hpp"
#include "run/run_state.hpp"

namespace lorvane {

struct KeptCommand;

// One ExifTool kept running for many commands, each sent with a number of its own and ended
// when the tool's "{ready<number>}" has come on standard output and the same text, echoed, on
// standard error. Both streams are read all the time; what comes between commands, or a number
// that isn't the one sent, puts the tool out of step, and it is never trusted again.
//
// The tool is started, watched and ended on a thread of its own that lives exactly as long as
// the tool: a child can be bound to the thread that started it (a death signal follows that
// thread, not the process), so it must not be a caller's thread that may end first. The same
// thread ends a tool that has been idle too long, or that died or fell out of step between
// commands, and reaps it, so no zombie waits for the next command.
class KeptTool {
public:
  // Starts the tool and waits until it runs or has failed to start. Throws only when the
  // system has no thread, pipe or memory to give.
  KeptTool(bool withProgress, std::chrono::milliseconds idleTimeout, bool passesTimeZone = false);
  // Ends the tool as `end(true)` does.
  ~KeptTool();
  KeptTool(const KeptTool&) = delete;
  KeptTool& operator=(const KeptTool&) = delete;

  // Why the tool couldn't be started, as a run says it; nothing when it was.
  const std::optional<std::string>& failure() const { return failure_; }

  // Takes the tool for one command: false when it is gone or going (idle, lost, asked to end).
  bool take();
  // Sends `input`'s arguments as one command and reads what comes back into `run`, through
  // readers of the input's kinds made for this command alone, flushed on the caller's thread at
  // its end. A stop request or the input's time limit (counted from now) ends the tool; so does
  // a tool that dies or falls out of step. Gives the run's own failure, if any; the tool must be
  // taken. Afterwards it is free again, and its idle time starts.
  //
  // `next`, when given, goes to the tool right behind `input`, so that the tool starts on it
  // without waiting for the caller; the tool then has a command ahead, and the next
  // `runCommand` must be of those very arguments: it only takes the answer, including what
  // came of it before the call. Not behind a command with echoes of its own (they would follow
  // its end marker on standard error, where the next command's messages then come too).
  std::optional<std::string> runCommand(const ETInput& input, RunState& run,
                                        const std::vector<std::string>* next = nullptr);
  // Whether a command sent as `next` waits for its `runCommand`.
  bool hasCommandAhead();
  // Asks for the tool's end without waiting: `graceful` asks the tool to leave first, else it
  // and its group are stopped at once. Whichever is asked first counts.
  void requestEnd(bool graceful);
  // Asks for the end and waits until the tool is reaped and its streams are read to the end.
  void end(bool graceful);

private:
  enum class State { starting, running, ended };

  // The watcher's thread: starts the tool, waits for the moment to end it, ends it.
  void watch();
  void launch();
  void retire(bool graceful);

  // The text of one command with a number of its own, and the command that waits for its end.
  struct Sending;
  Sending prepare(const std::vector<std::string>& arguments);

  // On a reader's thread: one chunk of stream 0 (output) or 1 (errors), empty at its end.
  void takeChunk(std::size_t stream, std::span<const std::byte> chunk);
  // The command whose frame on `stream` is open: the one under way, else the one ahead.
  KeptCommand* commandFor(std::size_t stream);
  KeptCommand* openCommandLocked(std::size_t stream);
  // Feeds `data` to `command` up to its end marker; gives what follows the marker, which is
  // the next command's.
  std::string_view scanFrame(std::size_t stream, std::string_view data, KeptCommand& command);
  void feed(KeptCommand& command, std::size_t stream, std::string_view data);
  // The tool can't be trusted any more; the command under way, if its frames aren't both
  // ended, fails with `why`.
  void fault(const std::string& why, bool evenAfterFrames);
  void faultLocked(const std::string& why, bool evenAfterFrames);

  const bool withProgress_;
  const bool passesTimeZone_;
  const std::chrono::milliseconds idleTimeout_;
  // The random part of every command number of this tool, so that no text of a file or of
  // another tool's commands is ever taken for an end of a command.
  const std::string numberPrefix_;
  std::size_t commandsSent_ = 0;

  std::mutex mutex_;
  std::condition_variable changed_;
  // Guarded by `mutex_`.
  State state_ = State::starting;
  std::optional<bool> endRequest_;  // true: graceful
  bool busy_ = false;
  bool retiring_ = false;
  std::optional<std::string> fault_;
  std::chrono::steady_clock::time_point lastUse_;
  std::unique_ptr<KeptCommand> current_;
  std::unique_ptr<KeptCommand> ahead_;
  // Held by a reader's thread while it feeds a chunk, and while a run takes a command that was
  // ahead, so that what came before the run and what comes after reach its readers in order.
  std::array<std::mutex, 2> feeding_;

  // Written by the watcher before the tool runs and after it ended; read in between.
  std::optional<std::string> failure_;
  platform::Pipe input_;
  platform::Pipe output_;
  platform::Pipe errors_;
  std::optional<platform::ChildProcess> child_;
  // The ends of the tool's real streams, for its stop.
  ChildSignals toolSignals_;
  // Each reader's bytes that may be the start of an end marker, held until the next chunk.
  std::array<std::string, 2> held_;
  std::array<std::optional<platform::StreamReader>, 2> readers_;
  std::thread watcher_;
};

}  // namespace lorvane
