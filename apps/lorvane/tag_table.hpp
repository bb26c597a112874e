#pragma once

// The text form of `lorvane show`: per file a heading, then per stream its name and one aligned
// row per tag (title, value, and the raw value in a quieter form where it differs).

#include <chrono>
#include <iosfwd>
#include <string>
#include <string_view>

#include <lorvane/file_tags.hpp>

namespace lorvane::app {

struct TableStyle {
  bool dimsRawValues = false;  // a terminal: the raw value dim instead of in brackets
};

// The heading, a line with when and where the file was taken (where it says so, by the titles
// of the tags it was read from, in the reader's language), then the streams.
void printTagTable(std::ostream& out, const FileTags& file, TableStyle style);

// An instant in ISO 8601 with these digits of sub-seconds: "2026-11-01T08:30:00.123Z".
std::string utcText(std::chrono::sys_time<std::chrono::microseconds> instant,
                    const std::string& subseconds);

// Columns a text takes on a terminal: East Asian wide and full-width characters two,
// combining marks and format characters none, all others one.
std::size_t displayWidth(std::string_view text);

// Control characters as C escapes ("\t", "\r", "\x1B", "\u0085"), and each byte that isn't
// part of valid UTF-8 as "\xFF"; line feeds as they are or as "\n".
enum class LineFeeds { kept, escaped };
std::string escapeControls(std::string_view text, LineFeeds lineFeeds = LineFeeds::kept);

}  // namespace lorvane::app
