#include "tool_slot.hpp"

namespace lorvane::detail {

ETOutput ToolSlot::run(const ETInput& input) {
  // A fresh instance: an instance keeps the messages of its earlier runs.
  ETProcess process;
  {
    std::lock_guard lock(mutex_);
    running_ = &process;
  }
  process.execute(input);
  std::lock_guard lock(mutex_);
  running_ = nullptr;
  return process.output();
}

void ToolSlot::cancel() {
  std::lock_guard lock(mutex_);
  if (running_ != nullptr) {
    running_->cancel();
  }
}

}  // namespace lorvane::detail
