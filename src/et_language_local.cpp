#include <lorvane/et_language.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "resource_folder.hpp"

// ETLanguage::local(): the library's "Localizable" resources hold one small file per
// localisation (Localizable/de.strings, zh_CN.strings, ...) with the line
// "ETLanguageLocal = <raw value>". The user's language settings pick the file the gettext way.

namespace lorvane {
namespace {

constexpr std::string_view localKey = "ETLanguageLocal";

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

bool isPlainCLocale(std::string_view locale) {
  return locale.empty() || locale == "C" || locale == "POSIX" || locale.starts_with("C.");
}

// The user's languages, most wanted first. As in gettext, LANGUAGE (a colon list) counts only
// when the message locale (LC_ALL, else LC_MESSAGES, else LANG) is not the plain C locale.
std::vector<std::string> preferredLanguages() {
  std::string locale = environment("LC_ALL");
  if (locale.empty()) {
    locale = environment("LC_MESSAGES");
  }
  if (locale.empty()) {
    locale = environment("LANG");
  }
  if (isPlainCLocale(locale)) {
    return {};
  }
  std::vector<std::string> languages;
  const std::string list = environment("LANGUAGE");
  for (std::size_t start = 0; start <= list.size();) {
    const std::size_t end = std::min(list.find(':', start), list.size());
    if (end > start) {
      languages.push_back(list.substr(start, end - start));
    }
    start = end + 1;
  }
  if (languages.empty()) {
    languages.push_back(locale);
  }
  return languages;
}

// "de_AT.UTF-8@euro" -> "de_AT", then "de".
std::vector<std::string> localisationNames(const std::string& language) {
  const std::string name = language.substr(0, language.find_first_of(".@"));
  std::vector<std::string> names{name};
  if (const std::size_t underscore = name.find('_'); underscore != std::string::npos) {
    names.push_back(name.substr(0, underscore));
  }
  return names;
}

// The first localisation the user wants that the resources have, as in a bundle lookup.
std::optional<std::filesystem::path> pickLocalisation(const std::filesystem::path& folder) {
  for (const std::string& language : preferredLanguages()) {
    for (const std::string& name : localisationNames(language)) {
      if (name.empty() || name.find('/') != std::string::npos) {
        continue;
      }
      const std::filesystem::path file = folder / (name + ".strings");
      std::error_code error;
      if (std::filesystem::is_regular_file(file, error)) {
        return file;
      }
    }
  }
  return std::nullopt;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// The value of `key` in a file of "key = value" lines; "" when it isn't there.
std::string lookUp(const std::filesystem::path& file, std::string_view key) {
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    const std::size_t equals = line.find('=');
    if (equals != std::string::npos && trimmed(std::string_view(line).substr(0, equals)) == key) {
      return std::string(trimmed(std::string_view(line).substr(equals + 1)));
    }
  }
  return {};
}

ETLanguage findLocal() {
  const auto file = pickLocalisation(resourceFolder() / "Localizable");
  if (!file) {
    return ETLanguage::english;
  }
  return ETLanguage::fromRawValue(lookUp(*file, localKey)).value_or(ETLanguage::english);
}

}  // namespace

ETLanguage ETLanguage::local() {
  static const ETLanguage language = findLocal();
  return language;
}

}  // namespace lorvane
