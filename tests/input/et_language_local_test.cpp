#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <stdlib.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "test_support.hpp"

// ETLanguage::local() is worked out once per process, so every case runs in a child process
// of its own: a death test in the "threadsafe" style, which starts the test program afresh.

using lorvane::ETLanguage;

namespace {

using Settings = std::vector<std::pair<const char*, const char*>>;
// Localisation file name -> its whole text; none: the library's own shipped resources.
using Localisations = std::map<std::string, std::string>;

// Sets the language settings and resources, asks for local() twice with a change of both in
// between, and reports on stderr as "local=<raw value>" (plus " changed" if the second answer
// differs).
[[noreturn]] void reportLocal(const Settings& settings,
                              const std::optional<Localisations>& resources = std::nullopt) {
  for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG", "LORVANE_RESOURCE_DIR"}) {
    unsetenv(name);
  }
  for (const auto& [name, value] : settings) {
    setenv(name, value, 1);
  }
  std::optional<lorvane::test::TemporaryFolder> folder;
  if (resources) {
    folder.emplace();
    std::filesystem::create_directory(folder->path() / "Localizable");
    for (const auto& [file, text] : *resources) {
      std::ofstream(folder->path() / "Localizable" / file) << text;
    }
    setenv("LORVANE_RESOURCE_DIR", folder->path().c_str(), 1);
  }

  const ETLanguage first = ETLanguage::local();
  setenv("LANGUAGE", "es", 1);
  setenv("LC_ALL", "es_ES.UTF-8", 1);
  setenv("LORVANE_RESOURCE_DIR", "/nonexistent", 1);
  const ETLanguage second = ETLanguage::local();

  folder.reset();
  std::fprintf(stderr, "local=%s%s\n", std::string(first.rawValue()).c_str(),
               first == second ? "" : " changed");
  std::fflush(stderr);
  std::exit(0);
}

std::string expect(std::string_view rawValue) { return "local=" + std::string(rawValue) + "\n"; }

class ETLanguageLocal : public ::testing::Test {
protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

}  // namespace

TEST_F(ETLanguageLocal, SettingsAreReadInGettextOrder) {
  // Every language is shipped (the catalogue's language tests start a Japanese process); a
  // region or a missing codeset falls back to the language.
  const std::vector<std::pair<Settings, std::string_view>> cases{
      {{{"LANG", "fr_CA.UTF-8"}}, "french"},
      {{{"LANG", "es_MX.UTF-8"}}, "spanish"},
      {{{"LANG", "it_IT"}}, "italian"},
      {{{"LANG", "C"}}, "english"},
      {{}, "english"},
      // LANGUAGE counts in the C locale too: whoever sets it asks for it.
      {{{"LANG", "de_DE.UTF-8"}, {"LC_ALL", "C.UTF-8"}, {"LANGUAGE", "de"}}, "german"},
      {{{"LANG", "C"}, {"LANGUAGE", ":"}}, "english"},
      // Chinese is the Simplified kind unless the region writes it Traditional.
      {{{"LANG", "zh_SG.UTF-8"}}, "chinese"},
      {{{"LANG", "zh_TW.UTF-8"}}, "english"},
      {{{"LANGUAGE", "zh_HK:de"}}, "german"},
      {{{"LANG", "de_DE.UTF-8"}, {"LANGUAGE", "pt_BR:fr:de"}}, "french"},
      {{{"LANG", "de_AT.UTF-8@euro"}, {"LC_MESSAGES", "it_IT.UTF-8"}}, "italian"},
  };
  for (const auto& [settings, language] : cases) {
    SCOPED_TRACE(language);
    EXPECT_EXIT(reportLocal(settings), testing::ExitedWithCode(0), expect(language));
  }
}

TEST_F(ETLanguageLocal, ResourcesDecide) {
  const Settings german{{"LANG", "de_DE.UTF-8"}};
  EXPECT_EXIT(reportLocal(german, Localisations{{"de.strings", "ETLanguageLocal = japanese\n"}}),
              testing::ExitedWithCode(0), expect("japanese"));
  EXPECT_EXIT(reportLocal(german, Localisations{}), testing::ExitedWithCode(0), expect("english"));
  // A name or tool code in place of the raw value matches nothing.
  EXPECT_EXIT(reportLocal(german, Localisations{{"de.strings", "ETLanguageLocal = Deutsch\n"}}),
              testing::ExitedWithCode(0), expect("english"));
  // The user's first localisation that exists wins, even without the key.
  EXPECT_EXIT(reportLocal(german, Localisations{{"de_DE.strings", "# nothing here\n"},
                                                {"de.strings", "ETLanguageLocal = german\n"}}),
              testing::ExitedWithCode(0), expect("english"));
}
