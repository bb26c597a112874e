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
  EXPECT_EQ(cases.back(), ETCharset::vietnam);
  std::unordered_set<ETCharset> distinct(cases.begin(), cases.end());
  EXPECT_EQ(distinct.size(), 38u);
  for (ETCharset charset : cases) {
    EXPECT_EQ(ETCharset::fromRawValue(charset.rawValue()), charset);
    EXPECT_EQ(json(charset).get<ETCharset>(), charset);
  }
}

TEST(ETCharset, RawValueLookupIsExact) {
  EXPECT_EQ(ETCharset::fromRawValue("MacHebrew"), ETCharset::macBrew);
  EXPECT_EQ(ETCharset::fromRawValue("machebrew"), std::nullopt);
  EXPECT_EQ(ETCharset::fromRawValue("UTF-8"), std::nullopt);
  EXPECT_EQ(ETCharset::fromRawValue(""), std::nullopt);
}

TEST(ETCharset, SerialisedFormIsTheRawValueReadLeniently) {
  EXPECT_EQ(json(ETCharset::macBrew).dump(), R"("MacHebrew")");
  EXPECT_EQ(json("macroman").get<ETCharset>(), ETCharset::macRoman);
  EXPECT_EQ(json("MACROMAN").get<ETCharset>(), ETCharset::macRoman);
  EXPECT_EQ(json("Mac\u212Aorean").get<ETCharset>(), ETCharset::macKorean);  // KELVIN SIGN
  EXPECT_EQ(json("UTF-8").get<ETCharset>(), ETCharset::utf8);
  EXPECT_EQ(json("").get<ETCharset>(), ETCharset::utf8);
  EXPECT_EQ(json("MacRoman ").get<ETCharset>(), ETCharset::utf8);
  EXPECT_THROW(json(7).get<ETCharset>(), json::type_error);
  EXPECT_THROW(json::array({"UTF8"}).get<ETCharset>(), json::type_error);
}
