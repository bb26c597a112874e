#include <lorvane/et_session.hpp>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "run/run_each.hpp"

namespace lorvane {

struct ETSessionPool::Shared {
  Shared(std::size_t size, ETSession::Options options) : size(size), options(options) {}

  const std::size_t size;
  const ETSession::Options options;
  std::mutex guard;
  std::condition_variable released;
  // Guarded by `guard`; a session is made when a run finds none idle and there is room.
  std::vector<std::unique_ptr<ETSession>> sessions;
  std::vector<ETSession*> idle;

  ETSession& acquire() {
    std::unique_lock lock(guard);
    released.wait(lock, [&] { return !idle.empty() || sessions.size() < size; });
    if (!idle.empty()) {
      ETSession* session = idle.back();
      idle.pop_back();
      return *session;
    }
    return *sessions.emplace_back(std::make_unique<ETSession>(options));
  }

  void release(ETSession& session) {
    {
      std::lock_guard lock(guard);
      idle.push_back(&session);
    }
    released.notify_one();
  }
};

ETSessionPool::ETSessionPool(std::size_t size, ETSession::Options options)
    : shared_(std::make_unique<Shared>(
          size > 0 ? size : std::max(1u, std::thread::hardware_concurrency()), options)) {}

ETSessionPool::~ETSessionPool() = default;

std::size_t ETSessionPool::size() const { return shared_->size; }

ETOutput ETSessionPool::run(const ETInput& input) {
  ETSession& session = shared_->acquire();
  // Never throws: what goes wrong is in the output.
  ETOutput output = session.run(input);
  shared_->release(session);
  return output;
}

std::vector<ETOutput> ETSessionPool::runAll(std::span<const ETInput> inputs) {
  return runEach(inputs, shared_->size, [this](const ETInput& input) { return run(input); });
}

}  // namespace lorvane
