#include <lorvane/et_process.hpp>
#include <lorvane/et_settings.hpp>

#include <algorithm>
#include <chrono>
#include <exception>
#include <map>
#include <optional>
#include <span>
#include <string>

#include "et_pipe.hpp"
#include "platform/child_process.hpp"
#include "platform/pipe.hpp"
#include "platform/wait.hpp"
#include "run_state.hpp"
#include "tool_batch.hpp"

namespace lorvane {
namespace {

// The child's character type. "UTF-8" is the name of UTF-8 text on macOS; glibc has no locale
// of that name, and its Perl would then print "perl: warning: Setting locale failed." at every
// start, which ends every run in unknown lines. C.UTF-8 is the same encoding, built into glibc.
#ifdef __APPLE__
constexpr const char* childCharacterType = "UTF-8";
#else
constexpr const char* childCharacterType = "C.UTF-8";
#endif

// The child's whole environment: nothing of the host's reaches it, not even a search path.
std::map<std::string, std::string> makeProcessEnv() {
  const auto& settings = ETSettings::shared();
  const std::string perlLibrary = (settings.binariesFolderURL() / "perllib").string();
  return {
      {"LC_CTYPE", childCharacterType},
      {"EXIFTOOL_SANDBOX_DIRECTORY", (settings.backupFolderURL() / "Writing").string()},
      {"EXIFTOOL_QUICKTIME_ITEM_LIST_LEVEL", std::to_string(settings.quickTimeItemListLevel())},
      {"EXIFTOOL_QUICKTIME_USER_DATA_LEVEL", std::to_string(settings.quickTimeUserDataLevel())},
      {"EXIFTOOL_QUICKTIME_KEYS_LEVEL", std::to_string(settings.quickTimeKeysLevel())},
      {"PERL5LIB", perlLibrary},
      {"PERL_LOCAL_LIB_ROOT", perlLibrary},
      {"PERL_MB_OPT", "--install_base \"" + perlLibrary + "\""},
      {"PERL_MM_OPT", "INSTALL_BASE=\"" + perlLibrary + "\""},
  };
}

// The tool reads its arguments from standard input and stays there until the batch says
// otherwise; nothing of the run's input goes on this command line.
std::vector<std::string> makeProcessArgs() {
  return {(ETSettings::shared().binariesFolderURL() / "exiftool").string(),
          "-progress",
          "-v0",
          "-stay_open",
          "1",
          "-q",
          "-@",
          "-"};
}

// Long enough for the tool to remove its temporary files, short enough for someone waiting.
constexpr auto stopGracePeriod = std::chrono::seconds(1);

// Without a descriptor to wait on, the run looks at the child this often.
constexpr auto pollingSlice = std::chrono::milliseconds(10);

enum class Ending { finished, stopRequested, timeLimitPassed };

// Feeds what is left of the batch to the child's standard input and waits until the child has
// exited and both of its streams have ended, or until `until` passes or (when `heedsStop`) a
// stop is requested. A batch the child stops taking sets `writeFailure`. Nothing here blocks
// longer than that, so a child that never reads, never exits or whose own children hold its
// streams open keeps no one waiting beyond a stop or a time limit.
Ending superviseChild(const platform::ChildProcess& child, int standardInput,
                      std::span<const std::byte>& pending, const RunState& run,
                      std::optional<platform::Clock::time_point> until, bool heedsStop,
                      std::optional<std::string>& writeFailure) {
  const auto write = [&] {
    if (const auto error = platform::writeAvailable(standardInput, pending)) {
      writeFailure = "the tool stopped reading its arguments before the whole batch was written: " +
                     error.message();
      pending = {};
    }
  };
  for (;;) {
    const bool exited = child.hasExited();
    if (exited && run.haveStreamsEnded()) {
      if (!pending.empty()) {
        write();  // the reader has gone, so this tells why the rest didn't go
      }
      return Ending::finished;
    }
    if (heedsStop && run.isStopRequested()) {
      return Ending::stopRequested;
    }
    const auto now = platform::Clock::now();
    if (until && now >= *until) {
      return Ending::timeLimitPassed;
    }
    auto wakeAt = until;
    if ((!exited && child.exitDescriptor() < 0) || run.wakeup().fd() < 0) {
      wakeAt = wakeAt ? std::min(*wakeAt, now + pollingSlice) : now + pollingSlice;
    }
    platform::Watch watches[] = {
        {.fd = run.wakeup().fd()},
        {.fd = exited ? -1 : child.exitDescriptor()},
        {.fd = pending.empty() ? -1 : standardInput, .forWriting = true},
    };
    platform::waitUntilReady(watches, wakeAt);
    run.wakeup().clear();
    if (watches[2].ready) {
      write();
    }
  }
}

// Ends the child and everything in its group: a request first, then force for whatever is still
// there when the child and its streams are done or the grace period is over. The streams then
// end, unless a descendant left the group.
void stopChild(const platform::ChildProcess& child, const RunState& run) {
  std::span<const std::byte> nothing;
  std::optional<std::string> ignored;
  child.askToStop();
  superviseChild(child, -1, nothing, run, platform::Clock::now() + stopGracePeriod, false, ignored);
  child.forceStop();
  superviseChild(child, -1, nothing, run, std::nullopt, false, ignored);
}

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
    platform::ChildProcess child(
        platform::LaunchOptions{.executable = ETSettings::shared().binariesFolderURL() / "perl",
                                .arguments = makeProcessArgs(),
                                .environment = makeProcessEnv(),
                                .standardInput = inputPipe.readEnd.get(),
                                .standardOutput = outputReader->stdPipe().writeEnd.get(),
                                .standardError = errorReader->stdPipe().writeEnd.get(),
                                .ownProcessGroup = true});
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
  return process.shared_->atomic.write([&] { return std::move(process.shared_->nonAtomicOutput); });
}

void ETProcess::execute(const ETInput& given) {
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
      talkToTool(input, run);
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
