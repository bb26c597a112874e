#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace lorvane {

// The bytes as text when they are valid UTF-8 (no overlong forms, no surrogates), else nothing.
// The view points into the bytes.
std::optional<std::string_view> decodeUTF8(std::span<const std::byte> bytes);

}  // namespace lorvane
