// String tables and their lookup. The tables a process picks by its language are seen at work
// in the catalogue's language tests, which start children in several languages.
#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <array>
#include <memory>

using namespace lorvane;

namespace {

// A slice of the stream "EXIF". German has no entry whose text equals the English one.
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
// The English slice as constant data sorted by key, as the catalogue holds its tables.
constexpr std::array<TagStringTable::Entry, 4> englishEntries{{
    {"EXIF:Orientation", "Orientation"},
    {"EXIF:Orientation:1", "Horizontal (normal)"},
    {"EXIF:Orientation:2", "Mirror horizontal"},
    {"ICC_Profile:ProfileCMMType:", ""},
}};
// The same slice with its strings as places in one text, as the generated catalogue holds it.
constexpr char englishText[] =
    "EXIF:OrientationOrientationEXIF:Orientation:1Horizontal (normal)"
    "EXIF:Orientation:2Mirror horizontalICC_Profile:ProfileCMMType:";
constexpr std::array<TagStringTable::TextEntry, 4> englishTextEntries{{
    {{0, 16}, {16, 11}},
    {{27, 18}, {45, 19}},
    {{64, 18}, {82, 17}},
    {{99, 27}, {126, 0}},
}};

}  // namespace

TEST(TagStringTable, ConstantEntriesAndMapsAnswerAlike) {
  for (const TagStringTable& table : {TagStringTable(englishEntries), TagStringTable(englishExif),
                                      TagStringTable(englishText, englishTextEntries)}) {
    EXPECT_EQ(table.size(), 4u);
    EXPECT_EQ(table.find("EXIF:Orientation"), "Orientation");
    EXPECT_EQ(table.find("EXIF:Orientation:2"), "Mirror horizontal");
    EXPECT_EQ(table.find("ICC_Profile:ProfileCMMType:"), "");  // found, and empty
    for (const std::string_view missing : {"EXIF:Orientation:", "EXIF", "", "ZZZ"}) {
      EXPECT_FALSE(table.find(missing)) << missing;
    }
  }
  EXPECT_TRUE(TagStringTable().empty());
}

TEST(TagStrings, KeepTheirOwnCopyOfACallersMap) {
  auto german = std::make_unique<TagStringTable::Map>(germanExif);
  TagStringTable::Map english = englishExif;
  const TagStrings strings{TagStringTable(*german), TagStringTable(english)};
  (*german)["EXIF:Orientation"] = "changed";
  english.clear();
  german.reset();
  EXPECT_EQ(strings.localize({"EXIF", "Orientation"}), "Ausrichtung");
  EXPECT_EQ(strings.localize({"EXIF", "Orientation", "1"}), "Horizontal (normal)");
}

TEST(TagStrings, LocalizesFromTheLocalTableThenEnglishThenTheId) {
  const TagStrings strings{TagStringTable(germanExif), TagStringTable(englishExif)};
  EXPECT_EQ(strings.localize({"EXIF", "Orientation"}), "Ausrichtung");
  EXPECT_EQ(strings.localize({"EXIF", "Orientation", "2"}), "Horizontal gespiegelt");
  EXPECT_EQ(strings.localize({"EXIF", "Orientation", "1"}), "Horizontal (normal)");
  EXPECT_EQ(strings.localize({"EXIF", "Orientation", "9"}), "EXIF:Orientation:9");
  EXPECT_EQ(strings.localize({"EXIF"}), "EXIF");
  EXPECT_EQ(strings.localize({}), "");
  EXPECT_EQ(strings.localize({"ICC_Profile", "ProfileCMMType", ""}), "");  // no fallback
  const std::array<std::string_view, 3> parts{"EXIF:Orientation", "2"};
  EXPECT_EQ(strings.localize(std::span(parts.data(), 2)), "Horizontal gespiegelt");

  const TagStrings englishOnly{std::nullopt, TagStringTable(englishEntries)};
  EXPECT_FALSE(englishOnly.localTable());
  EXPECT_EQ(englishOnly.localize({"EXIF", "Orientation"}), "Orientation");
  const TagStrings none{std::nullopt, TagStringTable()};
  EXPECT_EQ(none.localize({"XMP", "Permits", "cc:Sharing"}), "XMP:Permits:cc:Sharing");
  // Ids are joined with colons and escape nothing.
  EXPECT_EQ(TagStrings::makeID({"XMP", "Permits", "cc:Sharing"}),
            TagStrings::makeID({"XMP", "Permits", "cc", "Sharing"}));
}
