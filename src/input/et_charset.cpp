#include <lorvane/et_charset.hpp>

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>

namespace lorvane {
namespace {

icu::UnicodeString unicode(std::string_view text) {
  return icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

}  // namespace

std::optional<ETCharset> ETCharset::fromRawValue(std::string_view rawValue) {
  for (ETCharset charset : allCases()) {
    if (charset.rawValue() == rawValue) {
      return charset;
    }
  }
  return std::nullopt;
}

ETCharset ETCharset::fromStoredValue(std::string_view text) {
  // Full Unicode case folding, so that any spelling a user or another program may have
  // stored ("macroman", "MACROMAN") finds its charset.
  const icu::UnicodeString stored = unicode(text);
  for (ETCharset charset : allCases()) {
    if (stored.caseCompare(unicode(charset.rawValue()), U_FOLD_CASE_DEFAULT) == 0) {
      return charset;
    }
  }
  return utf8;
}

std::vector<ETCharset> ETCharset::allCases() {
  std::vector<ETCharset> cases;
  cases.reserve(rawValues_.size());
  for (std::size_t index = 0; index < rawValues_.size(); ++index) {
    cases.emplace_back(static_cast<Case>(index));
  }
  return cases;
}

}  // namespace lorvane
