#include "platform/child_process.hpp"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/syscall.h>
#endif

#include <cerrno>
#include <system_error>

extern char** environ;

namespace lorvane::platform {
namespace {

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

}  // namespace

ChildProcess::ChildProcess(const LaunchOptions& options) {
  SpawnSetup setup;
  const int streams[] = {options.standardInput, options.standardOutput, options.standardError};
  for (int target = 0; target < 3; ++target) {
    if (streams[target] >= 0) {
      posix_spawn_file_actions_adddup2(&setup.actions, streams[target], target);
    }
  }
  // Our own descriptors are all close-on-exec; closing the rest keeps those of the host
  // application that aren't away from the child as well.
#if defined(__GLIBC__) && (__GLIBC__ > 2 || (__GLIBC__ == 2 && __GLIBC_MINOR__ >= 34))
  posix_spawn_file_actions_addclosefrom_np(&setup.actions, STDERR_FILENO + 1);
#endif
  short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
#ifdef POSIX_SPAWN_CLOEXEC_DEFAULT
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

  // The utility priority of the original platform has no POSIX twin: the child keeps ours.
  std::vector<std::string> argumentStrings;
  argumentStrings.reserve(options.arguments.size() + 1);
  argumentStrings.push_back(options.executable.string());
  argumentStrings.insert(argumentStrings.end(), options.arguments.begin(), options.arguments.end());
  auto argv = makeNullTerminated(argumentStrings);

  std::vector<std::string> environmentStrings;
  std::vector<char*> envp;
  if (options.environment) {
    for (const auto& [name, value] : *options.environment) {
      environmentStrings.push_back(name + "=" + value);
    }
    envp = makeNullTerminated(environmentStrings);
  }

  const int error = posix_spawn(&pid_, options.executable.c_str(), &setup.actions,
                                &setup.attributes, argv.data(),
                                options.environment ? envp.data() : environ);
  if (error != 0) {
    pid_ = -1;
    failure_ = "cannot start \"" + options.executable.string() +
               "\": " + std::generic_category().message(error);
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
