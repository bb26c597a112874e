#include "tag_table.hpp"

#include <algorithm>
#include <filesystem>
#include <tuple>
#include <cstdio>
#include <ostream>
#include <sstream>
#include <vector>

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace lorvane::app {
namespace {

constexpr std::string_view binaryStart = "(Binary data ";
constexpr std::string_view binaryEnd = ", use -b option to extract)";

// "(Binary data 5120 bytes, use -b option to extract)" says more than a reader of a table needs.
std::string shortened(std::string text) {
  if (text.starts_with(binaryStart) && text.ends_with(binaryEnd)) {
    text.replace(text.size() - binaryEnd.size(), binaryEnd.size(), ")");
  }
  return text;
}

struct Row {
  std::string value;  // with its line feeds
  std::string raw;    // on one line; empty when the raw value says nothing more
};

Row makeRow(const FileTag& tag) {
  Row row;
  row.value = escapeControls(shortened(tag.label.empty() ? tag.value.joined() : tag.label));
  if (tag.raw != tag.value || !tag.label.empty()) {
    row.raw = escapeControls(shortened(tag.raw.joined()), LineFeeds::escaped);
  }
  return row;
}

struct Section {
  std::string name;
  std::vector<const FileTag*> tags;
};

// Titles that stand twice in a section get the tool's family-1 group (IFD0 / IFD1), or its tag
// name where the groups are the same too.
std::vector<std::string> distinctTitles(const std::vector<const FileTag*>& tags) {
  // A sidecar's tag is told apart by its sidecar, not by its groups.
  const auto byTitle = [](const FileTag* a, const FileTag* b) {
    return std::tie(a->title, a->origin) < std::tie(b->title, b->origin);
  };
  std::vector<const FileTag*> sorted = tags;
  std::sort(sorted.begin(), sorted.end(), byTitle);
  std::vector<std::string> titles;
  titles.reserve(tags.size());
  for (const FileTag* tag : tags) {
    std::string shown = tag->title;
    const auto [first, last] = std::equal_range(sorted.begin(), sorted.end(), tag, byTitle);
    if (last - first > 1) {
      std::string telling = tag->family1;
      if (telling.empty() || std::count_if(first, last, [&](const FileTag* other) {
                               return other->family1 == tag->family1;
                             }) > 1) {
        telling.append(telling.empty() ? "" : " ").append(tag->name);
      }
      shown.append(" (").append(telling).append(")");
    }
    if (!tag->origin.empty()) {
      shown.append(" [").append(std::filesystem::path(tag->origin).filename().string()).append("]");
    }
    titles.push_back(escapeControls(shown));
  }
  return titles;
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  const auto length = static_cast<int32_t>(text.size());
  for (int32_t i = 0; i < length;) {
    if (bytes[i] < 0x80) {  // every ASCII character is one column wide, controls too
      ++width;
      ++i;
      continue;
    }
    UChar32 c;
    U8_NEXT(bytes, i, length, c);
    if (c < 0) {
      ++width;  // an invalid byte shows as one replacement character
      continue;
    }
    const auto category = u_charType(c);
    if (category == U_NON_SPACING_MARK || category == U_ENCLOSING_MARK ||
        category == U_FORMAT_CHAR) {
      continue;
    }
    const auto eastAsian = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
    width += eastAsian == U_EA_WIDE || eastAsian == U_EA_FULLWIDTH ? 2 : 1;
  }
  return width;
}

std::string escapeControls(std::string_view text, LineFeeds lineFeeds) {
  // Printable ASCII, nearly all of a value, goes over in runs.
  const auto isPlain = [](char c) { return c >= 0x20 && c < 0x7F; };
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto run =
        std::find_if_not(text.begin() + static_cast<std::ptrdiff_t>(i), text.end(), isPlain);
    const auto runEnd = static_cast<std::size_t>(run - text.begin());
    result.append(text.substr(i, runEnd - i));
    if ((i = runEnd) == text.size()) {
      break;
    }
    const auto byte = static_cast<unsigned char>(text[i]);
    char escape[8];
    if (byte == '\t') {
      result += "\\t";
    } else if (byte == '\n') {
      result += lineFeeds == LineFeeds::kept ? "\n" : "\\n";
    } else if (byte == '\r') {
      result += "\\r";
    } else if (byte < 0x80) {
      std::snprintf(escape, sizeof escape, "\\x%02X", byte);
      result += escape;
    } else {
      // ICU counts in 32-bit offsets: a window of one character at most.
      const auto window = static_cast<std::int32_t>(std::min<std::size_t>(text.size() - i, 4));
      std::int32_t length = 0;
      UChar32 c = 0;
      U8_NEXT(reinterpret_cast<const std::uint8_t*>(text.data() + i), length, window, c);
      if (c < 0) {
        for (std::int32_t k = 0; k < length; ++k) {
          std::snprintf(escape, sizeof escape, "\\x%02X",
                        static_cast<unsigned char>(text[i + static_cast<std::size_t>(k)]));
          result += escape;
        }
      } else if (c <= 0x9F) {
        // U+0080 to U+009F, the C1 controls.
        std::snprintf(escape, sizeof escape, "\\u%04X", static_cast<unsigned>(c));
        result += escape;
      } else {
        result.append(text.substr(i, static_cast<std::size_t>(length)));
      }
      i += static_cast<std::size_t>(length) - 1;
    }
  }
  return result;
}

namespace {

// "Date/Time Original: 2026-11-01T10:30:00+02:00   GPS Position: 48.8584, 2.2945, 35 m", with
// the titles of the file's own tags; empty where the file says neither.
std::string takenLine(const FileTags& file) {
  const auto titleOf = [&](std::string_view group, std::initializer_list<std::string_view> names) {
    for (const std::string_view name : names) {
      for (const auto& tag : file.tags) {
        if (tag.name == name && tag.group.starts_with(group)) {
          return tag.title;
        }
      }
    }
    return std::string(names.begin()[0]);
  };
  std::string line;
  if (const auto taken = file.captureTime()) {
    const auto colon = taken->source.find(':');
    line.append(titleOf(taken->source.substr(0, colon), {taken->source.substr(colon + 1)}))
        .append(": ")
        .append(taken->time.iso8601());
  }
  if (const auto place = file.location()) {
    std::ostringstream where;
    where.precision(10);
    where << place->latitude << ", " << place->longitude;
    if (place->altitude) {
      where << ", " << *place->altitude << " m";
    }
    line.append(line.empty() ? "" : "   ")
        .append(titleOf("", {"GPSPosition", "GPSCoordinates", "GPSLatitude"}))
        .append(": ")
        .append(where.str());
  }
  return line;
}

}  // namespace

std::string utcText(std::chrono::sys_time<std::chrono::microseconds> instant,
                    const std::string& subseconds) {
  using namespace std::chrono;
  const auto day = floor<days>(instant);
  const year_month_day date(day);
  const hh_mm_ss time(floor<seconds>(instant) - day);
  TagDateTime utc{static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()),
                  subseconds,
                  0};
  return utc.iso8601();
}

