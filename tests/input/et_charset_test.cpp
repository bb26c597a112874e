// The charsets and languages by the texts that name them: every case comes back from its own
// text, a lookup takes only the exact text, and a stored charset is read leniently.
#include <lorvane/json.hpp>
#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <unordered_set>
#include <vector>

using lorvane::ETCharset;
using lorvane::ETLanguage;
using nlohmann::json;

TEST(RawValues, EveryCaseRoundTripsAndLookupsAreExact) {
  const auto charsets = ETCharset::allCases();
  EXPECT_EQ(std::unordered_set<ETCharset>(charsets.begin(), charsets.end()).size(),
            charsets.size());
  for (ETCharset charset : charsets) {
    EXPECT_EQ(ETCharset::fromRawValue(charset.rawValue()), charset);
    EXPECT_EQ(json(charset).get<ETCharset>(), charset);
  }
  EXPECT_EQ(ETLanguage::equivalenceTable().size(), ETLanguage::allCases().size());
  for (ETLanguage language : ETLanguage::allCases()) {
    EXPECT_EQ(ETLanguage::fromRawValue(language.rawValue()), language);
    EXPECT_EQ(ETLanguage::fromExifToolValue(language.exifToolValue()), language);
  }
  EXPECT_EQ(ETLanguage::equivalenceTable().at(ETLanguage::chinese),
            (ETLanguage::Names{"简体中文", "zh_cn"}));
  EXPECT_EQ(ETCharset::fromRawValue("MacHebrew"), ETCharset::macBrew);
  EXPECT_EQ(ETCharset::fromRawValue("machebrew"), std::nullopt);
  EXPECT_EQ(ETCharset::fromRawValue("UTF-8"), std::nullopt);
  EXPECT_EQ(ETLanguage::fromRawValue("German"), std::nullopt);
  EXPECT_EQ(ETLanguage::fromExifToolValue("ZH_CN"), std::nullopt);
  EXPECT_EQ(ETLanguage::fromExifToolValue("chinese"), std::nullopt);
}

TEST(RawValues, LanguagesOrderAndHashByRawValue) {
  std::vector<ETLanguage> sorted(ETLanguage::allCases().begin(), ETLanguage::allCases().end());
  std::ranges::sort(sorted);
  EXPECT_EQ(sorted[0], ETLanguage::chinese);
  EXPECT_EQ(sorted[1], ETLanguage::english);
  EXPECT_EQ(std::hash<ETLanguage>{}(ETLanguage::french), std::hash<std::string_view>{}("french"));
}

TEST(RawValues, AStoredCharsetIsItsRawValueReadLeniently) {
  EXPECT_EQ(json(ETCharset::macBrew).dump(), R"("MacHebrew")");
  EXPECT_EQ(json("MACROMAN").get<ETCharset>(), ETCharset::macRoman);
  EXPECT_EQ(json("Mac\u212Aorean").get<ETCharset>(), ETCharset::macKorean);  // KELVIN SIGN
  EXPECT_EQ(json("UTF-8").get<ETCharset>(), ETCharset::utf8);
  EXPECT_EQ(json("MacRoman ").get<ETCharset>(), ETCharset::utf8);
  EXPECT_THROW(json(7).get<ETCharset>(), json::type_error);
  EXPECT_THROW(json::array({"UTF8"}).get<ETCharset>(), json::type_error);
}
