#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include <lorvane/atomic_queue.hpp>
#include <lorvane/et_input.hpp>
#include <lorvane/et_output.hpp>

namespace lorvane {

class ETPipe;

// One run of ExifTool: a child process started from the binaries folder with a fixed command
// line and an environment of its own, the batch of arguments sent over its standard input in
// one write, both output streams read until the child exits. One run is one child; the exit
// is the end of the batch. Nothing here throws: what goes wrong is in the output's messages.
//
//   ETOutput out = ETProcess::run(input);   // blocks until the tool has exited
//   out.throwIfErrors();
//
// While a run lasts, other threads may read `input()` and `output()`; `execute` called on a
// running instance returns at once. The start and end handlers run on the caller's thread,
// the progress handler on the thread that read the progress line (or the caller's, for a
// last line read at the end). Handlers run outside every lock and must not throw.
class ETProcess {
public:
  // Before the first run: the default ETInput and ETOutput.
  ETProcess() = default;
  ETProcess(const ETProcess&) = delete;
  ETProcess& operator=(const ETProcess&) = delete;

  // Runs `input` on a new instance and hands back its output.
  static ETOutput run(const ETInput& input);

  // Runs every input exactly as `run` would, at most `maxConcurrent` children at once (0: one
  // per hardware thread), and gives the outputs in the inputs' order; blocks until all have
  // ended. Each input's handlers are called as for `run`, on the thread that runs that input
  // (the caller's thread runs inputs too). Threads are started only as far as needed, and
  // none outlives the call. A handler that throws ends only its own input, whose output then
  // holds an unknown line with the exception's text. See <lorvane/et_batches.hpp> to spread
  // a list of files over several inputs, and <lorvane/et_combined_progress.hpp> for one
  // progress value over all of them.
  static std::vector<ETOutput> runAll(std::span<const ETInput> inputs,
                                      std::size_t maxConcurrent = 0);

  // Runs `input` on this instance, blocking until the tool has exited and both streams are
  // read. `processLogs` of earlier runs stay, the new entries follow them; `progress` and
  // `isRunning` start afresh. A child that can't be started, or that stops reading before
  // the batch is written, leaves an unknown line saying so.
  void execute(const ETInput& input);

  // A copy of the input of the run last started.
  ETInput input() const;
  // A copy of the output as it stands.
  ETOutput output() const;

private:
  friend class ETPipe;

  // The only way to change the output during a run: one exclusive step. Never nest.
  template <class Change>
  auto state(Change&& change) {
    return atomic.write([&] { return change(nonAtomicOutput); });
  }
  // The progress handler of the run, without copying the rest of the input.
  ETInput::Handler progressHandler() const;
  void talkToTool(const ETInput& input);
  ETOutput takeOutput();

  mutable AtomicQueue atomic;
  ETInput nonAtomicInput;
  ETOutput nonAtomicOutput;
};

}  // namespace lorvane
