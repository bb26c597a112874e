#include <lorvane/tag_type.hpp>

#include "ascii_text.hpp"

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <charconv>
#include <limits>

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

template <class Number>
std::optional<TagNumber> lowest() {
  return TagNumber::make(std::numeric_limits<Number>::lowest());
}

template <class Number>
std::optional<TagNumber> highest() {
  return TagNumber::make(std::numeric_limits<Number>::max());
}

std::optional<TagNumber> zero() { return TagNumber::make(0.0); }

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

std::optional<TagType> TagType::parse(std::string_view text) { return fromRawValue(lowercased(text)); }

std::string TagType::swiftName() const {
  std::string name(rawValue());
  std::ranges::replace(name, '-', '_');
  return name;
}

std::optional<TagNumber> TagType::minimumNumberValue() const {
  switch (value_) {
    case Case::int8u: return lowest<std::uint8_t>();
    case Case::int8s: return lowest<std::int8_t>();
    case Case::int16u: case Case::int16urev: case Case::var_int16u: return lowest<std::uint16_t>();
    case Case::int16s: case Case::fixed16s: return lowest<std::int16_t>();
    case Case::int32u: case Case::int32urev: case Case::fixed32u: return lowest<std::uint32_t>();
    case Case::int32s: case Case::fixed32s: return lowest<std::int32_t>();
    case Case::int64u: return lowest<std::uint64_t>();
    case Case::int64s: case Case::integer: return lowest<std::int64_t>();
    case Case::float_: case Case::real: case Case::rational: case Case::rational32s: return lowest<float>();
    case Case::double_: case Case::rational64s: return lowest<double>();
    // Unsigned fractions start at a 64-bit float zero whatever their maximum.
    case Case::rational32u: case Case::rational64u: case Case::speed: return zero();
    default: return std::nullopt;
  }
}

std::optional<TagNumber> TagType::maximumNumberValue() const {
  switch (value_) {
    case Case::int8u: return highest<std::uint8_t>();
    case Case::int8s: return highest<std::int8_t>();
    case Case::int16u: case Case::int16urev: case Case::var_int16u: return highest<std::uint16_t>();
    case Case::int16s: case Case::fixed16s: return highest<std::int16_t>();
    case Case::int32u: case Case::int32urev: case Case::fixed32u: return highest<std::uint32_t>();
    // integer takes 64-bit values down but stops at the 32-bit maximum.
    case Case::int32s: case Case::fixed32s: case Case::integer: return highest<std::int32_t>();
    case Case::int64u: return highest<std::uint64_t>();
    case Case::int64s: return highest<std::int64_t>();
    case Case::float_: case Case::real: case Case::rational: case Case::rational32s:
    case Case::rational32u: return highest<float>();
    case Case::double_: case Case::rational64s: case Case::rational64u: case Case::speed:
      return highest<double>();
    default: return std::nullopt;
  }
}

}  // namespace lorvane
