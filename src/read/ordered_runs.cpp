#include "read/ordered_runs.hpp"

namespace lorvane::detail {

ToolSlots::ToolSlots(std::size_t count)
    : size_(count != 0 ? count : std::max(1U, std::thread::hardware_concurrency())) {}

std::vector<ToolSlot*> ToolSlots::take(std::size_t count) {
  std::lock_guard lock(mutex_);
  const std::size_t wanted = std::min(count, size_);
  while (slots_.size() < wanted) {
    slots_.push_back(std::make_unique<ToolSlot>());
  }
  std::vector<ToolSlot*> taken;
  for (std::size_t i = 0; i < wanted; ++i) {
    taken.push_back(slots_[i].get());
  }
  return taken;
}

void ToolSlots::cancel() {
  cancelled_ = true;
  std::lock_guard lock(mutex_);
  for (const auto& slot : slots_) {
    slot->cancel();
  }
}

}  // namespace lorvane::detail
