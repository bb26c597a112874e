#include <lorvane/json.hpp>
#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <unordered_set>
#include <vector>

using namespace lorvane;
using nlohmann::json;

namespace {

TagName parsed(std::string_view rawName) { return TagName::parse(rawName).value(); }

}  // namespace

TEST(TagName, ParsesAtTheFirstColonAndTrimsBlanksAndTabs) {
  const TagName name = parsed("EXIF:Orientation");
  EXPECT_EQ(name.stream().rawValue(), "EXIF");
  EXPECT_EQ(name.key().rawValue(), "Orientation");
  EXPECT_EQ(name.rawValue(), "EXIF:Orientation");

  EXPECT_EQ(parsed(" \tEXIF \u00A0: Orientation\u3000"), name);
  EXPECT_EQ(parsed(" EXIF : Orientation ").rawValue(), "EXIF:Orientation");

  const TagName withValue = parsed("EXIF:Orientation:1");
  EXPECT_EQ(withValue.stream().rawValue(), "EXIF");
  EXPECT_EQ(withValue.key().rawValue(), "Orientation:1");
  EXPECT_EQ(TagName::fromRawValue("EXIF:Orientation:1"), withValue);

  // Line breaks are not horizontal white space.
  EXPECT_EQ(parsed("EXIF:Orientation\n").key().rawValue(), "Orientation\n");
}

TEST(TagName, TextWithoutColonIsNoName) {
  EXPECT_FALSE(TagName::parse("Orientation"));
  EXPECT_FALSE(TagName::parse(""));
  EXPECT_FALSE(TagName::fromRawValue("EXIF Orientation"));
}

TEST(TagName, EmptyPartsAreNames) {
  const TagName colon = parsed(":");
  EXPECT_EQ(colon, TagName::empty);
  EXPECT_TRUE(colon.isEmpty());
  EXPECT_EQ(TagName::empty.rawValue(), ":");
  EXPECT_EQ(TagName::empty.description(), ":");

  const TagName noKey = parsed("EXIF:");
  EXPECT_TRUE(noKey.key().isEmpty());
  EXPECT_FALSE(noKey.isEmpty());
  const TagName noStream = parsed(" :Orientation");
  EXPECT_TRUE(noStream.stream().isEmpty());
  EXPECT_FALSE(noStream.isEmpty());
  EXPECT_EQ(noStream.stream(), TagStream::empty);
}

TEST(TagName, TwoStringsAreStoredUnchanged) {
  const TagName name("EXIF:Orientation", "1");
  EXPECT_EQ(name.stream().rawValue(), "EXIF:Orientation");
  EXPECT_EQ(name.rawValue(), "EXIF:Orientation:1");
  EXPECT_NE(parsed(name.rawValue()), name);

  const TagName blanks(" EXIF", "Orientation ");
  EXPECT_EQ(blanks.rawValue(), " EXIF:Orientation ");
  EXPECT_NE(parsed(blanks.rawValue()), blanks);
  EXPECT_EQ(TagName(TagStream("EXIF"), TagKey("Orientation")), TagName("EXIF", "Orientation"));
}

TEST(TagName, SafeValuesMendHashAndHyphen) {
  EXPECT_EQ(TagStream("SRF#").safeValue(), "SRF_");
  EXPECT_EQ(TagKey("A-B#C:D").safeValue(), "A_B_C:D");
  EXPECT_EQ(parsed("CanonCustom:Shutter-AELock").safeValue(), "CanonCustomShutter_AELock");

  // The same safe value does not make the same name.
  const TagName joinedOneWay("AB", "C");
  const TagName joinedOtherWay("A", "BC");
  EXPECT_EQ(joinedOneWay.safeValue(), joinedOtherWay.safeValue());
  EXPECT_NE(joinedOneWay, joinedOtherWay);
  EXPECT_EQ(TagKey("AF#On").safeValue(), TagKey("AF-On").safeValue());
  EXPECT_NE(TagKey("AF#On"), TagKey("AF-On"));
}

