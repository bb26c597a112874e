#pragma once

// One kept tool that runs one command at a time for the reader and the writer, and that
// another thread may cancel.

#include <lorvane/et_input.hpp>
#include <lorvane/et_output.hpp>
#include <lorvane/et_session.hpp>

namespace lorvane::detail {

class ToolSlot {
public:
  // Without the tool's own progress lines: they slow it down by a third or more, and the
  // reader and writer count progress by files done.
  ToolSlot() : session_(ETSession::Options{.toolProgress = false}) {}

  ETOutput run(const ETInput& input) { return session_.run(input); }
  // With `next` sent right behind, for the tool to start on as soon as `input` is done.
  ETOutput run(const ETInput& input, const ETInput& next) { return session_.run(input, next); }
  // Ends the command under way, if any; the next one starts a fresh tool.
  void cancel() { session_.cancel(); }
  // Ends the kept tool, after the command under way.
  void close() { session_.close(); }

private:
  ETSession session_;
};

}  // namespace lorvane::detail
