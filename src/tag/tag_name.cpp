#include <lorvane/tag_name.hpp>

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>

namespace lorvane {
namespace {

std::string makeSafe(std::string_view rawValue) {
  std::string safe(rawValue);
  std::ranges::replace(safe, '#', '_');
  std::ranges::replace(safe, '-', '_');
  return safe;
}

// Blanks and tabs only: a line break around a part of a raw name is kept.
bool isHorizontalWhitespace(UChar32 c) {
  return c == 0x09 || (c >= 0 && u_charType(c) == U_SPACE_SEPARATOR);
}

std::string_view trimHorizontalWhitespace(std::string_view text) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto length = static_cast<std::int32_t>(text.size());
  std::int32_t start = 0;
  while (start < length) {
    std::int32_t next = start;
    UChar32 c = 0;
    U8_NEXT(bytes, next, length, c);
    if (!isHorizontalWhitespace(c)) {
      break;
    }
    start = next;
  }
  std::int32_t end = length;
  while (end > start) {
    std::int32_t previous = end;
    UChar32 c = 0;
    U8_PREV(bytes, start, previous, c);
    if (!isHorizontalWhitespace(c)) {
      break;
    }
    end = previous;
  }
  return text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
}

}  // namespace

std::string TagStream::safeValue() const { return makeSafe(rawValue_); }

std::string TagKey::safeValue() const { return makeSafe(rawValue_); }

std::optional<TagName> TagName::parse(std::string_view rawName) {
  // ":" is ASCII, so a byte search never lands inside a multi-byte character.
  const auto colon = rawName.find(':');
  if (colon == std::string_view::npos) {
    return std::nullopt;
  }
  return TagName(trimHorizontalWhitespace(rawName.substr(0, colon)),
                 trimHorizontalWhitespace(rawName.substr(colon + 1)));
}

std::string TagName::rawValue() const {
  std::string raw;
  raw.reserve(stream_.rawValue().size() + 1 + key_.rawValue().size());
  raw += stream_.rawValue();
  raw += ':';
  raw += key_.rawValue();
  return raw;
}

}  // namespace lorvane
