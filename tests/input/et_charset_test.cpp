#include <lorvane/json.hpp>

#include <gtest/gtest.h>

#include <unordered_set>

using lorvane::ETCharset;
using nlohmann::json;

TEST(ETCharset, AllCasesInTheToolsOrder) {
  const auto cases = ETCharset::allCases();
  ASSERT_EQ(cases.size(), 38u);
  EXPECT_EQ(cases.front(), ETCharset::utf8);
  EXPECT_EQ(cases[21], ETCharset::macBrew);
  EXPECT_EQ(cases[21].rawValue(), "MacHebrew");
  EXPECT_EQ(cases.back(), ETCharset::vietnam);
  std::unordered_set<std::string_view> rawValues;
  for (ETCharset charset : cases) {
    rawValues.insert(charset.rawValue());
  }
  EXPECT_EQ(rawValues.size(), 38u) << "raw values must be unique";
}

TEST(ETCharset, RawValueLookupIsExact) {
  EXPECT_EQ(ETCharset::fromRawValue("MacHebrew"), ETCharset::macBrew);
  EXPECT_EQ(ETCharset::fromRawValue("DOSLatin1"), ETCharset::dosLatin1);
  EXPECT_EQ(ETCharset::fromRawValue("machebrew"), std::nullopt);
  EXPECT_EQ(ETCharset::fromRawValue("MACHEBREW"), std::nullopt);
  EXPECT_EQ(ETCharset::fromRawValue("UTF-8"), std::nullopt);
  EXPECT_EQ(ETCharset::fromRawValue(""), std::nullopt);
  for (ETCharset charset : ETCharset::allCases()) {
    EXPECT_EQ(ETCharset::fromRawValue(charset.rawValue()), charset);
  }
}

TEST(ETCharset, SerialisedAsItsRawValue) {
  EXPECT_EQ(json(ETCharset::macRoman), json("MacRoman"));
  EXPECT_EQ(json(ETCharset::macBrew).dump(), R"("MacHebrew")");
  for (ETCharset charset : ETCharset::allCases()) {
    EXPECT_EQ(json(charset).get<ETCharset>(), charset);
  }
}

TEST(ETCharset, ReadingIgnoresLetterCase) {
  EXPECT_EQ(json("macroman").get<ETCharset>(), ETCharset::macRoman);
  EXPECT_EQ(json("MACROMAN").get<ETCharset>(), ETCharset::macRoman);
  EXPECT_EQ(json("shiftjis").get<ETCharset>(), ETCharset::shiftJIS);
  // U+212A KELVIN SIGN folds to "k".
  EXPECT_EQ(json("Mac\u212Aorean").get<ETCharset>(), ETCharset::macKorean);
}

TEST(ETCharset, ReadingUnknownTextGivesUtf8) {
  EXPECT_EQ(json("UTF-8").get<ETCharset>(), ETCharset::utf8);
  EXPECT_EQ(json("").get<ETCharset>(), ETCharset::utf8);
  EXPECT_EQ(json("MacRoman ").get<ETCharset>(), ETCharset::utf8);
}

TEST(ETCharset, ReadingANonStringIsTheDecodersError) {
  EXPECT_THROW(json(7).get<ETCharset>(), json::type_error);
  EXPECT_THROW(json(nullptr).get<ETCharset>(), json::type_error);
  EXPECT_THROW(json::array({"UTF8"}).get<ETCharset>(), json::type_error);
}
