#include <lorvane/canonical_text.hpp>

#include "text/ascii_text.hpp"
#include "text/utf8.hpp"

#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>
#include <unicode/stringpiece.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>

namespace lorvane {

using detail::isAscii;

std::string canonicalForm(std::string_view text) {
  // ICU counts in 32-bit lengths; a longer text stays as it is.
  if (isAscii(text) ||
      text.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()) ||
      !isValidUTF8(text)) {
    return std::string(text);
  }
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* nfc = icu::Normalizer2::getNFCInstance(status);
  const icu::StringPiece piece(text.data(), static_cast<std::int32_t>(text.size()));
  if (U_FAILURE(status) || nfc->isNormalizedUTF8(piece, status) || U_FAILURE(status)) {
    return std::string(text);
  }
  std::string normalised;
  icu::StringByteSink<std::string> sink(&normalised, static_cast<std::int32_t>(text.size()));
  nfc->normalizeUTF8(0, piece, sink, nullptr, status);
  return U_SUCCESS(status) ? normalised : std::string(text);
}

bool canonicallyEqual(std::string_view a, std::string_view b) {
  if (a == b) {
    return true;
  }
  if (isAscii(a) && isAscii(b)) {
    return false;
  }
  return canonicalForm(a) == canonicalForm(b);
}

std::strong_ordering canonicalCompare(std::string_view a, std::string_view b) {
  // Byte order of UTF-8 is code point order.
  if (isAscii(a) && isAscii(b)) {
    return a.compare(b) <=> 0;
  }
  return canonicalForm(a).compare(canonicalForm(b)) <=> 0;
}

std::size_t canonicalHash(std::string_view text) {
  if (isAscii(text)) {
    return std::hash<std::string_view>{}(text);
  }
  return std::hash<std::string>{}(canonicalForm(text));
}

}  // namespace lorvane
