#include <lorvane/et_process.hpp>
#include <lorvane/et_session.hpp>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <optional>
#include <utility>

#include "run/kept_tool.hpp"
#include "run/run_state.hpp"
#include "run/tool_batch.hpp"

namespace lorvane {

struct ETSession::Shared {
  explicit Shared(Options options) : options(options) {}

  const Options options;
  // Held for a whole run, and by `close`: one run at a time.
  std::mutex turn;
  // Guarded by `turn`.
  std::unique_ptr<KeptTool> tool;
  std::size_t runsOnTool = 0;
  // The tool that takes over when `tool` has done its runs, started some runs ahead so that
  // ExifTool's start (about 0.2 s of Perl) overlaps the last runs instead of waiting before
  // the next.
  std::unique_ptr<KeptTool> successor;
  // The input whose command `tool` has been sent ahead of its run.
  std::optional<ETInput> ahead;
  std::atomic<std::size_t> toolStarts = 0;
  // The run under way, for `cancel`.
  std::mutex currentGuard;
  ETProcess* current = nullptr;

  // The kept tool for the next command, started when there is none or the last one is gone;
  // nothing when it can't be started, with the reason in the run's output.
  KeptTool* toolForCommand(RunState& run) {
    if (tool && !tool->take()) {
      tool.reset();  // ends what is left of it and waits for that
      ahead.reset();
    }
    if (!tool && successor) {
      tool = std::move(successor);
      runsOnTool = 0;
      if (!tool->take()) {
        tool.reset();  // idle too long or gone: a fresh one follows
      }
    }
    if (!tool) {
      auto fresh = std::make_unique<KeptTool>(options.toolProgress, options.idleTimeout,
                                              options.passesTimeZone);
      if (fresh->failure()) {
        run.appendUnknownLine(*fresh->failure());
        return nullptr;
      }
      ++toolStarts;
      runsOnTool = 0;
      tool = std::move(fresh);
      if (!tool->take()) {
        run.appendUnknownLine("the kept tool ended as soon as it started");
        tool.reset();
        return nullptr;
      }
    }
    return tool.get();
  }

  void talk(const ETInput& input, RunState& run, const ETInput* next) {
    // A refused argument never reaches the tool, so it costs the tool nothing.
    if (const ToolBatch check = encodeArguments(input.arguments); !check.refusal.empty()) {
      run.appendUnknownLine(check.refusal);
      return;
    }
    KeptTool* kept = toolForCommand(run);
    if (kept != nullptr && ahead && ahead->arguments != input.arguments) {
      kept = dropAhead(run);
    }
    if (kept == nullptr) {
      return;
    }
    // The last run of a tool sends nothing ahead: the tool leaves after it.
    const bool lastOnTool = options.maxRunsPerTool > 0 && runsOnTool + 1 >= options.maxRunsPerTool;
    const auto failure =
        kept->runCommand(input, run, next && !lastOnTool ? &next->arguments : nullptr);
    ahead.reset();
    if (!failure && kept->hasCommandAhead()) {
      ahead = *next;
    }
    if (failure) {
      run.appendUnknownLine(*failure);
      tool.reset();
    } else if (options.maxRunsPerTool > 0 && ++runsOnTool >= options.maxRunsPerTool) {
      kept->requestEnd(true);  // leaves while the caller goes on; the next run takes another
    } else if (!successor && options.maxRunsPerTool - runsOnTool == successorLead()) {
      startSuccessor();
    }
  }

  // The tool has a command ahead that this run is not: it is let finish and its answer
  // dropped, so that what it does (it may write) is never cut short. Gives the tool to go on
  // with, as toolForCommand does.
  KeptTool* dropAhead(RunState& run) {
    AtomicQueue guard;
    ETOutput dropped;
    RunState droppedRun(guard, dropped);
    const ETInput input = *std::exchange(ahead, std::nullopt);
    if (tool->runCommand(input, droppedRun)) {
      tool.reset();
    }
    return toolForCommand(run);
  }

  // Runs before the end of a tool at which its successor starts: none for a short-lived tool,
  // whose replacement is no rare cost worth a second process.
  std::size_t successorLead() const {
    return options.maxRunsPerTool >= 100 ? std::min<std::size_t>(options.maxRunsPerTool / 10, 32)
                                         : 0;
  }

  void startSuccessor() {
    auto fresh = std::make_unique<KeptTool>(options.toolProgress, options.idleTimeout,
                                            options.passesTimeZone);
    if (!fresh->failure()) {  // else the next run starts one and says why it can't
      ++toolStarts;
      successor = std::move(fresh);
    }
  }
};

ETSession::ETSession() : ETSession(Options{}) {}

ETSession::ETSession(Options options) : shared_(std::make_unique<Shared>(options)) {}

ETSession::~ETSession() { close(); }

namespace {

// The session whose run this thread is inside, so that a start or end handler's run on that
// same session is refused instead of waiting for the run it is part of.
thread_local const ETSession* sessionOfThisThread = nullptr;

}  // namespace

ETOutput ETSession::run(const ETInput& input) { return runBefore(input, nullptr); }

ETOutput ETSession::run(const ETInput& input, const ETInput& next) {
  return runBefore(input, &next);
}

ETOutput ETSession::runBefore(const ETInput& input, const ETInput* next) {
  if (sessionOfThisThread == this) {
    ETOutput refused;
    refused.processLogs.emplace_back(
        ETOutput::UnknownLog{"a session's run can't start inside a run of the same session\n"});
    return refused;
  }
  const ETSession* const outer = sessionOfThisThread;
  sessionOfThisThread = this;
  struct Restore {
    const ETSession* outer;
    ~Restore() { sessionOfThisThread = outer; }
  } restore{outer};
  std::lock_guard turn(shared_->turn);
  ETProcess process;
  {
    std::lock_guard guard(shared_->currentGuard);
    shared_->current = &process;
  }
  process.executeWith(input,
                      [&](const ETInput& own, RunState& run) { shared_->talk(own, run, next); });
  {
    std::lock_guard guard(shared_->currentGuard);
    shared_->current = nullptr;
  }
  return process.takeOutput();
}

void ETSession::cancel() {
  std::lock_guard guard(shared_->currentGuard);
  if (shared_->current != nullptr) {
    shared_->current->cancel();
  }
}

void ETSession::close() {
  std::lock_guard turn(shared_->turn);
  shared_->tool.reset();
  shared_->successor.reset();
  shared_->ahead.reset();
}

std::size_t ETSession::toolStarts() const { return shared_->toolStarts; }

}  // namespace lorvane
