// The catalogue agrees with the tool: the German titles and labels that ExifTool prints for a
// tagged file are the catalogue's.

#include "catalogue_support.hpp"

#include <outside_tool.hpp>
#include <test_support.hpp>

#include <gtest/gtest.h>

#include <map>
#include <string>

using namespace lorvane;

namespace {

// The German text of a text key as a German process shows it: German, else English.
std::string germanText(const TagItem& item, std::string_view key) {
  const auto getter = test::stringTableGetter(item.stream().rawValue());
  return TagStrings(getter(ETLanguage::german), getter(ETLanguage::english)).localize({key});
}

}  // namespace

TEST(CatalogueAndExifTool, GermanTitlesAndLabelsAreTheCatalogues) {
  const test::TemporaryFolder folder;
  const auto file = test::copyOfPlainJpeg(folder.path(), "tagged.jpg");
  test::outsideToolOutput("exiftool", {"-q",
                                       "-overwrite_original",
                                       "-EXIF:Orientation#=6",
                                       "-EXIF:Make=Canon",
                                       "-EXIF:Model=EOS",
                                       "-EXIF:ExposureTime=0.01",
                                       "-EXIF:FNumber=2.8",
                                       "-EXIF:ISO=100",
                                       "-EXIF:WhiteBalance#=1",
                                       "-EXIF:Flash#=16",
                                       "-EXIF:ExposureProgram#=2",
                                       "-EXIF:MeteringMode#=5",
                                       "-EXIF:ResolutionUnit#=2",
                                       "-XMP:Rating=3",
                                       "-XMP:Title=Titel",
                                       "-XMP:Creator=Jemand",
                                       "-XMP:ColorMode#=3",
                                       "-IPTC:Keywords=Berg",
                                       "-IPTC:City=Bern",
                                       "-IPTC:Urgency#=5",
                                       file.string()});
  const std::string printed =
      test::outsideToolOutput("exiftool", {"-j", "-l", "-lang", "de", "-G0", file.string()});
  const auto tags = nlohmann::json::parse(printed).at(0);

  std::map<std::string, int> titles;
  int labels = 0;
  for (const auto& [name, tag] : tags.items()) {
    const auto found = test::itemsByName().find(name);
    if (found == test::itemsByName().end() ||
        !test::stringTableGetter(found->second->stream().rawValue())) {
      continue;
    }
    const TagItem& item = *found->second;
    EXPECT_EQ(tag.at("desc").get<std::string>(), germanText(item, name)) << name;
    ++titles[item.stream().rawValue()];
    if (tag.contains("num") && !item.choices().empty()) {
      const std::string raw = tag["num"].is_string() ? tag["num"].get<std::string>()
                                                     : tag["num"].dump();
      ASSERT_TRUE(item.index(raw)) << name << " " << raw;
      EXPECT_EQ(tag.at("val").get<std::string>(), germanText(item, name + ":" + raw)) << name;
      ++labels;
    }
  }
  EXPECT_GE(titles["EXIF"], 10);
  EXPECT_GE(titles["XMP"], 3);
  EXPECT_GE(titles["IPTC"], 3);
  EXPECT_GE(titles["Composite"], 1);
  EXPECT_GE(labels, 8);
}
