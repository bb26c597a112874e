#pragma once

// Where the tool's own tables differ between camera models, the catalogue keeps every text side
// by side in one, joined by " |" and a no-break space ("Canon EF 28mm f/2.8 | Sigma Lens").

#include <string_view>

namespace lorvane::detail {

inline constexpr std::string_view alternativeSeparator = " |\u00a0";

inline bool hasAlternatives(std::string_view text) {
  return text.find(alternativeSeparator) != std::string_view::npos;
}

// Whether `text` is the whole of `catalogueText` or one of its alternatives.
inline bool isAlternative(std::string_view catalogueText, std::string_view text) {
  for (std::size_t start = 0;;) {
    const auto end = catalogueText.find(alternativeSeparator, start);
    if (catalogueText.substr(start, end - start) == text) {
      return true;
    }
    if (end == std::string_view::npos) {
      return false;
    }
    start = end + alternativeSeparator.size();
  }
}

}  // namespace lorvane::detail
