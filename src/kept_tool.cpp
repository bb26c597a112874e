#include "kept_tool.hpp"

#include <algorithm>
#include <cctype>
#include <exception>
#include <memory>
#include <random>
#include <vector>

#include "et_pipe.hpp"
#include "tool_batch.hpp"
#include "tool_child.hpp"

namespace lorvane {

// A command under way: its readers, the text that ends it on both streams, what has ended.
struct KeptCommand {
  RunState& run;
  std::array<std::unique_ptr<ETPipe>, 2> readers;
  std::string endMarker;
  // Guarded by the tool's mutex.
  std::array<bool, 2> frameEnded{false, false};
  std::optional<std::string> fault;
};

namespace {

constexpr std::size_t outputStream = 0;
constexpr std::size_t errorStream = 1;

// As for a run: a fast child hands over large chunks.
constexpr std::size_t pipeCapacity = 1024 * 1024;

// How long a tool asked to leave may take before it is stopped.
constexpr auto leaveGracePeriod = std::chrono::seconds(1);

// Nine digits that don't start with 0, new for each tool.
std::string makeNumberPrefix() {
  std::random_device source;
  std::uniform_int_distribution<std::uint32_t> digits(100'000'000, 999'999'999);
  return std::to_string(digits(source));
}

// Whether the tool takes `argument` as the end of a command ("-execute", "-execute12", in any
// case, also with the minus sign U+2212 in front).
bool isExecute(std::string_view argument) {
  if (argument.starts_with("-")) {
    argument.remove_prefix(1);
  } else if (argument.starts_with("\xe2\x88\x92")) {
    argument.remove_prefix(3);
  } else {
    return false;
  }
  constexpr std::string_view word = "execute";
  if (argument.size() < word.size() ||
      !std::equal(word.begin(), word.end(), argument.begin(), [](char a, char b) {
        return a == std::tolower(static_cast<unsigned char>(b));
      })) {
    return false;
  }
  return std::all_of(argument.begin() + word.size(), argument.end(),
                     [](char c) { return c >= '0' && c <= '9'; });
}

// One command of a kept tool: `leading` options, then the arguments with "-echo4 <marker>" at
// the start of the last command that "-execute" lines among them separate, then
// "-execute<number>". The echo goes in front because the tool skips the rest of a command
// after an option it can't read, and prints the echo after all of that command's output.
ToolBatch makeKeptCommand(std::vector<std::string> leading,
                          const std::vector<std::string>& arguments, const std::string& marker,
                          const std::string& number) {
  const auto lastExecute = std::find_if(arguments.rbegin(), arguments.rend(), isExecute).base();
  std::vector<std::string> command = std::move(leading);
  command.insert(command.end(), arguments.begin(), lastExecute);
  command.insert(command.end(), {"-echo4", marker});
  command.insert(command.end(), lastExecute, arguments.end());
  ToolBatch batch = encodeArguments(command);
  if (batch.refusal.empty()) {
    batch.text += "-execute" + number + "\n";
  }
  return batch;
}

// The longest end of `data` that is the start of `text`, shorter than `text`.
std::size_t startOfTextAtEnd(std::string_view data, std::string_view text) {
  for (std::size_t length = std::min(data.size(), text.size() - 1); length > 0; --length) {
    if (data.substr(data.size() - length) == text.substr(0, length)) {
      return length;
    }
  }
  return 0;
}

}  // namespace

KeptTool::KeptTool(bool withProgress, std::chrono::milliseconds idleTimeout)
    : withProgress_(withProgress), idleTimeout_(idleTimeout), numberPrefix_(makeNumberPrefix()) {
  std::unique_lock lock(mutex_);
  watcher_ = std::thread([this] { watch(); });
  changed_.wait(lock, [&] { return state_ != State::starting; });
}

KeptTool::~KeptTool() { end(true); }

void KeptTool::watch() {
  try {
    launch();
  } catch (const std::exception& error) {
    failure_ = error.what();
  }
  std::unique_lock lock(mutex_);
  lastUse_ = std::chrono::steady_clock::now();
  state_ = failure_ ? State::ended : State::running;
  changed_.notify_all();
  if (failure_) {
    return;
  }
  for (;;) {
    if (endRequest_) {
      break;
    }
    if (!busy_ && fault_) {
      endRequest_ = false;
      break;
    }
    if (!busy_ && idleTimeout_.count() > 0) {
      const auto idleEnd = lastUse_ + idleTimeout_;
      if (std::chrono::steady_clock::now() >= idleEnd) {
        endRequest_ = true;
        break;
      }
      changed_.wait_until(lock, idleEnd);
    } else {
      changed_.wait(lock);
    }
  }
  retiring_ = true;
  const bool graceful = *endRequest_ && !fault_;
  lock.unlock();
  retire(graceful);
  lock.lock();
  state_ = State::ended;
  changed_.notify_all();
}

void KeptTool::launch() {
  input_ = platform::makePipe();
  output_ = platform::makePipe(pipeCapacity);
  errors_ = platform::makePipe();
  child_.emplace(makeToolLaunch(input_.readEnd.get(), output_.writeEnd.get(),
                                errors_.writeEnd.get(), withProgress_));
  // Only the child holds these now, so its end ends the streams.
  input_.readEnd.close();
  output_.writeEnd.close();
  errors_.writeEnd.close();
  if (!child_->isStarted()) {
    failure_ = child_->failure();
    child_.reset();
    return;
  }
  platform::setNonBlocking(input_.writeEnd.get());
  try {
    for (const std::size_t stream : {outputStream, errorStream}) {
      readers_[stream].emplace(
          (stream == outputStream ? output_ : errors_).readEnd.get(),
          [this, stream](std::span<const std::byte> chunk) { takeChunk(stream, chunk); });
    }
  } catch (...) {
    child_->forceStop();
    child_->waitForExit();
    child_.reset();
    for (auto& reader : readers_) {
      reader.reset();
    }
    throw;
  }
}

void KeptTool::retire(bool graceful) {
  if (graceful) {
    // The tool leaves when told to, after the command under way, which there is none of.
    const std::string_view leave = "-stay_open\nFalse\n";
    auto pending = std::as_bytes(std::span(leave));
    std::optional<std::string> ignored;
    superviseChild(*child_, input_.writeEnd.get(), pending, toolSignals_,
                   platform::Clock::now() + leaveGracePeriod, false, ignored);
  }
  input_.writeEnd.close();
  stopChild(*child_, toolSignals_);
  child_->waitForExit();
  for (auto& reader : readers_) {
    reader.reset();
  }
}

bool KeptTool::take() {
  std::lock_guard lock(mutex_);
  if (state_ != State::running || endRequest_ || fault_ || retiring_ || child_->hasExited()) {
    return false;
  }
  busy_ = true;
  return true;
}

void KeptTool::requestEnd(bool graceful) {
  std::lock_guard lock(mutex_);
  if (!endRequest_) {
    endRequest_ = graceful;
  }
  changed_.notify_all();
}

void KeptTool::end(bool graceful) {
  requestEnd(graceful);
  if (watcher_.joinable()) {
    watcher_.join();
  }
}

std::optional<std::string> KeptTool::runCommand(const ETInput& input, RunState& run) {
  // Options of the launch line hold for the first command only, so the others bring them.
  std::vector<std::string> leading;
  if (commandsSent_ > 0) {
    if (withProgress_) {
      leading = {"-progress", "-v0"};
    }
    leading.push_back("-q");
  }
  const std::string number = numberPrefix_ + std::to_string(++commandsSent_);
  const std::string marker = "{ready" + number + "}";
  const ToolBatch batch = makeKeptCommand(std::move(leading), input.arguments, marker, number);
  if (!batch.refusal.empty()) {
    std::lock_guard lock(mutex_);
    busy_ = false;
    return batch.refusal;
  }

  KeptCommand command{.run = run,
                      .readers = {ETPipe::makeDecoder(input.parsesOutPipe, run, input.keepsInvalidText),
                                  ETPipe::makeDecoder(input.parsesErrPipe, run, input.keepsInvalidText)},
                      .endMarker = marker + "\n",
                      .frameEnded = {false, false},
                      .fault = std::nullopt};
  {
    std::lock_guard lock(mutex_);
    current_ = &command;
  }
  std::optional<platform::Clock::time_point> deadline;
  if (input.timeLimit) {
    deadline = platform::Clock::now() + *input.timeLimit;
  }
  const auto hasFailed = [&] {
    std::lock_guard lock(mutex_);
    return command.fault.has_value();
  };
  std::span<const std::byte> pending = std::as_bytes(std::span(batch.text));
  std::optional<std::string> writeFailure;
  const Ending ending =
      superviseChild(*child_, input_.writeEnd.get(), pending, run, deadline, true, writeFailure,
                     [&](bool exited) { return exited || run.haveStreamsEnded() || hasFailed(); });

  std::optional<std::string> failure;
  if (ending != Ending::finished || !run.haveStreamsEnded() || hasFailed()) {
    // The tool goes with its group; when this returns, all it wrote has been read.
    end(false);
    std::lock_guard lock(mutex_);
    if (ending == Ending::stopRequested) {
      failure = "the run was cancelled";
    } else if (ending == Ending::timeLimitPassed) {
      failure =
          "the tool did not finish within " + std::to_string(input.timeLimit->count()) + " ms";
    } else if (command.fault) {
      failure = command.fault;
    } else if (!run.haveStreamsEnded()) {
      failure = writeFailure.value_or("the kept tool ended during the run");
    }
  }
  {
    std::lock_guard lock(mutex_);
    current_ = nullptr;
    busy_ = false;
    lastUse_ = std::chrono::steady_clock::now();
    changed_.notify_all();
  }
  command.readers[outputStream]->finishData();
  command.readers[errorStream]->finishData();
  return failure;
}

void KeptTool::takeChunk(std::size_t stream, std::span<const std::byte> chunk) {
  if (chunk.empty()) {
    toolSignals_.streamEnded();
    fault("the kept tool ended during the run", false);
    return;
  }
  KeptCommand* command = nullptr;
  {
    std::lock_guard lock(mutex_);
    if (current_ == nullptr || current_->frameEnded[stream]) {
      faultLocked("the kept tool fell out of step: it wrote after the end of a command", true);
      return;
    }
    command = current_;
  }
  const std::string_view text(reinterpret_cast<const char*>(chunk.data()), chunk.size());
  if (held_[stream].empty()) {
    scanFrame(stream, text, *command);
  } else {
    const std::string joined = std::move(held_[stream]) + std::string(text);
    held_[stream].clear();
    scanFrame(stream, joined, *command);
  }
}

void KeptTool::scanFrame(std::size_t stream, std::string_view data, KeptCommand& command) {
  const std::string_view marker = command.endMarker;
  // Every number of this tool starts so; nothing else plausibly holds it.
  const std::string_view numbered =
      marker.substr(0, std::string_view("{ready").size() + numberPrefix_.size());
  const std::size_t at = data.find(numbered);
  if (at == std::string_view::npos) {
    const std::size_t kept = startOfTextAtEnd(data, numbered);
    feed(command, stream, data.substr(0, data.size() - kept));
    held_[stream] = data.substr(data.size() - kept);
    return;
  }
  feed(command, stream, data.substr(0, at));
  std::string_view rest = data.substr(at);
  if (rest.size() < marker.size() && marker.starts_with(rest)) {
    held_[stream] = rest;
    return;
  }
  if (!rest.starts_with(marker)) {
    fault("the kept tool fell out of step: it answered another command than the one sent", true);
    return;
  }
  rest.remove_prefix(marker.size());
  // The tool prints all echoes of a command at once, so what follows the marker in the same
  // chunk of standard error is the rest of them: the command's own.
  if (stream == errorStream) {
    feed(command, stream, rest);
    rest = {};
  }
  std::lock_guard lock(mutex_);
  command.frameEnded[stream] = true;
  command.run.streamEnded();
  if (!rest.empty()) {
    faultLocked("the kept tool fell out of step: it wrote after the end of a command", true);
  }
}

void KeptTool::feed(KeptCommand& command, std::size_t stream, std::string_view data) {
  if (data.empty()) {
    return;
  }
  try {
    command.readers[stream]->readAvailableData(std::as_bytes(std::span(data)));
  } catch (const std::exception& error) {
    // Out of memory on this thread: the chunk is lost, the stream is still drained.
    command.run.appendUnknownLine(std::string("a chunk of the tool's output was lost: ") +
                                  error.what());
  }
}

void KeptTool::fault(const std::string& why, bool evenAfterFrames) {
  std::lock_guard lock(mutex_);
  faultLocked(why, evenAfterFrames);
}

void KeptTool::faultLocked(const std::string& why, bool evenAfterFrames) {
  if (!fault_) {
    fault_ = why;
  }
  if (current_ != nullptr) {
    const bool framesEnded = current_->frameEnded[0] && current_->frameEnded[1];
    if (!current_->fault && (evenAfterFrames || !framesEnded)) {
      current_->fault = why;
    }
    current_->run.wakeup().notify();
  }
  changed_.notify_all();
}

}  // namespace lorvane
