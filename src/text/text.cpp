#include <lorvane/text.hpp>

#include <unicode/uchar.h>

#include "text/utf8.hpp"

namespace lorvane {
namespace {

bool isWhitespaceOrNewline(UChar32 c) {
  if (c == 0x09 || (c >= 0x0A && c <= 0x0D) || c == 0x85) {
    return true;
  }
  const auto category = u_charType(c);
  return category == U_SPACE_SEPARATOR || category == U_LINE_SEPARATOR ||
         category == U_PARAGRAPH_SEPARATOR;
}

}  // namespace

std::optional<std::string> nonBlank(std::string_view text) {
  for (std::size_t offset = 0; offset < text.size();) {
    const UChar32 c = nextCodePoint(text, offset);
    // Invalid bytes are not white space, so such a text is never blank.
    if (c < 0 || !isWhitespaceOrNewline(c)) {
      return std::string(text);
    }
  }
  return std::nullopt;
}

}  // namespace lorvane
