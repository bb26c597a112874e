#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace lorvane {

// The code point that starts at `offset` in `text`, moving `offset` behind it; negative for bytes
// that aren't valid UTF-8 (no overlong forms, no surrogates), `offset` then moving past them.
// Offsets are those of the text, however long it is.
std::int32_t nextCodePoint(std::string_view text, std::size_t& offset);

// The bytes as text when they are valid UTF-8, else nothing. The view points into the bytes.
std::optional<std::string_view> decodeUTF8(std::span<const std::byte> bytes);

// The same test for text.
inline bool isValidUTF8(std::string_view text) {
  return decodeUTF8(std::as_bytes(std::span(text.data(), text.size()))).has_value();
}

// The length of a character cut off at the end of `text`: the bytes behind its last complete
// character that begin one and could still be completed by more; 0 when there are none.
std::size_t cutCharacterLength(std::string_view text);

}  // namespace lorvane
