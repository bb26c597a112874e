#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <unordered_set>
#include <vector>

using lorvane::ETLanguage;

TEST(ETLanguage, CasesNamesAndToolCodes) {
  const auto cases = ETLanguage::allCases();
  ASSERT_EQ(cases.size(), 7u);
  EXPECT_EQ(cases.front(), ETLanguage::english);
  EXPECT_EQ(cases.back(), ETLanguage::spanish);
  EXPECT_EQ(ETLanguage::english.exifToolValue(), "en");
  EXPECT_EQ(ETLanguage::chinese.exifToolValue(), "zh_cn");
  EXPECT_EQ(ETLanguage::german.name(), "Deutsch");
  EXPECT_EQ(ETLanguage::japanese.rawValue(), "japanese");
  const auto& table = ETLanguage::equivalenceTable();
  ASSERT_EQ(table.size(), 7u);
  for (ETLanguage language : cases) {
    EXPECT_EQ(table.at(language), (ETLanguage::Names{language.name(), language.exifToolValue()}));
    EXPECT_EQ(ETLanguage::fromRawValue(language.rawValue()), language);
    EXPECT_EQ(ETLanguage::fromExifToolValue(language.exifToolValue()), language);
  }
}

TEST(ETLanguage, LookupsAreExact) {
  EXPECT_EQ(ETLanguage::fromRawValue("de"), std::nullopt);
  EXPECT_EQ(ETLanguage::fromRawValue("German"), std::nullopt);
  EXPECT_EQ(ETLanguage::fromExifToolValue("ZH_CN"), std::nullopt);
  EXPECT_EQ(ETLanguage::fromExifToolValue("chinese"), std::nullopt);
  EXPECT_EQ(ETLanguage::fromExifToolValue("简体中文"), std::nullopt);
}

TEST(ETLanguage, OrdersAndHashesByRawValue) {
  std::vector<ETLanguage> sorted(ETLanguage::allCases().begin(), ETLanguage::allCases().end());
  std::ranges::sort(sorted);
  EXPECT_EQ(sorted[0], ETLanguage::chinese);
  EXPECT_EQ(sorted[1], ETLanguage::english);
  EXPECT_TRUE(ETLanguage::japanese >= ETLanguage::italian);
  EXPECT_FALSE(ETLanguage::german < ETLanguage::german);
  const std::unordered_set<ETLanguage> set(sorted.begin(), sorted.end());
  EXPECT_EQ(set.size(), 7u);
  EXPECT_EQ(std::hash<ETLanguage>{}(ETLanguage::french), std::hash<std::string_view>{}("french"));
}
