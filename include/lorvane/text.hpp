#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lorvane {

// The text itself, untrimmed, unless it holds nothing but white space and line ends
// (Unicode Zs, Zl, Zp, U+0009, U+000A to U+000D, U+0085); then nothing.
std::optional<std::string> nonBlank(std::string_view text);

}  // namespace lorvane
