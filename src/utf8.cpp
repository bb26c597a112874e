#include "utf8.hpp"

#include <unicode/utf8.h>

#include <cstdint>
#include <algorithm>
#include <cstring>

namespace lorvane {

std::optional<std::string_view> decodeUTF8(std::span<const std::byte> bytes) {
  const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
  const std::size_t size = bytes.size();
  std::size_t offset = 0;
  while (offset < size) {
    // ASCII, the bulk of the tool's output, eight bytes at a time.
    while (offset + 8 <= size) {
      std::uint64_t word;
      std::memcpy(&word, data + offset, 8);
      if ((word & 0x8080808080808080ULL) != 0) {
        break;
      }
      offset += 8;
    }
    if (offset >= size) {
      break;
    }
    if (data[offset] < 0x80) {
      ++offset;
      continue;
    }
    // ICU's macro counts in 32-bit offsets; the remaining window is clipped accordingly.
    const std::size_t window = std::min<std::size_t>(size - offset, 4);
    std::int32_t index = 0;
    UChar32 c = 0;
    U8_NEXT(data + offset, index, static_cast<std::int32_t>(window), c);
    if (c < 0) {
      return std::nullopt;
    }
    offset += static_cast<std::size_t>(index);
  }
  return std::string_view(reinterpret_cast<const char*>(data), size);
}

}  // namespace lorvane
