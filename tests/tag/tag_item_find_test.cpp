// Reaching a catalogue tag by name: as the application writes it, and as ExifTool prints it.

#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using namespace lorvane;

TEST(ToolGroups, MakerNotesGoToTheirMakerAndOthersToFamilyZero) {
  EXPECT_EQ(toolTagName("EXIF:IFD0:Orientation"), TagName("EXIF", "Orientation"));
  EXPECT_EQ(toolTagName("MakerNotes:Canon:LensType"), TagName("Canon", "LensType"));
  EXPECT_EQ(toolTagName("XMP:XMP-dc:Title"), TagName("XMP", "Title"));
  EXPECT_EQ(toolTagName("File:FileType"), TagName("File", "FileType"));
  EXPECT_EQ(toolGroupStream("MakerNotes", ""), TagStream("MakerNotes"));
  EXPECT_FALSE(toolTagName("SourceFile"));
  EXPECT_FALSE(toolTagName("EXIF::Orientation"));
  EXPECT_FALSE(toolTagName("EXIF:IFD0:"));
}

TEST(FindingTags, ByNameGivesTheCatalogueConstant) {
  EXPECT_EQ(TagItem::find(TagName("EXIF", "Orientation")), &TagItem::itemEXIFOrientation());
  EXPECT_EQ(TagItem::find(TagName("SRF#", "SRFDataOffset")), &TagItem::itemSRF_SRFDataOffset());
  EXPECT_EQ(TagItem::find(TagName("NikonCustom", "AF-OnButton")),
            &TagItem::itemNikonCustomAF_OnButton());
  EXPECT_EQ(TagItem::find(TagName("NikonCustom", "AFOnButton")),
            &TagItem::itemNikonCustomAFOnButton());
  // Canonically equivalent text names the same tag: the Kelvin sign is a "K".
  EXPECT_EQ(TagItem::find(TagName("IPTC", "\u212Aeywords")), &TagItem::itemIPTCKeywords());

  EXPECT_EQ(TagItem::find(TagName("EXIF", "NoSuchTag")), nullptr);
  EXPECT_EQ(TagItem::find(TagName("NoSuchStream", "Orientation")), nullptr);
  EXPECT_EQ(TagItem::find(TagName("IFD0", "Orientation")), nullptr);  // a stream without tags
  EXPECT_EQ(TagItem::find(TagName::empty), nullptr);
  EXPECT_EQ(TagItem::find(TagName("exif", "orientation")), nullptr);  // names are case-exact
}

TEST(FindingTags, ByToolGroupsInTheStreamThatHasTheTag) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"MakerNotes:Canon:LensType", "Canon"},        // maker notes go to their maker
      {"APP6:GoPro:DeviceName", "GoPro"},            // a segment named by a maker
      {"QuickTime:Canon:CanonModelID", "Canon"},     // Canon tags in a CR3's boxes
      {"APP0:CanonRaw:CanonModelID", "CanonRaw"},    // CIFF inside a JPEG
      {"QuickTime:Track1:ImageWidth", "QuickTime"},  // a family-1 group that is no stream
      {"EXIF:IFD0:Orientation", "EXIF"},             // nor one with tags
      {"IPTC:\u212Aeywords", "IPTC"}};               // a Kelvin sign is a "K" here too
  for (const auto& [groupedName, stream] : cases) {
    const TagItem* item = findToolTag(groupedName);
    ASSERT_NE(item, nullptr) << groupedName;
    EXPECT_EQ(item->stream().rawValue(), stream) << groupedName;
  }
  EXPECT_EQ(findToolTag("MakerNotes:NoSuchMaker:LensType"), nullptr);
  EXPECT_EQ(findToolTag("SourceFile"), nullptr);
}

TEST(FindingTags, EveryCatalogueItemIsFoundAsItself) {
  for (const TagItem* item : TagItem::allCases()) {
    ASSERT_EQ(TagItem::find(item->name()), item) << item->description();
  }
}

}  // namespace
