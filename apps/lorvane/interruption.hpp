#pragma once

// The program's answer to SIGINT, SIGTERM and SIGHUP: it stops the tools it runs (each runs in
// a process group of its own, out of reach of the terminal's signals), finishes or leaves out
// what it prints so that the output stays well-formed, and ends with 128 plus the signal's
// number. Whatever runs a tool registers a way to cancel it while it runs.

#include <cstdint>
#include <functional>

#include <lorvane/et_input.hpp>

namespace lorvane::app::interruption {

// Blocks the three signals for the calling thread and every thread started from it later, and
// starts the one thread that waits for them. Call it before any other thread starts: a thread
// that doesn't block them could take one and die of it, tools and all.
void watch();

// The number of the first of the signals that arrived; 0 while none has.
int signalNumber();

// While it lives, its callback is called once (on the watching thread) when a signal arrives, or
// at once, on the registering thread, if one already has. Dropping it waits for a call under way.
class CancelRegistration {
public:
  explicit CancelRegistration(std::function<void()> cancel);
  ~CancelRegistration();
  CancelRegistration(const CancelRegistration&) = delete;
  CancelRegistration& operator=(const CancelRegistration&) = delete;

private:
  std::uint64_t id_;
};

// Makes every run of `input` cancel its tool on a signal: the start handler registers the
// running process and the end handler lets it go. Handlers already set still run.
void cancelsOnInterruption(ETInput& input);

}  // namespace lorvane::app::interruption
