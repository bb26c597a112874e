#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lorvane {

// The text itself, untrimmed, unless it holds nothing but white space and line ends
// (Unicode Zs, Zl, Zp, U+0009, U+000A to U+000D, U+0085); then nothing.
std::optional<std::string> nonBlank(std::string_view text);

// The text with each byte that isn't part of a valid UTF-8 character replaced by U+FFFD, as a
// run that keeps invalid text (ETInput::keepsInvalidText) gives the tool's lines: a file name
// that isn't UTF-8, so mended, is the name as the tool's messages show it.
std::string mendUTF8(std::string_view text);

}  // namespace lorvane
