#include "platform/child_process.hpp"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/prctl.h>
#include <sys/syscall.h>
#else
#include <spawn.h>
#endif

#include <cerrno>
#include <system_error>

extern char** environ;

namespace lorvane::platform {
namespace {

// Pointers into `strings`, ended by the null pointer that exec wants.
std::vector<char*> makeNullTerminated(std::vector<std::string>& strings) {
  std::vector<char*> pointers;
  pointers.reserve(strings.size() + 1);
  for (auto& string : strings) {
    pointers.push_back(string.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

// The argument and environment lists of exec, made before the start: a forked child of a
// threaded host may not allocate.
struct ExecLists {
  std::vector<std::string> argumentStrings;
  std::vector<char*> argv;
  std::vector<std::string> environmentStrings;
  std::vector<char*> envp;

  explicit ExecLists(const LaunchOptions& options) {
    argumentStrings.reserve(options.arguments.size() + 1);
    argumentStrings.push_back(options.executable.string());
    argumentStrings.insert(argumentStrings.end(), options.arguments.begin(),
                           options.arguments.end());
    argv = makeNullTerminated(argumentStrings);
    if (options.environment) {
      for (const auto& [name, value] : *options.environment) {
        environmentStrings.push_back(name + "=" + value);
      }
      envp = makeNullTerminated(environmentStrings);
    }
  }
  char** environment() { return envp.empty() ? environ : envp.data(); }
};

std::string startFailure(const LaunchOptions& options, int error) {
  return "cannot start \"" + options.executable.string() +
         "\": " + std::generic_category().message(error);
}

#ifdef __linux__

// In the child: tells the parent the system's reason for the failure and ends.
[[noreturn]] void failInChild(int report) {
  const int error = errno;
  [[maybe_unused]] const auto written = ::write(report, &error, sizeof error);
  ::_exit(127);
}

// Between fork and exec, in the child of a host that may have other threads: system calls only,
// no allocation, no lock. Reports the reason of a failure through `report` and never returns.
[[noreturn]] void becomeTool(const LaunchOptions& options, ExecLists& lists, pid_t parent,
                             int report) {
  const auto fail = [&report] { failInChild(report); };
  // The kernel ends the tool when the thread that started it ends, the host's death included,
  // so that no tool outlives its host. A host that died before this line is caught by the
  // parent's id: the child has been handed to another process by then.
  if (::prctl(PR_SET_PDEATHSIG, SIGKILL) != 0) {
    fail();
  }
  if (::getppid() != parent) {
    ::_exit(127);
  }
  if (options.ownProcessGroup && ::setpgid(0, 0) != 0) {
    fail();
  }
  const int streams[] = {options.standardInput, options.standardOutput, options.standardError};
  for (int target = 0; target < 3; ++target) {
    if (streams[target] >= 0 && ::dup2(streams[target], target) < 0) {
      fail();
    }
  }
  // Our own descriptors are all close-on-exec; closing the rest keeps those of the host
  // application that aren't away from the child as well. The report's end moves to 3 first,
  // where it stays open until the exec closes it.
  if (report != 3) {
    if (::dup3(report, 3, O_CLOEXEC) < 0) {
      fail();
    }
    report = 3;
  }
#if defined(__GLIBC__) && (__GLIBC__ > 2 || (__GLIBC__ == 2 && __GLIBC_MINOR__ >= 34))
  ::closefrom(4);
#endif
  // No handler of the host may run in the child, and SIGPIPE, which the host may ignore, gets
  // its default action back; exec resets the other handled signals itself.
  struct sigaction defaultAction {};
  defaultAction.sa_handler = SIG_DFL;
  for (int number = 1; number < NSIG; ++number) {
    struct sigaction current {};
    if (::sigaction(number, nullptr, &current) == 0 &&
        (number == SIGPIPE || (current.sa_handler != SIG_DFL && current.sa_handler != SIG_IGN))) {
      ::sigaction(number, &defaultAction, nullptr);
    }
  }
  sigset_t emptyMask;
  sigemptyset(&emptyMask);
  ::sigprocmask(SIG_SETMASK, &emptyMask, nullptr);
  ::execve(options.executable.c_str(), lists.argv.data(), lists.environment());
  failInChild(report);
}

// Linux starts the child by fork and exec rather than posix_spawn, which has no place for the
// parent-death signal. Gives the child's id, or the error that kept it from starting.
pid_t startChild(const LaunchOptions& options, std::optional<std::string>& failure) {
  ExecLists lists(options);
  Pipe report = makePipe();
  const pid_t parent = ::getpid();
  // No signal handler of the host may run in the child before its mask is emptied.
  sigset_t all;
  sigset_t previous;
  sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &previous);
  const pid_t pid = ::fork();
  if (pid == 0) {
    becomeTool(options, lists, parent, report.writeEnd.get());
  }
  const int forkError = errno;
  ::pthread_sigmask(SIG_SETMASK, &previous, nullptr);
  if (pid < 0) {
    failure = startFailure(options, forkError);
    return -1;
  }
  report.writeEnd.close();
  // End of stream: the exec succeeded and closed the report; a number: the child's errno.
  int error = 0;
  ssize_t got = 0;
  do {
    got = ::read(report.readEnd.get(), &error, sizeof error);
  } while (got < 0 && errno == EINTR);
  if (got <= 0) {
    return pid;
  }
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  failure = startFailure(options, error);
  return -1;
}

#else

// The spawn attributes and file actions with their clean-up, so no early return leaks them.
struct SpawnSetup {
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;

  SpawnSetup() {
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
  }
  ~SpawnSetup() {
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
  }
  SpawnSetup(const SpawnSetup&) = delete;
  SpawnSetup& operator=(const SpawnSetup&) = delete;
};

// Without the parent-death signal (macOS has none), a tool can outlive a host that is killed;
// a watcher (a kqueue on the host's exit, or a pipe whose end the tool sees close) can follow.
pid_t startChild(const LaunchOptions& options, std::optional<std::string>& failure) {
  SpawnSetup setup;
  const int streams[] = {options.standardInput, options.standardOutput, options.standardError};
  for (int target = 0; target < 3; ++target) {
    if (streams[target] >= 0) {
      posix_spawn_file_actions_adddup2(&setup.actions, streams[target], target);
    }
  }
  short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
#ifdef POSIX_SPAWN_CLOEXEC_DEFAULT
  // Our own descriptors are all close-on-exec; this keeps the host's others away as well.
  flags |= POSIX_SPAWN_CLOEXEC_DEFAULT;
#endif
  if (options.ownProcessGroup) {
    flags |= POSIX_SPAWN_SETPGROUP;
    posix_spawnattr_setpgroup(&setup.attributes, 0);  // a new group, numbered as the child
  }
  posix_spawnattr_setflags(&setup.attributes, flags);
  sigset_t emptyMask;
  sigemptyset(&emptyMask);
  posix_spawnattr_setsigmask(&setup.attributes, &emptyMask);
  sigset_t defaultActions;
  sigemptyset(&defaultActions);
  sigaddset(&defaultActions, SIGPIPE);
  posix_spawnattr_setsigdefault(&setup.attributes, &defaultActions);

  ExecLists lists(options);
  pid_t pid = -1;
  const int error = posix_spawn(&pid, options.executable.c_str(), &setup.actions, &setup.attributes,
                                lists.argv.data(), lists.environment());
  if (error != 0) {
    failure = startFailure(options, error);
    return -1;
  }
  return pid;
}

#endif

}  // namespace

ChildProcess::ChildProcess(const LaunchOptions& options) {
  // The utility priority of the original platform has no POSIX twin: the child keeps ours.
  pid_ = startChild(options, failure_);
  if (pid_ < 0) {
    return;
  }
  ownsGroup_ = options.ownProcessGroup;
#if defined(__linux__) && defined(SYS_pidfd_open)
  // Linux 5.3 on; older kernels leave the descriptor out and the waiter asks in slices.
  exitDescriptor_ = FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0)));
#endif
}
ChildProcess::~ChildProcess() { waitForExit(); }

bool ChildProcess::hasExited() const {
  if (pid_ < 0) {
    return true;
  }
  siginfo_t info{};
  // WNOWAIT leaves the child unreaped.
  while (waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT) < 0) {
    if (errno != EINTR) {
      return true;
    }
  }
  return info.si_pid != 0;
}

void ChildProcess::askToStop() const { signal(SIGTERM); }

void ChildProcess::forceStop() const { signal(SIGKILL); }

void ChildProcess::signal(int number) const {
  if (pid_ >= 0) {
    // The child is not reaped yet, so its id still names it and its group.
    ::kill(ownsGroup_ ? -pid_ : pid_, number);
  }
}

void ChildProcess::waitForExit() {
  if (pid_ < 0) {
    return;
  }
  int status = 0;
  while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
  }
  pid_ = -1;
  exitDescriptor_.close();
}

}  // namespace lorvane::platform
