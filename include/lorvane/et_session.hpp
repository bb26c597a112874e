#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include <lorvane/et_input.hpp>
#include <lorvane/et_output.hpp>

namespace lorvane {

// A kept ExifTool: the tool is started on the first run and answers the runs after it, each as
// one command of its own, so a run costs what the tool takes for its files and not the tool's
// start. For the same input a run gives what `ETProcess::run` gives (the bytes, the messages,
// progress ending at 1, `isRunning` false) and calls the handlers the same way, with an
// `ETProcess&` whose `input()`, `output()` and `cancel()` work as in a run.
//
//   ETSession session;
//   ETOutput out = session.run(input);   // the first run starts the tool, the next ones don't
//
// One run at a time: a second caller, from any thread, waits its turn. The tool is started as a
// run starts it (executable, command line, environment from ETSettings as they are then, a
// process group of its own), on a thread the session keeps while the tool lives. It is replaced
// after `maxRunsPerTool` runs, ended when idle for `idleTimeout`, and ended with the run when
// that run is cancelled, passes its time limit, or when the tool dies or falls out of step
// (output between commands, a command number that isn't the one sent); the run then ends with
// an unknown line saying so, and the next run starts a fresh tool. Nothing throws.
class ETSession {
public:
  struct Options {
    // Runs after which the tool is replaced by a fresh one; 0: never for this reason. From 100
    // on, the fresh one starts a tenth of them (at most 32) ahead, so two tools live for those
    // runs and the next run never waits for a start.
    std::size_t maxRunsPerTool = 500;
    // A tool that got no run for this long is ended; 0: never for this reason.
    std::chrono::milliseconds idleTimeout = std::chrono::seconds(60);
    // Each command asks for the tool's progress lines ("-progress" and "-v0", as a run does).
    // false leaves both out, which saves the tool a third of its time on small files; progress
    // then moves only at the end of each run.
    bool toolProgress = true;
    // The tool also gets the host's TZ, where it is set, beside a run's own variables: its
    // file-system dates and converted QuickTime dates are then in the user's zone, as the
    // user's own "exiftool" prints them.
    bool passesTimeZone = false;
  };

  ETSession();
  explicit ETSession(Options options);
  // Ends the tool, as `close()`.
  ~ETSession();
  ETSession(const ETSession&) = delete;
  ETSession& operator=(const ETSession&) = delete;

  // Runs `input` as one command of the kept tool, starting a tool first when there is none.
  // Blocks until the command is done; the start and end handlers run on the caller's thread,
  // the progress handler on the thread that read the progress line. Called from a start or end
  // handler of this session's own run, it returns at once with an unknown line saying so; a
  // progress handler must not call it (it would wait for the run it is part of).
  ETOutput run(const ETInput& input);
  // As `run(input)`, and gives the tool `next`'s arguments right behind, so that it starts on
  // them as soon as `input` is done instead of waiting for the caller's next run: over many
  // short commands in a row that wait is a few percent of the tool's time. The session's next
  // run should be of `next` (its arguments); when it is another, the tool first finishes `next`
  // and its answer is dropped; a tool that ends before that run (`close`, idle, replaced)
  // gets a second to finish `next` and is then stopped, so a write is best not sent ahead.
  // Nothing is sent ahead behind a command with echoes ("-echo3", "-echo4") or on a tool's
  // last run.
  ETOutput run(const ETInput& input, const ETInput& next);

  // Ends the run under way from any thread, a handler's too, as `ETProcess::cancel` does: the
  // tool can't abandon one command, so it is ended with its group and the next run starts
  // another. Outside a run it does nothing.
  void cancel();

  // Ends the kept tool now, after the run under way; the next run starts another, with the
  // ETSettings of that moment.
  void close();

  // How many tools this session has started so far.
  std::size_t toolStarts() const;

private:
  ETOutput runBefore(const ETInput& input, const ETInput* next);

  struct Shared;
  std::unique_ptr<Shared> shared_;
};

// Sessions side by side: each run goes to a session that is idle, and waits when all are busy.
// Sessions (and their tools) are made only as they are needed, up to `size`.
class ETSessionPool {
public:
  // `size` 0: one session per hardware thread.
  explicit ETSessionPool(std::size_t size = 0, ETSession::Options options = {});
  ~ETSessionPool();
  ETSessionPool(const ETSessionPool&) = delete;
  ETSessionPool& operator=(const ETSessionPool&) = delete;

  // Runs `input` on an idle session, as `ETSession::run` does.
  ETOutput run(const ETInput& input);
  // As `run(input)`, and gives the tool `next`'s arguments right behind, so that it starts on
  // them as soon as `input` is done instead of waiting for the caller's next run: over many
  // short commands in a row that wait is a few percent of the tool's time. The session's next
  // run should be of `next` (its arguments); when it is another, the tool first finishes `next`
  // and its answer is dropped; a tool that ends before that run (`close`, idle, replaced)
  // gets a second to finish `next` and is then stopped, so a write is best not sent ahead.
  // Nothing is sent ahead behind a command with echoes ("-echo3", "-echo4") or on a tool's
  // last run.
  ETOutput run(const ETInput& input, const ETInput& next);

  // Runs every input, each on the next free session, and gives the outputs in the inputs'
  // order; blocks until all have ended. Handlers as for `ETProcess::runAll`: each input's on
  // the thread that runs it (the caller's thread runs inputs too).
  std::vector<ETOutput> runAll(std::span<const ETInput> inputs);

  // How many sessions the pool may hold.
  std::size_t size() const;

private:
  struct Shared;
  std::unique_ptr<Shared> shared_;
};

}  // namespace lorvane
