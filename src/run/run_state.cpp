#include "run/run_state.hpp"

#include <exception>

namespace lorvane {
namespace {

// What the exception in flight says about itself.
std::string currentExceptionText() {
  try {
    throw;
  } catch (const std::exception& error) {
    return error.what();
  } catch (...) {
    return "an exception that is no std::exception";
  }
}

}  // namespace

RunState::RunState(AtomicQueue& atomic, ETOutput& output, Call onProgress)
    : atomic_(atomic), output_(output), onProgress_(std::move(onProgress)) {}

void RunState::appendUnknownLine(std::string_view line) {
  std::string whole(line);
  whole += '\n';
  change([&](ETOutput& output) {
    output.processLogs.emplace_back(ETOutput::UnknownLog{std::move(whole)});
  });
}

void RunState::setProgress(double progress) {
  change([&](ETOutput& output) { output.progress = progress; });
  if (!onProgress_) {
    return;
  }
  // Called for every progress line, but a handler that keeps failing is told about once.
  try {
    onProgress_();
  } catch (...) {
    if (!progressHandlerFailed_.exchange(true)) {
      appendUnknownLine("the progress handler threw: " + currentExceptionText());
    }
  }
}

void RunState::callHandler(std::string_view name, const Call& handler) {
  try {
    handler();
  } catch (...) {
    appendUnknownLine("the " + std::string(name) + " handler threw: " + currentExceptionText());
  }
}

void ChildSignals::requestStop() {
  stopRequested_ = true;
  wakeup_.notify();
}

void ChildSignals::streamEnded() {
  ++endedStreams_;
  wakeup_.notify();
}

}  // namespace lorvane
