#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using lorvane::ETLanguage;

TEST(ETLanguage, EveryCaseRoundTripsAndLookupsAreExact) {
  const auto& table = ETLanguage::equivalenceTable();
  EXPECT_EQ(table.size(), ETLanguage::allCases().size());
  for (ETLanguage language : ETLanguage::allCases()) {
    EXPECT_EQ(ETLanguage::fromRawValue(language.rawValue()), language);
    EXPECT_EQ(ETLanguage::fromExifToolValue(language.exifToolValue()), language);
  }
  EXPECT_EQ(table.at(ETLanguage::chinese), (ETLanguage::Names{"简体中文", "zh_cn"}));
  EXPECT_EQ(ETLanguage::fromRawValue("German"), std::nullopt);
  EXPECT_EQ(ETLanguage::fromExifToolValue("ZH_CN"), std::nullopt);
  EXPECT_EQ(ETLanguage::fromExifToolValue("chinese"), std::nullopt);
}

TEST(ETLanguage, OrdersAndHashesByRawValue) {
  std::vector<ETLanguage> sorted(ETLanguage::allCases().begin(), ETLanguage::allCases().end());
  std::ranges::sort(sorted);
  EXPECT_EQ(sorted[0], ETLanguage::chinese);
  EXPECT_EQ(sorted[1], ETLanguage::english);
  EXPECT_EQ(std::hash<ETLanguage>{}(ETLanguage::french), std::hash<std::string_view>{}("french"));
}
