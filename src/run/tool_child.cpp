#include "run/tool_child.hpp"

#include <lorvane/et_settings.hpp>

#include <algorithm>
#include <chrono>

#include "platform/environment.hpp"
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

// Long enough for the tool to remove its temporary files, short enough for someone waiting.
constexpr auto stopGracePeriod = std::chrono::seconds(1);

// Without a descriptor to wait on, the waiter looks at the child this often.
constexpr auto pollingSlice = std::chrono::milliseconds(10);

}  // namespace

// Nothing of the host's reaches the child, not even a search path; only the zone, where asked.
std::map<std::string, std::string> makeProcessEnv(bool passesTimeZone) {
  const auto& settings = ETSettings::shared();
  const std::string perlLibrary = (settings.binariesFolderURL() / "perllib").string();
  std::map<std::string, std::string> environment{
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
  if (const auto zone = passesTimeZone ? environmentValue("TZ") : std::nullopt) {
    environment.emplace("TZ", *zone);
  }
  return environment;
}

// Nothing of a run's input goes on this command line.
std::vector<std::string> makeProcessArgs(bool withProgress) {
  std::vector<std::string> arguments{
      (ETSettings::shared().binariesFolderURL() / "exiftool").string()};
  if (withProgress) {
    arguments.insert(arguments.end(), {"-progress", "-v0"});
  }
  arguments.insert(arguments.end(), {"-stay_open", "1", "-q", "-@", "-"});
  return arguments;
}

platform::LaunchOptions makeToolLaunch(int standardInput, int standardOutput, int standardError,
                                       bool withProgress, bool passesTimeZone) {
  return platform::LaunchOptions{.executable = ETSettings::shared().binariesFolderURL() / "perl",
                                 .arguments = makeProcessArgs(withProgress),
                                 .environment = makeProcessEnv(passesTimeZone),
                                 .standardInput = standardInput,
                                 .standardOutput = standardOutput,
                                 .standardError = standardError,
                                 .ownProcessGroup = true};
}

Ending superviseChild(const platform::ChildProcess& child, int standardInput,
                      std::span<const std::byte>& pending, const ChildSignals& signals,
                      std::optional<platform::Clock::time_point> until, bool heedsStop,
                      std::optional<std::string>& writeFailure, const IsDone& isDone) {
  const auto write = [&] {
    if (const auto error = platform::writeAvailable(standardInput, pending)) {
      writeFailure = "the tool stopped reading its arguments before the whole batch was written: " +
                     error.message();
      pending = {};
    }
  };
  for (;;) {
    const bool exited = child.hasExited();
    if (isDone ? isDone(exited) : exited && signals.haveStreamsEnded()) {
      if (!pending.empty()) {
        write();  // the reader has gone, so this tells why the rest didn't go
      }
      return Ending::finished;
    }
    if (heedsStop && signals.isStopRequested()) {
      return Ending::stopRequested;
    }
    const auto now = platform::Clock::now();
    if (until && now >= *until) {
      return Ending::timeLimitPassed;
    }
    auto wakeAt = until;
    if ((!exited && child.exitDescriptor() < 0) || signals.wakeup().fd() < 0) {
      wakeAt = wakeAt ? std::min(*wakeAt, now + pollingSlice) : now + pollingSlice;
    }
    platform::Watch watches[] = {
        {.fd = signals.wakeup().fd()},
        {.fd = exited ? -1 : child.exitDescriptor()},
        {.fd = pending.empty() ? -1 : standardInput, .forWriting = true},
    };
    platform::waitUntilReady(watches, wakeAt);
    signals.wakeup().clear();
    if (watches[2].ready) {
      write();
    }
  }
}

void stopChild(const platform::ChildProcess& child, const ChildSignals& signals) {
  std::span<const std::byte> nothing;
  std::optional<std::string> ignored;
  child.askToStop();
  superviseChild(child, -1, nothing, signals, platform::Clock::now() + stopGracePeriod, false,
                 ignored);
  child.forceStop();
  superviseChild(child, -1, nothing, signals, std::nullopt, false, ignored);
}

}  // namespace lorvane
