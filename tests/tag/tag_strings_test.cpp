#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <stdlib.h>

#include <array>
#include <iostream>
#include <vector>

using namespace lorvane;

namespace {

// A slice of the stream "EXIF" in English and German. German has no entry where its text
// would equal the English one, as in the catalogue.
const TagStringTable::Map englishExif{
    {"EXIF:Orientation", "Orientation"},
    {"EXIF:Orientation:1", "Horizontal (normal)"},
    {"EXIF:Orientation:2", "Mirror horizontal"},
    {"ICC_Profile:ProfileCMMType:", ""},
};
const TagStringTable::Map germanExif{
    {"EXIF:Orientation", "Ausrichtung"},
    {"EXIF:Orientation:2", "Horizontal gespiegelt"},
};

// The same English slice as constant data, sorted by key in byte order.
constexpr std::array<TagStringTable::Entry, 4> englishEntries{{
    {"EXIF:Orientation", "Orientation"},
    {"EXIF:Orientation:1", "Horizontal (normal)"},
    {"EXIF:Orientation:2", "Mirror horizontal"},
    {"ICC_Profile:ProfileCMMType:", ""},
}};

}  // namespace

TEST(TagStringTable, ConstantEntriesAndMapsAnswerAlike) {
  const TagStringTable overEntries(englishEntries);
  const TagStringTable overMap(englishExif);
  for (const TagStringTable& table : {overEntries, overMap}) {
    EXPECT_EQ(table.size(), 4u);
    EXPECT_FALSE(table.empty());
    EXPECT_EQ(table.find("EXIF:Orientation"), "Orientation");
    EXPECT_EQ(table.find("EXIF:Orientation:2"), "Mirror horizontal");
    EXPECT_EQ(table.find("ICC_Profile:ProfileCMMType:"), "");  // found, and empty
    EXPECT_FALSE(table.find("EXIF:Orientation:"));
    EXPECT_FALSE(table.find("EXIF"));
    EXPECT_FALSE(table.find(""));
    EXPECT_FALSE(table.find("ZZZ"));
  }
  const TagStringTable none;
  EXPECT_TRUE(none.empty());
  EXPECT_FALSE(none.find("EXIF:Orientation"));
}

TEST(TagStringTable, ViewsTheMapWithoutCopying) {
  TagStringTable::Map map{{"A:B", "first"}};
  const TagStringTable table(map);
  map["A:B"] = "second";
  map["A:C"] = "third";
  EXPECT_EQ(table.find("A:B"), "second");
  EXPECT_EQ(table.size(), 2u);
}

TEST(TagStrings, MakeIdJoinsWithColonsAndEscapesNothing) {
  EXPECT_EQ(TagStrings::makeID({"EXIF", "Orientation", "1"}), "EXIF:Orientation:1");
  EXPECT_EQ(TagStrings::makeID({"EXIF"}), "EXIF");
  EXPECT_EQ(TagStrings::makeID({}), "");
  EXPECT_EQ(TagStrings::makeID({"XMP", "Permits", "cc:Sharing"}),
            TagStrings::makeID({"XMP", "Permits", "cc", "Sharing"}));
  EXPECT_EQ(TagStrings::makeID({"", ""}), ":");
  const std::vector<std::string_view> parts{"AIFF", "CompressionType", "GSM "};
  EXPECT_EQ(TagStrings::makeID(parts), "AIFF:CompressionType:GSM ");
}

TEST(TagStrings, LocalizesFromTheLocalTableThenEnglishThenTheId) {
  const TagStrings strings{TagStringTable(germanExif), TagStringTable(englishExif)};
  EXPECT_EQ(strings.localize({"EXIF", "Orientation"}), "Ausrichtung");
  EXPECT_EQ(strings.localize({"EXIF", "Orientation", "2"}), "Horizontal gespiegelt");
  EXPECT_EQ(strings.localize({"EXIF", "Orientation", "1"}), "Horizontal (normal)");
  EXPECT_EQ(strings.localize({"EXIF", "Orientation", "9"}), "EXIF:Orientation:9");
  EXPECT_EQ(strings.localize({"EXIF"}), "EXIF");
  EXPECT_EQ(strings.localize({}), "");
  // A found empty text is a text: no fallback to the id.
  EXPECT_EQ(strings.localize({"ICC_Profile", "ProfileCMMType", ""}), "");
  // The id is looked up whole, however the parts cut it.
  EXPECT_EQ(strings.localize({"EXIF:Orientation", "2"}), "Horizontal gespiegelt");
  const std::array<std::string_view, 2> parts{"EXIF", "Orientation"};
  EXPECT_EQ(strings.localize(parts), "Ausrichtung");

  EXPECT_EQ(strings.localTable()->size(), 2u);
  EXPECT_EQ(strings.defaultTable().size(), 4u);
}

TEST(TagStrings, WithoutTablesEveryTextIsItsId) {
  const TagStrings english(std::nullopt, TagStringTable(englishEntries));
  EXPECT_FALSE(english.localTable());
  EXPECT_EQ(english.localize({"EXIF", "Orientation"}), "Orientation");
  EXPECT_EQ(english.localize({"EXIF", "Orientation", "1"}), "Horizontal (normal)");

  const TagStrings empty(std::nullopt, TagStringTable());
  EXPECT_EQ(empty.localize({"EXIF", "Orientation"}), "EXIF:Orientation");
  EXPECT_EQ(empty.localize({"XMP", "Permits", "cc:Sharing"}), "XMP:Permits:cc:Sharing");
}

// ETLanguage::local() is settled once per process from the language settings, so each
// language runs in a child process of its own, re-executed with only these settings.
namespace {

void setLanguageSettings(const char* locale) {
  unsetenv("LANGUAGE");
  unsetenv("LC_MESSAGES");
  unsetenv("LANG");
  setenv("LC_ALL", locale, 1);
}

// Exits 0 when the getter was asked for exactly `expected`, in that order, and the texts
// came from the right tables.
[[noreturn]] void makeStringsAndExit(const std::vector<ETLanguage>& expected,
                                     std::string_view expectedTitle) {
  std::vector<ETLanguage> asked;
  const TagStrings strings([&](ETLanguage language) {
    asked.push_back(language);
    return language == ETLanguage::german    ? TagStringTable(germanExif)
           : language == ETLanguage::english ? TagStringTable(englishExif)
                                             : TagStringTable();
  });
  const bool rightOrder = asked == expected;
  const bool rightLocal = strings.localTable().has_value() == (expected.size() == 2);
  const std::string title = strings.localize({"EXIF", "Orientation"});
  const std::string label = strings.localize({"EXIF", "Orientation", "1"});
  if (!rightOrder || !rightLocal || title != expectedTitle || label != "Horizontal (normal)") {
    std::cerr << "getter asked " << asked.size() << " times; title \"" << title << "\", label \""
              << label << "\"\n";
    std::exit(1);
  }
  std::exit(0);
}

}  // namespace

TEST(TagStringsDeathTest, GetterIsAskedOnceInEnglish) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        setLanguageSettings("en_GB.UTF-8");
        makeStringsAndExit({ETLanguage::english}, "Orientation");
      },
      testing::ExitedWithCode(0), "");
}

TEST(TagStringsDeathTest, GetterIsAskedForTheLocalLanguageFirst) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        setLanguageSettings("de_DE.UTF-8");
        makeStringsAndExit({ETLanguage::german, ETLanguage::english}, "Ausrichtung");
      },
      testing::ExitedWithCode(0), "");
}
