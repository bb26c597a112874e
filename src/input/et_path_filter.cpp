#include <lorvane/et_path_filter.hpp>

#include <lorvane/canonical_text.hpp>

#include "text/ascii_text.hpp"
#include "text/utf8.hpp"

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>
#include <unordered_set>

namespace lorvane {
namespace {

// Full Unicode upper-casing without a locale ("ß" becomes "SS"), then the canonical form, so
// that two spellings match exactly when their upper cases are canonically equivalent. Bytes
// that are no valid UTF-8 (file names may be any bytes) stay as they are and match only
// themselves.
std::string matchingForm(std::string_view text) {
  if (detail::isAscii(text)) {
    std::string upper(text);
    std::ranges::transform(upper, upper.begin(), [](char c) {
      return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return upper;
  }
  if (!isValidUTF8(text)) {
    return std::string(text);
  }
  icu::UnicodeString unicode = icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
  std::string upper;
  return canonicalForm(unicode.toUpper(icu::Locale::getRoot()).toUTF8String(upper));
}

// The path's extension: what follows the last dot of the last path component; a name
// that only starts with a dot (".bashrc") has none.
std::string pathExtension(const std::filesystem::path& url) {
  std::filesystem::path name = url.filename();
  if (name.empty()) {
    name = url.parent_path().filename();  // "a/b.jpg/" names b.jpg
  }
  const std::string extension = name.extension().string();
  return extension.empty() ? extension : extension.substr(1);
}

}  // namespace

ETPathFilter ETPathFilter::suffix(std::vector<std::string> suffixes) {
  return ETPathFilter(std::move(suffixes));
}

std::vector<std::string> ETPathFilter::arguments() const {
  std::vector<std::string> arguments;
  arguments.reserve(2 * suffixes_.size());
  for (const std::string& suffix : suffixes_) {
    arguments.emplace_back("-ext");
    arguments.push_back(suffix);
  }
  return arguments;
}

std::vector<std::filesystem::path> ETPathFilter::filter(
    std::span<const std::filesystem::path> urls) const {
  if (suffixes_.empty()) {
    return {urls.begin(), urls.end()};
  }
  std::unordered_set<std::string> wanted;
  for (const std::string& suffix : suffixes_) {
    wanted.insert(matchingForm(suffix));
  }
  std::vector<std::filesystem::path> kept;
  for (const std::filesystem::path& url : urls) {
    if (wanted.contains(matchingForm(pathExtension(url)))) {
      kept.push_back(url);
    }
  }
  return kept;
}

bool operator==(const ETPathFilter& a, const ETPathFilter& b) {
  return std::ranges::equal(a.suffixes_, b.suffixes_, canonicallyEqual);
}

}  // namespace lorvane
