#include <lorvane/et_path_filter.hpp>

#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>
#include <unordered_set>

namespace lorvane {
namespace {

bool isAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// The form in which two texts are equal exactly when they are canonically equivalent (NFC),
// upper-cased first if asked. Text that is not valid UTF-8 (file names may be any bytes) is
// left as it is, so that it only ever matches itself.
std::string comparable(std::string_view text, bool upperCased) {
  if (isAscii(text)) {
    std::string result(text);
    if (upperCased) {
      std::ranges::transform(result, result.begin(), [](char c) {
        return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
      });
    }
    return result;
  }
  icu::UnicodeString unicode = icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
  std::string roundTrip;
  if (unicode.toUTF8String(roundTrip) != text) {
    return std::string(text);
  }
  if (upperCased) {
    unicode.toUpper(icu::Locale::getRoot());
  }
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* nfc = icu::Normalizer2::getNFCInstance(status);
  if (U_SUCCESS(status)) {
    unicode = nfc->normalize(unicode, status);
  }
  std::string result;
  return unicode.toUTF8String(result);
}

// Foundation's pathExtension: what follows the last dot of the last path component; a name
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
    wanted.insert(comparable(suffix, true));
  }
  std::vector<std::filesystem::path> kept;
  for (const std::filesystem::path& url : urls) {
    if (wanted.contains(comparable(pathExtension(url), true))) {
      kept.push_back(url);
    }
  }
  return kept;
}

bool operator==(const ETPathFilter& a, const ETPathFilter& b) {
  return std::ranges::equal(a.suffixes_, b.suffixes_, [](const std::string& x,
                                                          const std::string& y) {
    return x == y || comparable(x, false) == comparable(y, false);
  });
}

}  // namespace lorvane
