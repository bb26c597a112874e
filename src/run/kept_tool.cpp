#include "run/kept_tool.hpp"

#include <algorithm>
#include <cctype>
#include <exception>
#include <memory>
#include <random>
#include <vector>

#include "run/et_pipe.hpp"
#include "run/tool_batch.hpp"
#include "run/tool_child.hpp"

namespace lorvane {

// A command sent to the tool: the text that ends it on both streams, what has ended, and the
// run that takes its answer, with that run's readers. A command sent ahead has no run yet;
// what comes for it meanwhile waits in `early`.
struct KeptCommand {
  explicit KeptCommand(std::string marker) : endMarker(std::move(marker)) {}

  std::string endMarker;
  // Each reader is set, and `early` read, only under the tool's `feeding_` of its stream.
  std::array<std::unique_ptr<ETPipe>, 2> readers;
  std::array<std::string, 2> early;
  // Guarded by the tool's mutex.
  RunState* run = nullptr;
  std::array<bool, 2> frameEnded{false, false};
  std::optional<std::string> fault;
};

struct KeptTool::Sending {
  ToolBatch batch;
  std::unique_ptr<KeptCommand> command;
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

// The option `argument` names, without its minus sign ("-", or U+2212 in front); nothing when
// it isn't an option.
std::optional<std::string_view> optionName(std::string_view argument) {
  for (const std::string_view minus : {"-", "\xe2\x88\x92"}) {
    if (argument.starts_with(minus)) {
      return argument.substr(minus.size());
    }
  }
  return std::nullopt;
}

// Whether `name` starts with `word` (lower case) in any case, as the tool reads options.
bool startsWithWord(std::string_view name, std::string_view word) {
  return name.size() >= word.size() &&
         std::equal(word.begin(), word.end(), name.begin(), [](char a, char b) {
           return a == std::tolower(static_cast<unsigned char>(b));
         });
}

// Whether the tool takes `argument` as the end of a command ("-execute", "-execute12").
bool isExecute(std::string_view argument) {
  constexpr std::string_view word = "execute";
  const auto name = optionName(argument);
  return name && startsWithWord(*name, word) &&
         std::all_of(name->begin() + word.size(), name->end(),
                     [](char c) { return c >= '0' && c <= '9'; });
}

// Whether the tool prints echoes of `arguments` after the command's output ("-echo3",
// "-echo4"); any "-echo" counts, to be safe.
bool printsEchoes(const std::vector<std::string>& arguments) {
  return std::any_of(arguments.begin(), arguments.end(), [](std::string_view argument) {
    const auto name = optionName(argument);
    return name && startsWithWord(*name, "echo");
  });
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

KeptTool::KeptTool(bool withProgress, std::chrono::milliseconds idleTimeout, bool passesTimeZone)
    : withProgress_(withProgress),
      passesTimeZone_(passesTimeZone),
      idleTimeout_(idleTimeout),
      numberPrefix_(makeNumberPrefix()) {
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
                                errors_.writeEnd.get(), withProgress_, passesTimeZone_));
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

KeptTool::Sending KeptTool::prepare(const std::vector<std::string>& arguments) {
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
  return {makeKeptCommand(std::move(leading), arguments, marker, number),
          std::make_unique<KeptCommand>(marker + "\n")};
}

bool KeptTool::hasCommandAhead() {
  std::lock_guard lock(mutex_);
  return ahead_ != nullptr;
}

std::optional<std::string> KeptTool::runCommand(const ETInput& input, RunState& run,
                                                const std::vector<std::string>* next) {
  std::string text;
  std::unique_ptr<KeptCommand> owned;
  KeptCommand* command = nullptr;
  {
    std::lock_guard lock(mutex_);
    command = ahead_.get();
  }
  if (command == nullptr) {
    Sending sending = prepare(input.arguments);
    if (!sending.batch.refusal.empty()) {
      std::lock_guard lock(mutex_);
      busy_ = false;
      return sending.batch.refusal;
    }
    text = std::move(sending.batch.text);
    owned = std::move(sending.command);
    command = owned.get();
  }
  std::unique_ptr<KeptCommand> following;
  if (next != nullptr && !printsEchoes(input.arguments)) {
    Sending sending = prepare(*next);
    if (sending.batch.refusal.empty()) {
      text += sending.batch.text;
      following = std::move(sending.command);
    }
  }
  for (const std::size_t stream : {outputStream, errorStream}) {
    std::lock_guard feeding(feeding_[stream]);
    const bool parses = stream == outputStream ? input.parsesOutPipe : input.parsesErrPipe;
    command->readers[stream] = ETPipe::makeDecoder(parses, run, input.keepsInvalidText);
    const std::string early = std::move(command->early[stream]);
    feed(*command, stream, early);
  }
  {
    std::lock_guard lock(mutex_);
    command->run = &run;
    current_ = owned ? std::move(owned) : std::move(ahead_);
    // Known before its text goes, so that no byte of its answer finds no command.
    ahead_ = std::move(following);
    for (const std::size_t stream : {outputStream, errorStream}) {
      if (command->frameEnded[stream]) {
        run.streamEnded();
      }
    }
  }

  std::optional<platform::Clock::time_point> deadline;
  if (input.timeLimit) {
    deadline = platform::Clock::now() + *input.timeLimit;
  }
  const auto hasFailed = [&] {
    std::lock_guard lock(mutex_);
    return command->fault.has_value();
  };
  std::span<const std::byte> pending = std::as_bytes(std::span(text));
  std::optional<std::string> writeFailure;
  // The command ahead may still be on its way when this one is answered; it goes whole.
  const Ending ending = superviseChild(
      *child_, input_.writeEnd.get(), pending, run, deadline, true, writeFailure, [&](bool exited) {
        return exited || (run.haveStreamsEnded() && pending.empty()) || hasFailed();
      });

  std::optional<std::string> failure;
  if (ending != Ending::finished || !run.haveStreamsEnded() || hasFailed()) {
    // The tool goes with its group; when this returns, all it wrote has been read.
    end(false);
    std::lock_guard lock(mutex_);
    ahead_.reset();
    if (ending == Ending::stopRequested) {
      failure = "the run was cancelled";
    } else if (ending == Ending::timeLimitPassed) {
      failure =
          "the tool did not finish within " + std::to_string(input.timeLimit->count()) + " ms";
    } else if (command->fault) {
      failure = command->fault;
    } else if (!run.haveStreamsEnded()) {
      failure = writeFailure.value_or("the kept tool ended during the run");
    }
  }
  std::unique_ptr<KeptCommand> finished;
  {
    std::lock_guard lock(mutex_);
    finished = std::move(current_);
    busy_ = false;
    lastUse_ = std::chrono::steady_clock::now();
    changed_.notify_all();
  }
  finished->readers[outputStream]->finishData();
  finished->readers[errorStream]->finishData();
  return failure;
}

void KeptTool::takeChunk(std::size_t stream, std::span<const std::byte> chunk) {
  if (chunk.empty()) {
    toolSignals_.streamEnded();
    fault("the kept tool ended during the run", false);
    return;
  }
  std::lock_guard feeding(feeding_[stream]);
  std::string_view text(reinterpret_cast<const char*>(chunk.data()), chunk.size());
  std::string joined;
  if (!held_[stream].empty()) {
    joined = std::move(held_[stream]) + std::string(text);
    held_[stream].clear();
    text = joined;
  }
  // A chunk may end one command and hold the start of the one ahead.
  while (!text.empty()) {
    KeptCommand* command = commandFor(stream);
    if (command == nullptr) {
      fault("the kept tool fell out of step: it wrote after the end of a command", true);
      return;
    }
    text = scanFrame(stream, text, *command);
  }
}

KeptCommand* KeptTool::commandFor(std::size_t stream) {
  std::lock_guard lock(mutex_);
  return openCommandLocked(stream);
}

KeptCommand* KeptTool::openCommandLocked(std::size_t stream) {
  for (KeptCommand* command : {current_.get(), ahead_.get()}) {
    if (command != nullptr && !command->frameEnded[stream]) {
      return command;
    }
  }
  return nullptr;
}

std::string_view KeptTool::scanFrame(std::size_t stream, std::string_view data,
                                     KeptCommand& command) {
  const std::string_view marker = command.endMarker;
  // Every number of this tool starts so; nothing else plausibly holds it.
  const std::string_view numbered =
      marker.substr(0, std::string_view("{ready").size() + numberPrefix_.size());
  const std::size_t at = data.find(numbered);
  if (at == std::string_view::npos) {
    const std::size_t kept = startOfTextAtEnd(data, numbered);
    feed(command, stream, data.substr(0, data.size() - kept));
    held_[stream] = data.substr(data.size() - kept);
    return {};
  }
  feed(command, stream, data.substr(0, at));
  std::string_view rest = data.substr(at);
  if (rest.size() < marker.size() && marker.starts_with(rest)) {
    held_[stream] = rest;
    return {};
  }
  if (!rest.starts_with(marker)) {
    fault("the kept tool fell out of step: it answered another command than the one sent", true);
    return {};
  }
  rest.remove_prefix(marker.size());
  // The tool prints all echoes of a command at once, so what follows the marker in the same
  // chunk of standard error is the rest of them: the command's own, unless a command follows
  // it (which a command with echoes never has).
  bool followed = false;
  {
    std::lock_guard lock(mutex_);
    followed = &command == current_.get() && ahead_ != nullptr;
  }
  if (stream == errorStream && !followed) {
    feed(command, stream, rest);
    rest = {};
  }
  std::lock_guard lock(mutex_);
  command.frameEnded[stream] = true;
  // Known before the run hears of the end, so that it never takes a tool out of step for done.
  if (!rest.empty() && openCommandLocked(stream) == nullptr) {
    faultLocked("the kept tool fell out of step: it wrote after the end of a command", true);
    rest = {};
  }
  if (command.run != nullptr) {
    command.run->streamEnded();
  }
  return rest;
}

void KeptTool::feed(KeptCommand& command, std::size_t stream, std::string_view data) {
  if (data.empty()) {
    return;
  }
  if (!command.readers[stream]) {
    command.early[stream] += data;
    return;
  }
  try {
    command.readers[stream]->readAvailableData(std::as_bytes(std::span(data)));
  } catch (const std::exception& error) {
    // Out of memory on this thread: the chunk is lost, the stream is still drained.
    command.run->appendUnknownLine(std::string("a chunk of the tool's output was lost: ") +
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
  for (KeptCommand* command : {current_.get(), ahead_.get()}) {
    if (command == nullptr) {
      continue;
    }
    const bool framesEnded = command->frameEnded[0] && command->frameEnded[1];
    if (!command->fault && (evenAfterFrames || !framesEnded)) {
      command->fault = why;
    }
    if (command->run != nullptr) {
      command->run->wakeup().notify();
    }
  }
  changed_.notify_all();
}

}  // namespace lorvane
