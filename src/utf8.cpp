#include "utf8.hpp"

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

}  // namespace lorvane
