#pragma once

#include <sys/types.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/pipe.hpp"

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
  // The child leads a process group of its own, so that stopping it reaches everything it
  // started, which shares its group unless it leaves it.
  bool ownProcessGroup = false;
};

// A child process, started at construction and reaped at the latest when dropped, so that
// none is left behind as a zombie. No other descriptor of the host reaches the child, its
// signal mask is empty and SIGPIPE has its default action, whatever the host had set.
// The working folder is the host's.
//
// On Linux the kernel kills the child (SIGKILL) when the host dies, so no child outlives a
// host that is killed. It does so when the *thread* that started the child ends, not only the
// process: start a child from a thread that lives at least as long as the child. A run does,
// since it ends its child before its thread goes on; a tool kept beyond one call must be
// started from a thread kept as long. Elsewhere a killed host leaves its child running.
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

  // Whether the child has exited. It stays unreaped until `waitForExit`, so neither its id nor
  // that of its group can pass to another process before then.
  bool hasExited() const;
  // Readable once the child has exited; -1 where the system has no such descriptor (then ask
  // `hasExited` from time to time).
  int exitDescriptor() const { return exitDescriptor_.get(); }

  // Asks the child (and its group, when it has its own) to end: SIGTERM.
  void askToStop() const;
  // Ends them at once: SIGKILL, which no one can refuse.
  void forceStop() const;

  // Blocks until the child has exited and reaps it; the exit status is of no interest.
  void waitForExit();

private:
  void signal(int number) const;

  pid_t pid_ = -1;
  bool ownsGroup_ = false;
  FileDescriptor exitDescriptor_;
  std::optional<std::string> failure_;
};

}  // namespace lorvane::platform
