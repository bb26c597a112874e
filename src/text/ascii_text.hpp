#pragma once

#include <algorithm>
#include <string_view>

namespace lorvane::detail {

// ASCII text needs no Unicode work: it is its own canonical form and its own lower case
// beyond A-Z.
inline bool isAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace lorvane::detail
