#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include <lorvane/et_input.hpp>
#include <lorvane/et_output.hpp>

namespace lorvane {

class ETSession;
class RunState;

// One run of ExifTool: a child process started from the binaries folder with a fixed command
// line and an environment of its own, the batch of arguments sent over its standard input, both
// output streams read until the child exits. One run is one child; the exit is the end of the
// batch. Nothing here throws: what goes wrong is in the output's messages. On Linux the tool
// dies with the thread that runs it, and so with the host process, even one killed outright.
//
//   ETOutput out = ETProcess::run(input);   // blocks until the tool has exited
//   out.throwIfErrors();
//
// A run works on its own copy of the input, taken when it is called. While it lasts, other
// threads may read `input()` and `output()` and call `cancel()`; `execute` called on a running
// instance returns at once. The start and end handlers run on the caller's thread, the progress
// handler on the thread that read the progress line (or the caller's, for a last line read at
// the end). Handlers run outside every lock. What a handler throws never leaves the run: it
// becomes an unknown line of the output, and the run goes on with its next step.
class ETProcess {
public:
  // Before the first run: the default ETInput and ETOutput.
  ETProcess();
  ~ETProcess();
  ETProcess(const ETProcess&) = delete;
  ETProcess& operator=(const ETProcess&) = delete;

  // Runs `input` on a new instance and hands back its output.
  static ETOutput run(const ETInput& input);

  // Runs every input exactly as `run` would, at most `maxConcurrent` children at once (0: one
  // per hardware thread), and gives the outputs in the inputs' order; blocks until all have
  // ended. Each input's handlers are called as for `run`, on the thread that runs that input
  // (the caller's thread runs inputs too). Threads are started only as far as needed, and
  // none outlives the call. What a handler throws stays in the output of its own input, as
  // for `run`. See <lorvane/et_batches.hpp> to spread
  // a list of files over several inputs, and <lorvane/et_combined_progress.hpp> for one
  // progress value over all of them.
  static std::vector<ETOutput> runAll(std::span<const ETInput> inputs,
                                      std::size_t maxConcurrent = 0);

  // Runs `input` on this instance, blocking until the tool has exited and both streams are
  // read. `processLogs` of earlier runs stay, the new entries follow them; `progress` and
  // `isRunning` start afresh. A child that can't be started, that stops reading before the
  // batch is written, or an argument that can't reach the tool unchanged leaves an unknown line
  // saying so.
  void execute(const ETInput& input);

  // Ends the running tool from any thread, a handler's too: the tool and everything it started
  // get SIGTERM, and SIGKILL after a short grace period. The run then ends as usual, with the
  // unknown line "the run was cancelled". Called while the start handler runs, the tool is never
  // started; on an instance that isn't running, it does nothing.
  void cancel();

  // A copy of the input of the run last started.
  ETInput input() const;
  // A copy of the output as it stands.
  ETOutput output() const;

private:
  friend class ETSession;

  // What a run does between its start and its end: start the tool, send it the input's
  // arguments, read what comes back into the run's state.
  using Talk = std::function<void(const ETInput&, RunState&)>;
  // `execute` with another way of talking to the tool; the steps around it stay the same.
  void executeWith(const ETInput& input, const Talk& talk);
  // The output as it stands, moved out of this instance.
  ETOutput takeOutput();

  // The guarded input and output, and the state of the run under way.
  struct Shared;
  std::unique_ptr<Shared> shared_;
};

}  // namespace lorvane
