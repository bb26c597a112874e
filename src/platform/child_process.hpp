#pragma once

#include <sys/types.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace lorvane::platform {

// What a child is started with.
struct LaunchOptions {
  // Started as it is, never looked up on a search path.
  std::filesystem::path executable{};
  // The arguments after the program's own name; each goes through as it stands, unquoted.
  std::vector<std::string> arguments{};
  // The child's whole environment, replacing the host's; nothing: the host's is inherited.
  std::optional<std::map<std::string, std::string>> environment{};
  // Descriptors that become the child's standard input, output and error; -1: the child
  // shares the host's stream.
  int standardInput = -1;
  int standardOutput = -1;
  int standardError = -1;
};

// A child process, started at construction and reaped at the latest when dropped, so that
// none is left behind as a zombie. No other descriptor of the host reaches the child, its
// signal mask is empty and SIGPIPE has its default action, whatever the host had set.
// The working folder is the host's.
class ChildProcess {
public:
  // Starts the child. A program that can't be started is no exception: the object then
  // tells why through `failure()`, and waiting does nothing.
  explicit ChildProcess(const LaunchOptions& options);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  bool isStarted() const { return !failure_; }
  // Names the program and the system's reason, e.g.
  // `cannot start "/opt/tools/perl": No such file or directory`.
  const std::optional<std::string>& failure() const { return failure_; }

  // Blocks until the child has exited and reaps it; the exit status is of no interest.
  void waitForExit();

private:
  pid_t pid_ = -1;
  std::optional<std::string> failure_;
};

}  // namespace lorvane::platform
