#pragma once

// A broken property ends the run the way a crash does, so libFuzzer keeps the input.

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace lorvane::fuzz {

inline void require(bool holds, std::string_view property) {
  if (!holds) {
    std::fprintf(stderr, "broken property: %.*s\n", static_cast<int>(property.size()),
                 property.data());
    std::abort();
  }
}

}  // namespace lorvane::fuzz
