#include <lorvane/lorvane.hpp>

#include "catalogue/tag_item_maker.hpp"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <unordered_set>
#include <vector>

using namespace lorvane;
using detail::TagItemMaker;

namespace {

const TagStringTable::Map english{
    {"EXIF:Orientation", "Orientation"},
    {"EXIF:Orientation:1", "Horizontal (normal)"},
    {"EXIF:Orientation:2", "Mirror horizontal"},
    {"EXIF:Orientation:6", "Rotate 90 CW"},
    {"EXIF:SampleFormat:1", "Unsigned"},
    {"EXIF:SampleFormat:2", "Signed"},
    {"XMP:Permits", "Permits"},
    {"XMP:Permits:cc:Sharing", "Sharing"},
};
const TagStringTable::Map german{
    {"EXIF:Orientation", "Ausrichtung"},
    {"EXIF:Orientation:2", "Horizontal gespiegelt"},
    {"EXIF:SampleFormat:2", "Vorzeichenbehaftet"},
};
const TagStrings germanStrings{TagStringTable(german), TagStringTable(english)};
const TagStrings englishStrings{std::nullopt, TagStringTable(english)};

TagItem makeItem(std::string_view rawName, TagItem::Choices choices,
                 const TagStrings& strings = germanStrings) {
  return TagItemMaker::make(
      {.name = TagName::parse(rawName).value(), .choices = choices, .strings = &strings});
}

constexpr std::array<std::string_view, 8> orientationChoices{"1", "2", "3", "4",
                                                             "5", "6", "7", "8"};
const TagItem orientation = TagItemMaker::make({.index = 26,
                                                .name = TagName("EXIF", "Orientation"),
                                                .type = TagType::int16u,
                                                .isWritable = true,
                                                .choices = orientationChoices,
                                                .strings = &germanStrings});

}  // namespace

// The real catalogue's items show local texts with English behind them in a German process
// (catalogue_languages_test.cpp); these are the texts that no table has.
TEST(TagItem, LocalizesTitleAndChoicesThroughItsStrings) {
  EXPECT_EQ(orientation.localizedChoice(7), "EXIF:Orientation:8");
  EXPECT_EQ(makeItem("EXIF:Nothing", {}).localizedTitle(), "EXIF EXIF:Nothing");

  constexpr std::array<std::string_view, 2> permits{"cc:Distribution", "cc:Sharing"};
  const TagItem withColons = makeItem("XMP:Permits", permits);
  EXPECT_EQ(withColons.localizedChoice(1), "Sharing");
  EXPECT_EQ(withColons.localizedChoice(0), "XMP:Permits:cc:Distribution");
  EXPECT_EQ(withColons.index("cc:Sharing"), 1u);
}

TEST(TagItemDeathTest, ChoiceOutsideTheListIsTheCallersError) {
  // A debug build stops; any other build never reads past the list.
  EXPECT_DEBUG_DEATH(
      {
        const std::string label = orientation.localizedChoice(8);
        EXPECT_EQ(label, "");
      },
      "position outside choices");
}

TEST(TagItem, IndexFindsTheFirstEqualEntryElseCutsTheTextBackAtBlankPointOrComma) {
  using Choices = std::vector<std::string_view>;
  const Choices orientations(orientationChoices.begin(), orientationChoices.end());
  const Choices lensTypes{"1", "2", "2.1", "4", "4.1"};
  const Choices compressions{"NONE", "ACE2", "ACE8", "MAC3", "MAC6", "sowt", "GSM ", "fl32"};
  const Choices cmmTypes{"", "ADBE", "ACMS"};
  const Choices repeated{"1", "2", "3", "4", "5", "6", "1"};
  const Choices accented{"Caf\u00E9", "Cafe"};
  const Choices blankInside{"1 x"};
  const Choices none;
  struct Case {
    const Choices& choices;
    std::string_view text;
    std::optional<std::size_t> index;
  };
  for (const auto& [choices, text, index] : {
           Case{orientations, "8", 7},
           Case{orientations, "9", std::nullopt},
           Case{orientations, "", std::nullopt},  // and no cutting step for the empty text
           Case{repeated, "1", 0},
           Case{accented, "Cafe\u0301", 0},  // canonically equal
           Case{compressions, "GSM ", 6},
           Case{compressions, "GSM", std::nullopt},  // nothing to cut at
           Case{compressions, "GSM  ", 6},
           Case{none, " ", std::nullopt},
           Case{orientations, "6 rotated", 5},
           Case{orientations, "6,rotated", 5},
           Case{orientations, "9 rotated", std::nullopt},
           Case{lensTypes, "2.1", 2},
           Case{lensTypes, "2.7", 1},
           Case{lensTypes, "2.1.9", 2},         // the longest front wins
           Case{lensTypes, "4.1 mm f/2.8", 4},  // the blank is tried before the point
           // Every separator cuts the whole text, never what an earlier one left of it.
           Case{blankInside, "1 x.y", 0},
           // An empty entry is found by the empty text, and by a blank cut back to nothing.
           Case{cmmTypes, "", 0},
           Case{cmmTypes, " ", 0},
           Case{cmmTypes, ".hidden", 0},
       }) {
    SCOPED_TRACE(text);
    EXPECT_EQ(makeItem("X:Y", choices).index(text), index);
  }
}

TEST(TagItem, FilteredChoicesPairEveryEntryWithItsLabel) {
  constexpr std::array<std::string_view, 3> sampleFormat{"2", "1", "2"};
  const auto pairs = makeItem("EXIF:SampleFormat", sampleFormat).makeFilteredChoices();
  using Pairs = std::vector<std::pair<std::string, std::string>>;
  EXPECT_EQ(pairs,
            (Pairs{{"2", "Vorzeichenbehaftet"}, {"1", "Unsigned"}, {"2", "Vorzeichenbehaftet"}}));
  EXPECT_TRUE(makeItem("EXIF:Nothing", {}).makeFilteredChoices().empty());
}

TEST(TagItem, EqualityOrderAndHashGoByNameAlone) {
  const TagItem sameName = TagItemMaker::make({.name = TagName("EXIF", "Orientation"),
                                               .count = 4,
                                               .isList = true,
                                               .isFlatten = true,
                                               .isBinary = true,
                                               .isUnsafe = true,
                                               .strings = &englishStrings});
  EXPECT_EQ(sameName, orientation);
  EXPECT_EQ(std::hash<TagItem>{}(orientation), std::hash<TagName>{}(orientation.name()));
  EXPECT_TRUE(std::unordered_set<TagItem>{orientation}.contains(sameName));
  EXPECT_LT(makeItem("Canon:Zoom", {}), orientation);
  EXPECT_LT(makeItem("QuickTime:GPSCoordinates", {}), makeItem("QuickTime:iTunSMPB", {}));
}
