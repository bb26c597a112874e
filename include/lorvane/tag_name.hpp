#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include <lorvane/tag_key.hpp>
#include <lorvane/string_constinit.hpp>
#include <lorvane/tag_stream.hpp>

namespace lorvane {

// The identity of a tag: its stream and its key. Its one textual form, the raw name, is the
// stream, ":" and the key, as in "EXIF:Orientation"; it is what callers type, what serialised
// data holds and the stem of every text key of the string tables.
class TagName {
public:
  // Reading a TagName from serialised text that holds no ":". All values are equal.
  class CodingError : public std::runtime_error {
  public:
    enum class Case { notParsableRawValue };

    explicit CodingError(Case value = Case::notParsableRawValue)
        : std::runtime_error("notParsableRawValue"), value_(value) {}
    Case value() const { return value_; }

    friend bool operator==(const CodingError&, const CodingError&) { return true; }

  private:
    Case value_;
  };

  // Made of TagStream::empty and TagKey::empty: the value that stands for no tag.
  static const TagName empty;

  constexpr TagName() = default;
  constexpr TagName(TagStream stream, TagKey key)
      : stream_(std::move(stream)), key_(std::move(key)) {}
  // Stores both texts unchanged, stream first: no trimming, no check for ":".
  constexpr TagName(std::string_view stream, std::string_view key) : stream_(stream), key_(key) {}

  // Splits a raw name at its first ":" and trims blanks and tabs (not line breaks) around
  // both parts; either part may come out empty. Nothing when the text has no ":".
  static std::optional<TagName> parse(std::string_view rawName);
  static std::optional<TagName> fromRawValue(std::string_view rawName) { return parse(rawName); }

  const TagStream& stream() const { return stream_; }
  const TagKey& key() const { return key_; }
  // Always holds the ":", so the raw value of TagName::empty is ":".
  std::string rawValue() const;
  bool isEmpty() const { return stream_.isEmpty() && key_.isEmpty(); }
  // The stream's and the key's safe values with nothing between them, as in the catalogue's
  // constant names ("CanonCustom:Shutter-AELock" gives "CanonCustomShutter_AELock").
  std::string safeValue() const { return stream_.safeValue() + key_.safeValue(); }
  std::string description() const { return rawValue(); }

  friend bool operator==(const TagName&, const TagName&) = default;
  // Alphabetical by stream, then by key.
  friend std::strong_ordering operator<=>(const TagName& a, const TagName& b) {
    if (const auto byStream = a.stream_ <=> b.stream_; byStream != 0) {
      return byStream;
    }
    return a.key_ <=> b.key_;
  }

private:
  TagStream stream_;
  TagKey key_;
};

inline LORVANE_STRING_CONSTINIT const TagName TagName::empty{};

inline std::ostream& operator<<(std::ostream& out, const TagName& name) {
  return out << name.stream() << ':' << name.key();
}

}  // namespace lorvane

template <>
struct std::hash<lorvane::TagName> {
  std::size_t operator()(const lorvane::TagName& name) const noexcept {
    const std::size_t stream = std::hash<lorvane::TagStream>{}(name.stream());
    const std::size_t key = std::hash<lorvane::TagKey>{}(name.key());
    return stream ^ (key + 0x9e3779b97f4a7c15ULL + (stream << 6) + (stream >> 2));
  }
};

template <>
struct std::hash<lorvane::TagName::CodingError> {
  std::size_t operator()(const lorvane::TagName::CodingError&) const noexcept { return 0; }
};
