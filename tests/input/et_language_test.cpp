#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <unordered_set>
#include <vector>

using lorvane::ETLanguage;

TEST(ETLanguage, CasesKeepTheirOrderWithEnglishFirst) {
  std::vector<std::string_view> rawValues;
  for (ETLanguage language : ETLanguage::allCases()) {
    rawValues.push_back(language.rawValue());
  }
  EXPECT_EQ(rawValues, (std::vector<std::string_view>{"english", "chinese", "french", "german",
                                                       "italian", "japanese", "spanish"}));
}

TEST(ETLanguage, SortsByRawValueNotByDeclaration) {
  std::vector<ETLanguage> sorted(ETLanguage::allCases().begin(), ETLanguage::allCases().end());
  std::ranges::sort(sorted);
  EXPECT_EQ(sorted.front(), ETLanguage::chinese);
  EXPECT_EQ(sorted[1], ETLanguage::english);
  EXPECT_EQ(sorted.back(), ETLanguage::spanish);
  EXPECT_TRUE(ETLanguage::chinese < ETLanguage::english);
  EXPECT_FALSE(ETLanguage::german < ETLanguage::german);
  EXPECT_TRUE(ETLanguage::japanese >= ETLanguage::italian);
}

TEST(ETLanguage, ToolCodesAndNames) {
  EXPECT_EQ(ETLanguage::english.exifToolValue(), "en");
  EXPECT_EQ(ETLanguage::chinese.exifToolValue(), "zh_cn");
  EXPECT_EQ(ETLanguage::german.name(), "Deutsch");
  EXPECT_EQ(ETLanguage::japanese.name(), "日本語");
  const auto& table = ETLanguage::equivalenceTable();
  ASSERT_EQ(table.size(), 7u);
  for (ETLanguage language : ETLanguage::allCases()) {
    EXPECT_EQ(table.at(language), (ETLanguage::Names{language.name(), language.exifToolValue()}));
  }
}

TEST(ETLanguage, LookupsAreExact) {
  EXPECT_EQ(ETLanguage::fromRawValue("german"), ETLanguage::german);
  EXPECT_EQ(ETLanguage::fromRawValue("de"), std::nullopt);
  EXPECT_EQ(ETLanguage::fromRawValue("German"), std::nullopt);
  EXPECT_EQ(ETLanguage::fromExifToolValue("zh_cn"), ETLanguage::chinese);
  EXPECT_EQ(ETLanguage::fromExifToolValue("ZH_CN"), std::nullopt);
  EXPECT_EQ(ETLanguage::fromExifToolValue("chinese"), std::nullopt);
  EXPECT_EQ(ETLanguage::fromExifToolValue("简体中文"), std::nullopt);
  for (ETLanguage language : ETLanguage::allCases()) {
    EXPECT_EQ(ETLanguage::fromRawValue(language.rawValue()), language);
    EXPECT_EQ(ETLanguage::fromExifToolValue(language.exifToolValue()), language);
  }
}

TEST(ETLanguage, HashesLikeItsRawValue) {
  std::unordered_set<ETLanguage> languages(ETLanguage::allCases().begin(),
                                           ETLanguage::allCases().end());
  EXPECT_EQ(languages.size(), 7u);
  EXPECT_EQ(std::hash<ETLanguage>{}(ETLanguage::french),
            std::hash<std::string_view>{}("french"));
}
