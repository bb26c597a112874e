// Rows of the real catalogue whose texts take an unusual road through the tables.

#include "catalogue_support.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace lorvane;

TEST(CatalogueItems, CanonVRDCropActiveInFourLanguages) {
  const TagItem& item = TagItem::itemCanonVRDCropActive();
  EXPECT_EQ(&item.strings(), &TagStrings::stringsCanonVRD());
  using Texts = std::vector<std::optional<std::string_view>>;
  const auto table = [](ETLanguage language) {
    Texts texts;
    for (const char* key :
         {"CanonVRD:CropActive", "CanonVRD:CropActive:0", "CanonVRD:CropActive:1"}) {
      texts.push_back(TagStrings::stringTableCanonVRD(language).find(key));
    }
    return texts;
  };
  EXPECT_EQ(table(ETLanguage::english), (Texts{"Crop Active", "No", "Yes"}));
  EXPECT_EQ(table(ETLanguage::german), (Texts{"Ausschnitt aktiviert", "Nein", "Ja"}));
  EXPECT_EQ(table(ETLanguage::french), (Texts{std::nullopt, "Non", "Oui"}));
  EXPECT_EQ(table(ETLanguage::italian), (Texts{std::nullopt, std::nullopt, "Sì"}));
}

TEST(CatalogueItems, ChoicesWithColonsOrNothingKeepTheirLabels) {
  const TagItem& permits = TagItem::itemXMPPermits();
  const auto sharing = permits.index("cc:Sharing");
  ASSERT_TRUE(sharing);
  EXPECT_EQ(permits.localizedChoice(*sharing), "Sharing");
  const TagItem& cmm = TagItem::itemICC_ProfileProfileCMMType();
  EXPECT_EQ(cmm.index(""), 0u);
  EXPECT_EQ(cmm.localizedChoice(0), "");
}

TEST(CatalogueItems, RowsThatTheListingNamesOtherwiseTakeItsTranslations) {
  // ExifTool calls them MetaImageSize; the catalogue's title is its own, the French one the tool's.
  for (const TagItem* item :
       {&TagItem::itemMetaVesperineSize(), &TagItem::itemQuickTimeVesperineSize()}) {
    EXPECT_EQ(item->type(), TagType::int16u);
    const std::string key = item->name().rawValue();
    EXPECT_EQ(item->strings().defaultTable().find(key), "Vesperine Size");
    const auto stringTable = test::stringTableGetter(item->stream().rawValue());
    EXPECT_EQ(stringTable(ETLanguage::french).find(key), "Taille méta de l'image");
    EXPECT_EQ(stringTable(ETLanguage::german).find(key), std::nullopt);
  }
}
