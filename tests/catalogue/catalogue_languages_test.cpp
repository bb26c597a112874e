// The catalogue in the user's language. A process has one language for its whole life, so
// each language runs this program again in a child whose environment picks it; the tests
// named DISABLED_In...Process are the children's part and run only that way.

#include "catalogue_support.hpp"
#include "outside_tool.hpp"

#include <gtest/gtest.h>

#include <string>

using namespace lorvane;

namespace {

// Runs the tests matching `filter` in a child whose locale variables are exactly `locale`.
void expectChildPasses(const std::string& filter, const test::EnvironmentChanges& locale) {
  test::EnvironmentChanges changes{{"LANGUAGE", std::nullopt},
                                   {"LC_ALL", std::nullopt},
                                   {"LC_MESSAGES", std::nullopt},
                                   {"LANG", std::nullopt}};
  for (const auto& [name, value] : locale) {
    changes[name] = value;
  }
  const std::string output =
      test::programOutput(std::filesystem::read_symlink("/proc/self/exe"),
                          {"--gtest_filter=" + filter, "--gtest_also_run_disabled_tests"}, changes);
  EXPECT_NE(output.find("[       OK ]"), std::string::npos) << output;
  EXPECT_EQ(output.find("[  FAILED  ]"), std::string::npos) << output;
}

}  // namespace

TEST(CatalogueLanguages, LocalizesInTheProcessLanguage) {
  expectChildPasses("DISABLED_InGermanProcess.*", {{"LANG", "de_DE.UTF-8"}});
  expectChildPasses("DISABLED_InJapaneseProcess.*",
                    {{"LANG", "en_US.UTF-8"}, {"LANGUAGE", "ja:en"}});
  expectChildPasses("DISABLED_InEnglishProcess.*", {{"LC_ALL", "en_GB.UTF-8"}});
}

TEST(DISABLED_InGermanProcess, LocalTextsWithEnglishBehindThem) {
  ASSERT_EQ(ETLanguage::local(), ETLanguage::german);
  const TagItem& orientation = TagItem::itemEXIFOrientation();
  EXPECT_EQ(orientation.localizedKey(), "Ausrichtung");
  EXPECT_EQ(orientation.localizedTitle(), "EXIF Ausrichtung");
  EXPECT_EQ(orientation.localizedChoice(0), "Horizontal (normal)");
  EXPECT_EQ(orientation.localizedChoice(1), "Horizontal gespiegelt");

  const TagItem& crop = TagItem::itemCanonVRDCropActive();
  EXPECT_EQ(crop.localizedKey(), "Ausschnitt aktiviert");
  EXPECT_EQ(crop.makeFilteredChoices(),
            (std::vector<std::pair<std::string, std::string>>{{"0", "Nein"}, {"1", "Ja"}}));

  // Any other language on request, the process's own staying as it is.
  struct Case {
    ETLanguage language;
    std::string key, title, choice0, choice1;
  };
  for (const auto& c : std::vector<Case>{{ETLanguage::english, "Orientation", "EXIF Orientation",
                                          "Horizontal (normal)", "Mirror horizontal"},
                                         {ETLanguage::japanese, "画像の向き", "EXIF 画像の向き",
                                          "水平（標準）", "Mirror horizontal"},
                                         {ETLanguage::german, "Ausrichtung", "EXIF Ausrichtung",
                                          "Horizontal (normal)", "Horizontal gespiegelt"}}) {
    SCOPED_TRACE(c.language.rawValue());
    EXPECT_EQ(orientation.localizedKey(c.language), c.key);
    EXPECT_EQ(orientation.localizedTitle(c.language), c.title);
    EXPECT_EQ(orientation.localizedChoice(0, c.language), c.choice0);
    EXPECT_EQ(orientation.localizedChoice(1, c.language), c.choice1);
  }
  EXPECT_EQ(crop.localizedChoice(1, ETLanguage::english), "Yes");
  EXPECT_EQ(orientation.localizedKey(), "Ausrichtung");
}

TEST(DISABLED_InJapaneseProcess, StreamsWithoutAJapaneseTableShowEnglish) {
  ASSERT_EQ(ETLanguage::local(), ETLanguage::japanese);
  const TagItem& orientation = TagItem::itemEXIFOrientation();
  EXPECT_EQ(orientation.localizedKey(), "画像の向き");
  EXPECT_EQ(orientation.localizedChoice(0), "水平（標準）");
  EXPECT_EQ(orientation.localizedChoice(1), "Mirror horizontal");
  for (const TagItem* item : TagItem::allStreamsAPP0()) {
    ASSERT_TRUE(item->strings().localTable());
    EXPECT_TRUE(item->strings().localTable()->empty());
    EXPECT_EQ(item->localizedKey(),
              item->strings().defaultTable().find(item->name().rawValue()).value_or("?"));
  }
}

TEST(DISABLED_InEnglishProcess, NoLocalTable) {
  ASSERT_EQ(ETLanguage::local(), ETLanguage::english);
  const TagItem& orientation = TagItem::itemEXIFOrientation();
  EXPECT_FALSE(orientation.strings().localTable());
  EXPECT_EQ(orientation.localizedKey(), "Orientation");
  EXPECT_EQ(orientation.localizedTitle(), "EXIF Orientation");
  EXPECT_EQ(orientation.localizedChoice(0), "Horizontal (normal)");
  EXPECT_EQ(TagItem::itemCanonVRDCropActive().localizedChoice(1), "Yes");
}
