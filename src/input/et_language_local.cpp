#include <lorvane/et_language.hpp>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/environment.hpp"
#include "platform/small_file.hpp"
#include "input/resource_folder.hpp"

// ETLanguage::local(): the library's "Localizable" resources hold one small file per
// localisation (Localizable/de.strings, zh_CN.strings, ...) with the line
// "ETLanguageLocal = <raw value>". The user's language settings pick the file the gettext way.
//
// This runs on the first touch of any catalogue tag, so it stays off the file system where it
// can: no setting gives English at once, and a file is opened without asking first whether it
// is there.

namespace lorvane {
namespace {

constexpr std::string_view localKey = "ETLanguageLocal";

bool isPlainCLocale(std::string_view locale) {
  return locale.empty() || locale == "C" || locale == "POSIX" || locale.starts_with("C.");
}

// The user's languages, most wanted first: the colon list LANGUAGE, else the message locale
// (LC_ALL, else LC_MESSAGES, else LANG) unless that is the plain C locale. Unlike gettext,
// LANGUAGE counts in the C locale too: a user who sets it asks for it.
std::vector<std::string> preferredLanguages() {
  std::vector<std::string> languages;
  const std::string list = environmentValue("LANGUAGE").value_or("");
  for (std::size_t start = 0; start <= list.size();) {
    const std::size_t end = std::min(list.find(':', start), list.size());
    if (end > start) {
      languages.push_back(list.substr(start, end - start));
    }
    start = end + 1;
  }
  if (!languages.empty()) {
    return languages;
  }
  std::string locale;
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    if (auto value = environmentValue(name)) {
      locale = std::move(*value);
      break;
    }
  }
  if (!isPlainCLocale(locale)) {
    languages.push_back(locale);
  }
  return languages;
}

// The localisations a language asks for, best first: "de_AT.UTF-8@euro" gives "de_AT", then
// "de". Chinese is Simplified ("zh_CN") unless its region or script writes it Traditional.
std::vector<std::string> localisationNames(const std::string& language) {
  const std::string name = language.substr(0, language.find_first_of(".@"));
  const std::size_t underscore = name.find('_');
  const std::string base = name.substr(0, underscore);
  std::vector<std::string> names{name};
  if (base == "zh") {
    const std::string_view rest = underscore == std::string::npos
                                      ? std::string_view()
                                      : std::string_view(name).substr(underscore + 1);
    const bool traditional = rest == "TW" || rest == "HK" || rest == "MO" ||
                             rest.starts_with("Hant");
    if (!traditional && name != "zh_CN") {
      names.push_back("zh_CN");
    }
  } else if (underscore != std::string::npos) {
    names.push_back(base);
  }
  return names;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// The value of `key` in a small file of "key = value" lines, looked for in its first 4 KiB:
// "" when it has no such line, nothing when it can't be opened.
std::optional<std::string> valueInFile(const std::string& file, std::string_view key) {
  const auto contents = platform::readFileStart(file, 4096);
  if (!contents) {
    return std::nullopt;
  }
  std::string_view text = *contents;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    const std::size_t equals = line.find('=');
    if (equals != std::string_view::npos && trimmed(line.substr(0, equals)) == key) {
      return std::string(trimmed(line.substr(equals + 1)));
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return std::string();
}

// The first localisation the user wants that the resources have, as in a bundle lookup; the
// file decides even when it names no language.
ETLanguage findLocal() {
  const std::vector<std::string> languages = preferredLanguages();
  if (languages.empty()) {
    return ETLanguage::english;
  }
  const std::string folder = resourceFolderName() + "/Localizable/";
  for (const std::string& language : languages) {
    for (const std::string& name : localisationNames(language)) {
      if (name.empty() || name.find('/') != std::string::npos) {
        continue;
      }
      if (const auto value = valueInFile(folder + name + ".strings", localKey)) {
        return ETLanguage::fromRawValue(*value).value_or(ETLanguage::english);
      }
    }
  }
  return ETLanguage::english;
}

}  // namespace

ETLanguage ETLanguage::local() {
  static const ETLanguage language = findLocal();
  return language;
}

}  // namespace lorvane
