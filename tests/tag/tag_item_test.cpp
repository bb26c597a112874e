#include <lorvane/lorvane.hpp>

#include "tag_item_maker.hpp"

#include <gtest/gtest.h>

#include <array>
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

TEST(TagItem, LocalizesTitleAndChoicesThroughItsStrings) {
  EXPECT_EQ(orientation.localizedKey(), "Ausrichtung");
  EXPECT_EQ(orientation.localizedTitle(), "EXIF Ausrichtung");
  EXPECT_EQ(orientation.localizedChoice(0), "Horizontal (normal)");  // from English
  EXPECT_EQ(orientation.localizedChoice(1), "Horizontal gespiegelt");
  EXPECT_EQ(orientation.localizedChoice(7), "EXIF:Orientation:8");  // in no table
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

TEST(TagItem, IndexFindsTheFirstEqualEntry) {
  EXPECT_EQ(orientation.index("8"), 7u);
  EXPECT_EQ(orientation.index("1"), 0u);
  EXPECT_FALSE(orientation.index("9"));
  EXPECT_FALSE(orientation.index(""));  // and no cutting step for the empty text

  constexpr std::array<std::string_view, 7> sampleFormat{"1", "2", "3", "4", "5", "6", "1"};
  EXPECT_EQ(makeItem("EXIF:SampleFormat", sampleFormat).index("1"), 0u);

  constexpr std::array<std::string_view, 2> accented{"Caf\u00E9", "Cafe"};
  EXPECT_EQ(makeItem("X:Y", accented).index("Cafe\u0301"), 0u);  // canonically equal

  constexpr std::array<std::string_view, 8> compression{"NONE", "ACE2", "ACE8", "MAC3",
                                                        "MAC6", "sowt", "GSM ", "fl32"};
  const TagItem compressionType = makeItem("AIFF:CompressionType", compression);
  EXPECT_EQ(compressionType.index("GSM "), 6u);
  EXPECT_FALSE(compressionType.index("GSM"));  // nothing to cut at
  EXPECT_EQ(compressionType.index("GSM  "), 6u);
  EXPECT_FALSE(makeItem("EXIF:Nothing", {}).index(" "));
}

TEST(TagItem, IndexCutsTheTextBackAtBlankPointAndComma) {
  EXPECT_EQ(orientation.index("6 rotated"), 5u);
  EXPECT_EQ(orientation.index("6,rotated"), 5u);
  EXPECT_EQ(orientation.index("6 rotated, 90.5"), 5u);
  EXPECT_FALSE(orientation.index("9 rotated"));
  EXPECT_FALSE(orientation.index("rotated 6"));

  constexpr std::array<std::string_view, 5> lensTypes{"1", "2", "2.1", "4", "4.1"};
  const TagItem lensType = makeItem("Canon:LensType", lensTypes);
  EXPECT_EQ(lensType.index("2.1"), 2u);
  EXPECT_EQ(lensType.index("2.7"), 1u);
  EXPECT_EQ(lensType.index("2.1.9"), 2u);         // the longest front wins
  EXPECT_EQ(lensType.index("4.1 mm f/2.8"), 4u);  // the blank is tried before the point

  // Every separator cuts the whole text, never what an earlier one left of it.
  constexpr std::array<std::string_view, 1> blankInside{"1 x"};
  EXPECT_EQ(makeItem("X:Y", blankInside).index("1 x.y"), 0u);

  // An empty entry is found by the empty text, and by a blank cut back to nothing.
  constexpr std::array<std::string_view, 3> cmmTypes{"", "ADBE", "ACMS"};
  const TagItem cmmType = makeItem("ICC_Profile:ProfileCMMType", cmmTypes);
  EXPECT_EQ(cmmType.index(""), 0u);
  EXPECT_EQ(cmmType.index(" "), 0u);
  EXPECT_EQ(cmmType.index("ADBE x"), 1u);
  EXPECT_EQ(cmmType.index(".hidden"), 0u);
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
