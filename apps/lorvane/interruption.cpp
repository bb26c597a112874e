#include "interruption.hpp"

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include <lorvane/et_process.hpp>

namespace lorvane::app::interruption {
namespace {

std::atomic<int> arrived{0};

// The callbacks to call on a signal. Never destroyed: the watching thread may still use it while
// the program exits.
struct Registry {
  std::mutex mutex;
  std::map<std::uint64_t, std::function<void()>> callbacks;
  std::uint64_t nextId = 0;
};

Registry& registry() {
  static auto* const shared = new Registry;
  return *shared;
}

sigset_t watchedSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    sigaddset(&signals, number);
  }
  return signals;
}

void interrupt(int number) {
  int none = 0;
  arrived.compare_exchange_strong(none, number);
  auto& shared = registry();
  const std::lock_guard lock(shared.mutex);
  for (const auto& [id, cancel] : shared.callbacks) {
    cancel();
  }
}

}  // namespace

void watch() {
  const sigset_t signals = watchedSignals();
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::thread([signals] {
    for (;;) {
      int number = 0;
      if (::sigwait(&signals, &number) == 0) {
        interrupt(number);
      }
    }
  }).detach();
}

int signalNumber() { return arrived.load(); }

CancelRegistration::CancelRegistration(std::function<void()> cancel) {
  auto& shared = registry();
  const std::lock_guard lock(shared.mutex);
  // Read under the lock: a signal is either seen here or finds the callback registered.
  if (arrived.load() != 0) {
    cancel();
  }
  id_ = shared.nextId++;
  shared.callbacks.emplace(id_, std::move(cancel));
}

CancelRegistration::~CancelRegistration() {
  auto& shared = registry();
  const std::lock_guard lock(shared.mutex);
  shared.callbacks.erase(id_);
}

void cancelsOnInterruption(ETInput& input) {
  // Per running process, so that copies of the input may run side by side.
  struct Running {
    std::mutex mutex;
    std::map<const ETProcess*, std::unique_ptr<CancelRegistration>> registrations;
  };
  auto running = std::make_shared<Running>();
  input.onStartHandler = [running, previous = std::move(input.onStartHandler)](ETProcess& process) {
    if (previous) {
      previous(process);
    }
    auto registration = std::make_unique<CancelRegistration>([&process] { process.cancel(); });
    const std::lock_guard lock(running->mutex);
    running->registrations[&process] = std::move(registration);
  };
  input.onEndHandler = [running, previous = std::move(input.onEndHandler)](ETProcess& process) {
    std::unique_ptr<CancelRegistration> registration;
    {
      const std::lock_guard lock(running->mutex);
      registration = std::move(running->registrations[&process]);
      running->registrations.erase(&process);
    }
    registration.reset();
    if (previous) {
      previous(process);
    }
  };
}

}  // namespace lorvane::app::interruption
