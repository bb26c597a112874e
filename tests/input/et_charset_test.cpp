#include <lorvane/json.hpp>

#include <gtest/gtest.h>

#include <unordered_set>

using lorvane::ETCharset;
using nlohmann::json;

TEST(ETCharset, EveryCaseRoundTripsAndLookupIsExact) {
  const auto cases = ETCharset::allCases();
  EXPECT_EQ(std::unordered_set<ETCharset>(cases.begin(), cases.end()).size(), cases.size());
  for (ETCharset charset : cases) {
    EXPECT_EQ(ETCharset::fromRawValue(charset.rawValue()), charset);
    EXPECT_EQ(json(charset).get<ETCharset>(), charset);
  }
  EXPECT_EQ(ETCharset::fromRawValue("MacHebrew"), ETCharset::macBrew);
  EXPECT_EQ(ETCharset::fromRawValue("machebrew"), std::nullopt);
  EXPECT_EQ(ETCharset::fromRawValue("UTF-8"), std::nullopt);
}

TEST(ETCharset, SerialisedFormIsTheRawValueReadLeniently) {
  EXPECT_EQ(json(ETCharset::macBrew).dump(), R"("MacHebrew")");
  EXPECT_EQ(json("MACROMAN").get<ETCharset>(), ETCharset::macRoman);
  EXPECT_EQ(json("Mac\u212Aorean").get<ETCharset>(), ETCharset::macKorean);  // KELVIN SIGN
  EXPECT_EQ(json("UTF-8").get<ETCharset>(), ETCharset::utf8);
  EXPECT_EQ(json("MacRoman ").get<ETCharset>(), ETCharset::utf8);
  EXPECT_THROW(json(7).get<ETCharset>(), json::type_error);
  EXPECT_THROW(json::array({"UTF8"}).get<ETCharset>(), json::type_error);
}
