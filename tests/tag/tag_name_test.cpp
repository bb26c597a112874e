#include <lorvane/json.hpp>
#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <unordered_set>
#include <vector>

using namespace lorvane;
using nlohmann::json;

namespace {

TagName parsed(std::string_view rawName) { return TagName::parse(rawName).value(); }

}  // namespace

TEST(TagName, ParsesAtTheFirstColonAndTrimsBlanksAndTabs) {
  EXPECT_EQ(parsed(" \tEXIF \u00A0: Orientation\u3000").rawValue(), "EXIF:Orientation");
  EXPECT_EQ(parsed("EXIF:Orientation:1").key().rawValue(), "Orientation:1");
  EXPECT_EQ(parsed("EXIF:Orientation\n").key().rawValue(), "Orientation\n");  // not horizontal

  EXPECT_FALSE(TagName::parse("Orientation"));
  EXPECT_FALSE(TagName::fromRawValue(""));

  EXPECT_TRUE(parsed(":").isEmpty());
  EXPECT_FALSE(parsed("EXIF:").isEmpty());
  EXPECT_EQ(parsed(" :Orientation").stream(), TagStream::empty);
}

TEST(TagName, TwoStringsAreStoredUnchanged) {
  const TagName name("EXIF:Orientation", "1");
  EXPECT_EQ(name.rawValue(), "EXIF:Orientation:1");
  EXPECT_NE(parsed(name.rawValue()), name);
  EXPECT_NE(parsed(" EXIF:Orientation "), TagName(" EXIF", "Orientation "));
  EXPECT_EQ(TagName(TagStream("EXIF"), TagKey("Orientation")), parsed("EXIF:Orientation"));
}

TEST(TagName, SafeValuesMendHashAndHyphen) {
  EXPECT_EQ(TagStream("SRF#").safeValue(), "SRF_");
  EXPECT_EQ(parsed("CanonCustom:Shutter-AELock").safeValue(), "CanonCustomShutter_AELock");
  // The same safe value does not make the same name.
  EXPECT_EQ(TagName("AB", "C").safeValue(), TagName("A", "BC").safeValue());
  EXPECT_NE(TagName("AB", "C"), TagName("A", "BC"));
  EXPECT_NE(TagKey("AF#On"), TagKey("AF-On"));
}

TEST(TagName, SortsByStreamThenKeyInCodePointOrder) {
  std::vector<TagName> names{parsed("QuickTime:iTunSMPB"),
                             parsed("EXIF:Orientation"),
                             parsed("QuickTime:GPSCoordinates"),
                             parsed("Audible:iTunesMediaType"),
                             parsed("APP2:X"),
                             parsed("APP15:X"),
                             parsed("AdobeDNG:X"),
                             TagName::empty};
  std::ranges::sort(names);
  std::vector<std::string> raw;
  std::ranges::transform(names, std::back_inserter(raw), &TagName::rawValue);
  EXPECT_EQ(raw, (std::vector<std::string>{":", "APP15:X", "APP2:X", "AdobeDNG:X",
                                           "Audible:iTunesMediaType", "EXIF:Orientation",
                                           "QuickTime:GPSCoordinates", "QuickTime:iTunSMPB"}));
}

TEST(TagName, CanonicallyEquivalentTextsAreEqualAndHashAlike) {
  const TagKey composed("Caf\u00E9");     // é as one code point
  const TagKey decomposed("Cafe\u0301");  // e and a combining acute accent
  EXPECT_EQ(composed, decomposed);
  EXPECT_EQ(std::hash<TagKey>{}(composed), std::hash<TagKey>{}(decomposed));
  const std::unordered_set<TagName> names{TagName("M\u00E4rz", composed.rawValue())};
  EXPECT_TRUE(names.contains(TagName("Ma\u0308rz", decomposed.rawValue())));
  EXPECT_LT(TagKey("Caff"), decomposed);  // U+00E9 comes after "f"
  EXPECT_NE(TagKey("orientation"), TagKey("Orientation"));
  EXPECT_NE(TagKey("\xff"), TagKey("\xfe"));  // no UTF-8: the bytes stand for themselves

  // ASCII hashes exactly as the plain string.
  EXPECT_EQ(std::hash<TagStream>{}(TagStream("EXIF")), std::hash<std::string>{}("EXIF"));
}

TEST(TagNameJson, IsOneBareString) {
  EXPECT_EQ(json(parsed("EXIF:Orientation")), json("EXIF:Orientation"));
  EXPECT_EQ(json(TagStream("SRF#")), json("SRF#"));
  EXPECT_EQ(json(" EXIF : Orientation ").get<TagName>(), parsed("EXIF:Orientation"));
  EXPECT_EQ(json(" Any text ").get<TagKey>().rawValue(), " Any text ");
  EXPECT_EQ(json::parse(R"([":"])").get<std::vector<TagName>>(), std::vector{TagName::empty});

  for (const char* text : {"Orientation", ""}) {
    try {
      (void)json(text).get<TagName>();
      ADD_FAILURE() << "read a name from \"" << text << "\"";
    } catch (const TagName::CodingError& error) {
      EXPECT_EQ(error.value(), TagName::CodingError::Case::notParsableRawValue);
      EXPECT_STREQ(error.what(), "notParsableRawValue");
    }
  }
  EXPECT_THROW((void)json(42).get<TagName>(), json::type_error);
}
