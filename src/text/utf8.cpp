#include "text/utf8.hpp"

#include <lorvane/text.hpp>

#include <unicode/utf8.h>

#include <algorithm>
#include <cstring>

namespace lorvane {

std::int32_t nextCodePoint(std::string_view text, std::size_t& offset) {
  const auto* data = reinterpret_cast<const std::uint8_t*>(text.data()) + offset;
  if (data[0] < 0x80) {
    ++offset;
    return data[0];
  }
  // ICU's macro counts in 32-bit offsets, so it sees a window of one character at most.
  const auto window = static_cast<std::int32_t>(std::min<std::size_t>(text.size() - offset, 4));
  std::int32_t index = 0;
  UChar32 c = 0;
  U8_NEXT(data, index, window, c);
  offset += static_cast<std::size_t>(index);
  return c;
}

std::optional<std::string_view> decodeUTF8(std::span<const std::byte> bytes) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  std::size_t offset = 0;
  while (offset < text.size()) {
    // ASCII, the bulk of the tool's output, eight bytes at a time.
    while (offset + 8 <= text.size()) {
      std::uint64_t word;
      std::memcpy(&word, text.data() + offset, 8);
      if ((word & 0x8080808080808080ULL) != 0) {
        break;
      }
      offset += 8;
    }
    if (offset < text.size() && nextCodePoint(text, offset) < 0) {
      return std::nullopt;
    }
  }
  return text;
}

std::size_t cutCharacterLength(std::string_view text) {
  // A character has at most four bytes, so only the last three can start a cut one.
  for (std::size_t length = 1; length <= std::min<std::size_t>(3, text.size()); ++length) {
    const auto tail = text.substr(text.size() - length);
    const auto lead = static_cast<std::uint8_t>(tail[0]);
    if (U8_IS_TRAIL(lead)) {
      continue;
    }
    if (!U8_IS_LEAD(lead) || 1 + static_cast<std::size_t>(U8_COUNT_TRAIL_BYTES(lead)) <= length) {
      return 0;
    }
    // The bytes so far must be a beginning that more bytes can complete.
    if (length >= 2) {
      const auto second = static_cast<std::uint8_t>(tail[1]);
      const bool fits = lead < 0xE0   ? U8_IS_TRAIL(second)
                        : lead < 0xF0 ? U8_IS_VALID_LEAD3_AND_T1(lead, second)
                                      : U8_IS_VALID_LEAD4_AND_T1(lead, second);
      if (!fits || (length == 3 && !U8_IS_TRAIL(static_cast<std::uint8_t>(tail[2])))) {
        return 0;
      }
    }
    return length;
  }
  return 0;
}

std::string mendUTF8(std::string_view text) {
  static constexpr std::string_view replacement = "\xEF\xBF\xBD";
  std::string mended;
  mended.reserve(text.size());
  std::size_t offset = 0;
  while (offset < text.size()) {
    const std::size_t start = offset;
    if (nextCodePoint(text, offset) < 0) {
      for (std::size_t byte = start; byte < offset; ++byte) {
        mended += replacement;
      }
    } else {
      mended.append(text.substr(start, offset - start));
    }
  }
  return mended;
}

}  // namespace lorvane
