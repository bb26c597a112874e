#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

#include <lorvane/canonical_text.hpp>
#include <lorvane/string_constinit.hpp>
#include <lorvane/generated/tag_stream_catalogue.hpp>

namespace lorvane {

// The group a tag lives in, such as "EXIF", "Canon" or "SRF#": the first half of a TagName.
// Any text makes a stream, the empty one too; nothing checks it against the catalogue. The
// catalogue's streams (TagStream::streamEXIF(), TagStream::allCases(), ...) come from the
// generated base class.
class TagStream : public TagStreamCatalogue {
public:
  // The stream with the empty raw value.
  static const TagStream empty;

  constexpr TagStream() = default;
  // Stores the text unchanged: no trimming, no validation.
  constexpr explicit TagStream(std::string_view rawValue) : rawValue_(rawValue) {}
  // The same as the constructor; it never fails.
  static TagStream fromRawValue(std::string_view rawValue) { return TagStream(rawValue); }

  const std::string& rawValue() const { return rawValue_; }
  bool isEmpty() const { return rawValue_.empty(); }
  // The form the catalogue's constants are named with: "#" and "-" become "_" ("SRF#" gives
  // "SRF_"). Different streams may share one safe value.
  std::string safeValue() const;
  std::string description() const { return rawValue_; }

  friend bool operator==(const TagStream& a, const TagStream& b) {
    return canonicallyEqual(a.rawValue_, b.rawValue_);
  }
  friend std::strong_ordering operator<=>(const TagStream& a, const TagStream& b) {
    return canonicalCompare(a.rawValue_, b.rawValue_);
  }

private:
  std::string rawValue_;
};

inline LORVANE_STRING_CONSTINIT const TagStream TagStream::empty{};

inline std::ostream& operator<<(std::ostream& out, const TagStream& stream) {
  return out << stream.rawValue();
}

}  // namespace lorvane

// The hash of the raw text: for ASCII the same as std::hash of the plain string.
template <>
struct std::hash<lorvane::TagStream> {
  std::size_t operator()(const lorvane::TagStream& stream) const noexcept {
    return lorvane::canonicalHash(stream.rawValue());
  }
};