TEST(TagName, SortsByStreamThenKeyInCodePointOrder) {
  std::vector<TagName> names{
      parsed("QuickTime:iTunSMPB"), parsed("EXIF:Orientation"),
      parsed("QuickTime:GPSCoordinates"), parsed("Audible:iTunesMediaType"),
      parsed("APP2:X"), parsed("APP15:X"), parsed("AdobeDNG:X"), TagName::empty,
  };
  std::ranges::sort(names);
  std::vector<std::string> raw;
  for (const TagName& name : names) {
    raw.push_back(name.rawValue());
  }
  EXPECT_EQ(raw, (std::vector<std::string>{":", "APP15:X", "APP2:X", "AdobeDNG:X",
                                           "Audible:iTunesMediaType", "EXIF:Orientation",
                                           "QuickTime:GPSCoordinates", "QuickTime:iTunSMPB"}));

  EXPECT_LT(TagStream::empty, TagStream("A"));
  EXPECT_EQ(TagStream::empty, TagStream(""));
  EXPECT_TRUE(TagStream("Z") < TagStream("a"));
  EXPECT_TRUE(TagKey("b") >= TagKey("a"));
  EXPECT_TRUE(TagKey("a") <= TagKey("a"));
}

TEST(TagName, CanonicallyEquivalentTextsAreEqualAndHashAlike) {
  const TagKey composed("Caf\u00E9");     // é as one code point
  const TagKey decomposed("Cafe\u0301");  // e and a combining acute accent
  EXPECT_EQ(composed, decomposed);
  EXPECT_EQ(composed <=> decomposed, std::strong_ordering::equal);
  EXPECT_EQ(std::hash<TagKey>{}(composed), std::hash<TagKey>{}(decomposed));
  EXPECT_EQ(TagName("Ma\u0308rz", "X"), TagName("M\u00E4rz", "X"));
  EXPECT_EQ(std::hash<TagName>{}(TagName("Ma\u0308rz", "X")),
            std::hash<TagName>{}(TagName("M\u00E4rz", "X")));

  std::unordered_set<TagName> names{TagName("EXIF", composed.rawValue())};
  EXPECT_TRUE(names.contains(TagName("EXIF", decomposed.rawValue())));

  // Order follows code points after normalisation: "é" (U+00E9) comes after "f".
  EXPECT_LT(TagKey("Caff"), decomposed);
  // Letter case counts and no locale folds it.
  EXPECT_NE(TagKey("orientation"), TagKey("Orientation"));
  // Bytes that are no UTF-8 stand for themselves.
  EXPECT_NE(TagKey("\xff"), TagKey("\xfe"));
  EXPECT_EQ(TagKey("\xff"), TagKey("\xff"));
}

TEST(TagName, AsciiHashesAsThePlainString) {
  EXPECT_EQ(std::hash<TagStream>{}(TagStream("EXIF")), std::hash<std::string>{}("EXIF"));
  EXPECT_EQ(std::hash<TagKey>{}(TagKey("Orientation")), std::hash<std::string_view>{}("Orientation"));
}

TEST(TagName, PrintsItsRawValue) {
  std::ostringstream out;
  out << parsed("EXIF:Orientation") << ' ' << TagStream("SRF#") << ' ' << TagKey("Model");
  EXPECT_EQ(out.str(), "EXIF:Orientation SRF# Model");
  EXPECT_EQ(TagStream("IPTC").description(), "IPTC");
}

TEST(TagNameJson, IsOneBareString) {
  const json written = parsed("EXIF:Orientation");
  EXPECT_EQ(written, json("EXIF:Orientation"));
  EXPECT_EQ(json(TagStream("SRF#")), json("SRF#"));
  EXPECT_EQ(json(TagKey("a:b")), json("a:b"));

  EXPECT_EQ(json(" EXIF : Orientation ").get<TagName>(), parsed("EXIF:Orientation"));
  EXPECT_EQ(json(" Any text ").get<TagStream>().rawValue(), " Any text ");
  EXPECT_EQ(json("").get<TagKey>(), TagKey::empty);

  const auto names = json::parse(R"(["EXIF:Orientation", ":"])").get<std::vector<TagName>>();
  EXPECT_EQ(names, (std::vector<TagName>{parsed("EXIF:Orientation"), TagName::empty}));
}

TEST(TagNameJson, TextWithoutColonIsACodingError) {
  for (const char* text : {"Orientation", ""}) {
    try {
      (void)json(text).get<TagName>();
      ADD_FAILURE() << "read a name from \"" << text << "\"";
    } catch (const TagName::CodingError& error) {
      EXPECT_EQ(error.value(), TagName::CodingError::Case::notParsableRawValue);
      EXPECT_STREQ(error.what(), "notParsableRawValue");
      EXPECT_EQ(error, TagName::CodingError());
    }
  }
  // A value that is no string is the JSON library's own error.
  EXPECT_THROW((void)json(42).get<TagName>(), json::type_error);
  EXPECT_THROW((void)json::array().get<TagStream>(), json::type_error);
}
