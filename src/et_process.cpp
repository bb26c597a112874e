#include <lorvane/et_process.hpp>
#include <lorvane/et_settings.hpp>

#include <exception>
#include <map>
#include <optional>
#include <string>

#include "et_pipe.hpp"
#include "platform/child_process.hpp"
#include "platform/pipe.hpp"

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
          "-progress", "-v0", "-stay_open", "1", "-q", "-@", "-"};
}

// The arguments one per line, closed by the lines that make the tool leave its stay-open mode
// and exit once the batch is done; no line end behind the last.
std::string makeBatch(const std::vector<std::string>& arguments) {
  std::string batch;
  for (const auto& argument : arguments) {
    batch += argument;
    batch += '\n';
  }
  batch += "-stay_open\n0\n-execute";
  return batch;
}

}  // namespace

ETOutput ETProcess::run(const ETInput& input) {
  ETProcess process;
  process.execute(input);
  return process.takeOutput();
}

void ETProcess::execute(const ETInput& input) {
  const bool started = state([](ETOutput& output) {
    if (output.isRunning) {
      return false;
    }
    output.isRunning = true;
    return true;
  });
  if (!started) {
    return;
  }
  atomic.write([&] { nonAtomicInput = input; });
  state([](ETOutput& output) { output.progress = 0; });
  if (input.onStartHandler) {
    input.onStartHandler(*this);
  }

  try {
    talkToTool(input);
  } catch (const std::exception& error) {
    // Out of descriptors, threads or memory: the run ends like one whose tool failed.
    state([&](ETOutput& output) {
      output.processLogs.emplace_back(ETOutput::UnknownLog{std::string(error.what()) + "\n"});
    });
  }

  state([](ETOutput& output) { output.progress = 1; });
  state([](ETOutput& output) { output.isRunning = false; });
  if (input.onEndHandler) {
    input.onEndHandler(*this);
  }
}

void ETProcess::talkToTool(const ETInput& input) {
  // The readers listen before the launch, so the child never blocks on a full pipe while we
  // are still writing the batch.
  const auto outputReader = ETPipe::make(input.parsesOutPipe, *this);
  const auto errorReader = ETPipe::make(input.parsesErrPipe, *this);
  platform::Pipe inputPipe = platform::makePipe();
  const std::string batch = makeBatch(input.arguments);

  std::optional<std::string> failure;
  {
    platform::ChildProcess child(platform::LaunchOptions{
        .executable = ETSettings::shared().binariesFolderURL() / "perl",
        .arguments = makeProcessArgs(),
        .environment = makeProcessEnv(),
        .standardInput = inputPipe.readEnd.get(),
        .standardOutput = outputReader->stdPipe().writeEnd.get(),
        .standardError = errorReader->stdPipe().writeEnd.get()});
    // Only the child holds these now, so its exit ends the streams.
    inputPipe.readEnd.close();
    outputReader->stdPipe().writeEnd.close();
    errorReader->stdPipe().writeEnd.close();

    if (!child.isStarted()) {
      failure = child.failure();
    } else {
      // One write of the whole batch. Standard input stays open: the exit is the end signal.
      const auto bytes = std::as_bytes(std::span(batch));
      if (const auto error = platform::writeAll(inputPipe.writeEnd.get(), bytes)) {
        failure = "the tool stopped reading its arguments before the whole batch was written: " +
                  error.message();
      }
      child.waitForExit();
    }
  }

  outputReader->waitForEndOfStream();
  errorReader->waitForEndOfStream();
  outputReader->flushPendingData();
  errorReader->flushPendingData();
  if (failure) {
    state([&](ETOutput& output) {
      output.processLogs.emplace_back(ETOutput::UnknownLog{*failure + "\n"});
    });
  }
}

ETInput ETProcess::input() const {
  return atomic.read([&] { return nonAtomicInput; });
}

ETOutput ETProcess::output() const {
  return atomic.read([&] { return nonAtomicOutput; });
}

ETInput::Handler ETProcess::progressHandler() const {
  return atomic.read([&] { return nonAtomicInput.onProgressHandler; });
}

ETOutput ETProcess::takeOutput() {
  return atomic.write([&] { return std::move(nonAtomicOutput); });
}

}  // namespace lorvane
