#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

#include <lorvane/canonical_text.hpp>
#include <lorvane/string_constinit.hpp>

namespace lorvane {

// The name of a tag inside its stream, such as "Orientation" or "Shutter-AELock": the second
// half of a TagName. Any text makes a key, also an empty one or one holding ":".
class TagKey {
public:
  // The key with the empty raw value.
  static const TagKey empty;

  constexpr TagKey() = default;
  // Stores the text unchanged: no trimming, no validation.
  constexpr explicit TagKey(std::string_view rawValue) : rawValue_(rawValue) {}
  // The same as the constructor; it never fails.
  static TagKey fromRawValue(std::string_view rawValue) { return TagKey(rawValue); }

  const std::string& rawValue() const { return rawValue_; }
  bool isEmpty() const { return rawValue_.empty(); }
  // The form the catalogue's constants are named with: "#" and "-" become "_"
  // ("Shutter-AELock" gives "Shutter_AELock"). Different keys may share one safe value.
  std::string safeValue() const;
  std::string description() const { return rawValue_; }

  friend bool operator==(const TagKey& a, const TagKey& b) {
    return canonicallyEqual(a.rawValue_, b.rawValue_);
  }
  friend std::strong_ordering operator<=>(const TagKey& a, const TagKey& b) {
    return canonicalCompare(a.rawValue_, b.rawValue_);
  }

private:
  std::string rawValue_;
};

inline LORVANE_STRING_CONSTINIT const TagKey TagKey::empty{};

inline std::ostream& operator<<(std::ostream& out, const TagKey& key) {
  return out << key.rawValue();
}

}  // namespace lorvane

// The hash of the raw text: for ASCII the same as std::hash of the plain string.
template <>
struct std::hash<lorvane::TagKey> {
  std::size_t operator()(const lorvane::TagKey& key) const noexcept {
    return lorvane::canonicalHash(key.rawValue());
  }
};
