#pragma once

// One tool that runs one command at a time for the reader and the writer, and that another
// thread may cancel.

#include <mutex>

#include <lorvane/et_input.hpp>
#include <lorvane/et_output.hpp>
#include <lorvane/et_process.hpp>

namespace lorvane::detail {

class ToolSlot {
public:
  ETOutput run(const ETInput& input);
  // Ends the command under way, if any.
  void cancel();

private:
  std::mutex mutex_;
  ETProcess* running_ = nullptr;
};

}  // namespace lorvane::detail
