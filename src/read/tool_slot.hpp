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
  // reader and writer count progress by files done. A tool is replaced after 10,000 files
  // instead of a session's 500: its memory stays flat over thousands of commands of every
  // kind of file (29.8 MB from the 1,000th to the 8,000th), while each fresh tool costs its
  // start and the first reading of each format again, a few percent of a reading of 2,000
  // files when two tools share two cores. Dates come in the user's zone, as the user's own
  // "exiftool" prints them.
  ToolSlot()
      : session_(ETSession::Options{
            .maxRunsPerTool = 10'000, .toolProgress = false, .passesTimeZone = true}) {}

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
