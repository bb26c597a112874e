#include <lorvane/tag_type.hpp>

#include "text/ascii_text.hpp"

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <charconv>

namespace lorvane {
namespace {

using detail::isAscii;

// Full Unicode lower-casing without a locale: a non-ASCII letter may lower-case to ASCII
// (KELVIN SIGN gives "k"), so it can still name a format.
std::string lowercased(std::string_view text) {
  if (isAscii(text)) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](char c) {
      return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return lower;
  }
  icu::UnicodeString unicode = icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
  unicode.toLower(icu::Locale::getRoot());
  std::string lower;
  unicode.toUTF8String(lower);
  return lower;
}

}  // namespace

std::string TagNumber::description() const {
  char text[64];
  auto* const end = text + sizeof text;
  std::to_chars_result written;
  if (kind_ == Kind::float32) {
    written = std::to_chars(text, end, static_cast<float>(std::get<double>(value_)));
  } else {
    written = std::visit([&](auto number) { return std::to_chars(text, end, number); }, value_);
  }
  return std::string(text, written.ptr);
}

std::optional<TagType> TagType::fromRawValue(std::string_view rawValue) {
  const auto found = std::ranges::find(rows_, rawValue, &Row::rawValue);
  if (found == rows_.end()) {
    return std::nullopt;
  }
  return TagType(static_cast<Case>(found - rows_.begin()));
}

std::optional<TagType> TagType::parse(std::string_view text) {
  return fromRawValue(lowercased(text));
}

std::string TagType::swiftName() const {
  std::string name(rawValue());
  std::ranges::replace(name, '-', '_');
  return name;
}

}  // namespace lorvane
