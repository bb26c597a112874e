// The tag model's worked examples on the real catalogue items.

#include "catalogue_support.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace lorvane;

namespace {

std::vector<std::string> choicesOf(const TagItem& item) {
  return {item.choices().begin(), item.choices().end()};
}

}  // namespace

TEST(CatalogueItems, ExifOrientation) {
  const TagItem& item = TagItem::itemEXIFOrientation();
  EXPECT_EQ(item.index(), 26);
  EXPECT_EQ(item.type(), TagType::int16u);
  EXPECT_EQ(item.count(), 0);
  EXPECT_TRUE(item.isWritable());
  EXPECT_FALSE(item.isList() || item.isFlatten() || item.isBinary() || item.isUnsafe());
  EXPECT_EQ(choicesOf(item), (std::vector<std::string>{"1", "2", "3", "4", "5", "6", "7", "8"}));
  EXPECT_EQ(&item.strings(), &TagStrings::stringsEXIF());
  EXPECT_EQ(item.index("8"), 7u);
  EXPECT_EQ(item.index("9"), std::nullopt);
  EXPECT_EQ(item.index(""), std::nullopt);
  EXPECT_EQ(item.index("6 rotated"), 5u);
  EXPECT_EQ(item.index("6.rotated"), 5u);
  EXPECT_EQ(item.index("6,rotated"), 5u);
  EXPECT_EQ(item.description(), "TagItem<EXIF:Orientation>");
  const auto german = TagStrings::stringTableEXIF(ETLanguage::german);
  EXPECT_EQ(german.find("EXIF:Orientation"), "Ausrichtung");
  EXPECT_EQ(german.find("EXIF:Orientation:2"), "Horizontal gespiegelt");
  EXPECT_EQ(german.find("EXIF:Orientation:1"), std::nullopt);
}

TEST(CatalogueItems, CanonVRDCropActiveInFourLanguages) {
  const TagItem& item = TagItem::itemCanonVRDCropActive();
  EXPECT_EQ(item.index(), 0);
  EXPECT_EQ(item.type(), TagType::int32s);
  EXPECT_TRUE(item.isWritable());
  EXPECT_FALSE(item.isList() || item.isFlatten() || item.isBinary() || item.isUnsafe());
  EXPECT_EQ(choicesOf(item), (std::vector<std::string>{"0", "1"}));
  EXPECT_EQ(&item.strings(), &TagStrings::stringsCanonVRD());
  const auto table = [](ETLanguage language) {
    std::vector<std::optional<std::string_view>> texts;
    for (const char* key : {"CanonVRD:CropActive", "CanonVRD:CropActive:0", "CanonVRD:CropActive:1"}) {
      texts.push_back(TagStrings::stringTableCanonVRD(language).find(key));
    }
    return texts;
  };
  using Texts = std::vector<std::optional<std::string_view>>;
  EXPECT_EQ(table(ETLanguage::english), (Texts{"Crop Active", "No", "Yes"}));
  EXPECT_EQ(table(ETLanguage::german), (Texts{"Ausschnitt aktiviert", "Nein", "Ja"}));
  EXPECT_EQ(table(ETLanguage::french), (Texts{std::nullopt, "Non", "Oui"}));
  EXPECT_EQ(table(ETLanguage::italian), (Texts{std::nullopt, std::nullopt, "Sì"}));
}

TEST(CatalogueItems, CanonLensTypeCutsAtTheRightSeparator) {
  const TagItem& item = TagItem::itemCanonLensType();
  const auto at = [&](std::string_view choice) { return item.index(choice).value_or(9999); };
  EXPECT_EQ(item.choices()[at("2.1")], "2.1");
  EXPECT_EQ(item.choices()[at("2.unknown")], "2");
  EXPECT_EQ(item.choices()[at("4.1 with extender")], "4.1");
  EXPECT_EQ(item.choices()[at("4 and more")], "4");
  EXPECT_LT(at("2"), at("2.1"));
}

TEST(CatalogueItems, AiffCompressionTypeKeepsItsTrailingBlank) {
  const TagItem& item = TagItem::itemAIFFCompressionType();
  EXPECT_EQ(item.count(), 4);
  EXPECT_EQ(item.index("GSM "), 6u);
  EXPECT_EQ(item.index("GSM"), std::nullopt);
  EXPECT_EQ(TagStrings::stringTableAIFF(ETLanguage::english).find("AIFF:CompressionType:GSM "), "GSM");
  EXPECT_EQ(TagStrings::stringTableAIFF(ETLanguage::english).find("AIFF:CompressionType:ACE2"),
            "ACE 2-to-1");
}

TEST(CatalogueItems, XmpPermitsHoldsChoicesWithColons) {
  const TagItem& item = TagItem::itemXMPPermits();
  EXPECT_TRUE(item.isList());
  const auto sharing = item.index("cc:Sharing");
  ASSERT_TRUE(sharing);
  EXPECT_EQ(item.choices()[*sharing], "cc:Sharing");
  const std::string key = TagStrings::makeID({"XMP", "Permits", "cc:Sharing"});
  EXPECT_EQ(std::ranges::count(key, ':'), 3);
  EXPECT_EQ(TagStrings::stringTableXMP(ETLanguage::english).find(key), "Sharing");
  EXPECT_EQ(item.localizedChoice(*sharing), "Sharing");
}

TEST(CatalogueItems, IccProfileCMMTypeStartsWithTheEmptyChoice) {
  const TagItem& item = TagItem::itemICC_ProfileProfileCMMType();
  ASSERT_FALSE(item.choices().empty());
  EXPECT_EQ(item.choices()[0], "");
  EXPECT_EQ(item.index(""), 0u);
  EXPECT_EQ(item.index(" "), 0u);
  EXPECT_EQ(TagStrings::stringTableICC_Profile(ETLanguage::english).find("ICC_Profile:ProfileCMMType:"),
            "");
  EXPECT_EQ(item.localizedChoice(0), "");
}

TEST(CatalogueItems, ExifSampleFormatRepeatsValues) {
  const TagItem& item = TagItem::itemEXIFSampleFormat();
  const auto ones = std::ranges::count(item.choices(), "1");
  EXPECT_GT(ones, 1);
  EXPECT_EQ(item.index("1"), 0u);
  const auto pairs = item.makeFilteredChoices();
  ASSERT_EQ(pairs.size(), item.choices().size());
  EXPECT_EQ(std::ranges::count(pairs, std::pair<std::string, std::string>("1", "Unsigned")), ones);
}

TEST(CatalogueItems, RowsWithoutAListingEntryAreTitledByRule) {
  for (const TagItem* item : {&TagItem::itemMetaVesperineSize(), &TagItem::itemQuickTimeVesperineSize()}) {
    EXPECT_EQ(item->type(), TagType::int16u);
    EXPECT_TRUE(item->choices().empty());
    EXPECT_EQ(item->strings().defaultTable().find(item->name().rawValue()), "Vesperine Size");
  }
}
