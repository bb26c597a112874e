#include <lorvane/et_process.hpp>

#include <exception>
#include <optional>
#include <span>
#include <string>

#include "run/et_pipe.hpp"
#include "platform/child_process.hpp"
#include "platform/pipe.hpp"
#include "platform/wait.hpp"
#include "run/run_state.hpp"
#include "run/tool_batch.hpp"
#include "run/tool_child.hpp"

namespace lorvane {
namespace {

void talkToTool(const ETInput& input, RunState& run) {
  const ToolBatch batch = makeToolBatch(input.arguments);
  if (!batch.refusal.empty()) {
    run.appendUnknownLine(batch.refusal);
    return;
  }
  // The readers listen before the launch, so the child never blocks on a full pipe while we
  // are still writing the batch.
  const auto outputReader = ETPipe::make(input.parsesOutPipe, run, input.keepsInvalidText);
  const auto errorReader = ETPipe::make(input.parsesErrPipe, run, input.keepsInvalidText);
  platform::Pipe inputPipe = platform::makePipe();

  std::optional<std::string> failure;
  {
    platform::ChildProcess child(makeToolLaunch(inputPipe.readEnd.get(),
                                                outputReader->stdPipe().writeEnd.get(),
                                                errorReader->stdPipe().writeEnd.get()));
    // Only the child holds these now, so its exit ends the streams.
    inputPipe.readEnd.close();
    outputReader->stdPipe().writeEnd.close();
    errorReader->stdPipe().writeEnd.close();

    if (!child.isStarted()) {
      failure = child.failure();
    } else {
      std::optional<platform::Clock::time_point> deadline;
      if (input.timeLimit) {
        deadline = platform::Clock::now() + *input.timeLimit;
      }
      // The whole batch is offered at once; standard input stays open, the exit is the end.
      std::span<const std::byte> pending = std::as_bytes(std::span(batch.text));
      platform::setNonBlocking(inputPipe.writeEnd.get());
      switch (
          superviseChild(child, inputPipe.writeEnd.get(), pending, run, deadline, true, failure)) {
        case Ending::finished: break;
        case Ending::stopRequested:
          stopChild(child, run);
          failure = "the run was cancelled";
          break;
        case Ending::timeLimitPassed:
          stopChild(child, run);
          failure =
              "the tool did not finish within " + std::to_string(input.timeLimit->count()) + " ms";
          break;
      }
      child.waitForExit();
    }
  }

  outputReader->waitForEndOfStream();
  errorReader->waitForEndOfStream();
  outputReader->flushPendingData();
  errorReader->flushPendingData();
  if (failure) {
    run.appendUnknownLine(*failure);
  }
}

}  // namespace

struct ETProcess::Shared {
  mutable AtomicQueue atomic;
  ETInput nonAtomicInput;
  ETOutput nonAtomicOutput;
  // The state of the run under way, for `cancel`; set and cleared while `isRunning` changes.
  RunState* nonAtomicRun = nullptr;
};

ETProcess::ETProcess() : shared_(std::make_unique<Shared>()) {}

ETProcess::~ETProcess() = default;

ETOutput ETProcess::run(const ETInput& input) {
  ETProcess process;
  process.execute(input);
  return process.takeOutput();
}

ETOutput ETProcess::takeOutput() {
  return shared_->atomic.write([&] { return std::move(shared_->nonAtomicOutput); });
}

void ETProcess::execute(const ETInput& input) { executeWith(input, talkToTool); }

void ETProcess::executeWith(const ETInput& given, const Talk& talk) {
  // The run's own copy: what the caller does to its object from now on never reaches the run.
  const ETInput input = given;
  auto& shared = *shared_;
  RunState::Call onProgress;
  if (input.onProgressHandler) {
    onProgress = [&] { input.onProgressHandler(*this); };
  }
  RunState run(shared.atomic, shared.nonAtomicOutput, std::move(onProgress));
  const bool started = shared.atomic.write([&] {
    if (shared.nonAtomicOutput.isRunning) {
      return false;
    }
    shared.nonAtomicOutput.isRunning = true;
    shared.nonAtomicRun = &run;
    return true;
  });
  if (!started) {
    return;
  }
  shared.atomic.write([&] { shared.nonAtomicInput = input; });
  run.change([](ETOutput& output) { output.progress = 0; });
  if (input.onStartHandler) {
    run.callHandler("start", [&] { input.onStartHandler(*this); });
  }

  if (run.isStopRequested()) {
    run.appendUnknownLine("the run was cancelled");
  } else {
    try {
      talk(input, run);
    } catch (const std::exception& error) {
      // Out of descriptors, threads or memory: the run ends like one whose tool failed.
      run.appendUnknownLine(error.what());
    }
  }

  run.change([](ETOutput& output) { output.progress = 1; });
  shared.atomic.write([&] {
    shared.nonAtomicOutput.isRunning = false;
    shared.nonAtomicRun = nullptr;
  });
  if (input.onEndHandler) {
    run.callHandler("end", [&] { input.onEndHandler(*this); });
  }
}

void ETProcess::cancel() {
  shared_->atomic.read([&] {
    if (shared_->nonAtomicRun != nullptr) {
      shared_->nonAtomicRun->requestStop();
    }
  });
}

ETInput ETProcess::input() const {
  return shared_->atomic.read([&] { return shared_->nonAtomicInput; });
}

ETOutput ETProcess::output() const {
  return shared_->atomic.read([&] { return shared_->nonAtomicOutput; });
}

}  // namespace lorvane