void printTagTable(std::ostream& out, const FileTags& file, TableStyle style) {
  std::vector<Section> sections;
  for (const auto& tag : file.tags) {
    auto section = std::find_if(sections.begin(), sections.end(),
                                [&](const Section& s) { return s.name == tag.section; });
    if (section == sections.end()) {
      section = sections.insert(sections.end(), Section{tag.section, {}});
    }
    section->tags.push_back(&tag);
  }
  std::vector<std::vector<std::string>> titles;
  std::size_t titleWidth = 0;
  for (const auto& section : sections) {
    titles.push_back(distinctTitles(section.tags));
    for (const auto& title : titles.back()) {
      titleWidth = std::max(titleWidth, displayWidth(title));
    }
  }

  // A file name may hold a line feed, and the header stays one line. The table goes out in one
  // write: a stream's many small insertions cost more than the table's making.
  std::string text = "== " + escapeControls(file.file, LineFeeds::escaped) + "\n";
  if (const auto taken = takenLine(file); !taken.empty()) {
    text.append(escapeControls(taken, LineFeeds::escaped)).append("\n");
  }
  const std::string continuation(2 + titleWidth + 2, ' ');
  for (std::size_t s = 0; s < sections.size(); ++s) {
    text.append(sections[s].name).append("\n");
    for (std::size_t t = 0; t < sections[s].tags.size(); ++t) {
      const Row row = makeRow(*sections[s].tags[t]);
      const auto& title = titles[s][t];
      text.append("  ").append(title).append(titleWidth - displayWidth(title) + 2, ' ');
      // The lines of a value after its first stand under it.
      std::size_t start = 0;
      for (std::size_t end; (end = row.value.find('\n', start)) != std::string::npos;
           start = end + 1) {
        text.append(row.value, start, end + 1 - start).append(continuation);
      }
      text.append(row.value, start);
      if (!row.raw.empty()) {
        if (style.dimsRawValues) {
          text.append("  \x1b[2m").append(row.raw).append("\x1b[22m");
        } else {
          text.append("  [").append(row.raw).append("]");
        }
      }
      text.append("\n");
    }
  }
  out << text;
}

}  // namespace lorvane::app
