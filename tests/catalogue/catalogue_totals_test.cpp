// The built catalogue against the totals it states about itself, where the rows (checked one by
// one in catalogue_rows_test.cpp) show only part: the values the rows leave out, their labels,
// and the size of each English table.

#include "catalogue_support.hpp"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

using namespace lorvane;
using lorvane::test::catalogueRows;
using lorvane::test::statedTotals;

TEST(CatalogueTotals, EnglishTablesHaveTheirStatedSizesAndALabelForEveryValue) {
  constexpr std::string_view alternative = " |\u00a0";
  std::size_t labelAlternatives = 0;
  std::map<std::string, std::size_t> englishEntries;
  for (const TagItem* item : TagItem::allCases()) {
    const TagStringTable& english = item->strings().defaultTable();
    englishEntries[item->stream().rawValue()] = english.size();
    const std::set<std::string_view> choices(item->choices().begin(), item->choices().end());
    for (std::string_view choice : choices) {
      const auto label = english.find(item->name().rawValue() + ":" + std::string(choice));
      ASSERT_TRUE(label) << item->name() << ":" << choice;
      labelAlternatives += label->find(alternative) != std::string_view::npos;
    }
  }
  EXPECT_EQ(labelAlternatives, statedTotals()["strings"]["english_alternatives"]["labels"]);
  for (const auto& [name, stream] : statedTotals()["streams"].items()) {
    EXPECT_EQ(englishEntries[name], stream["string_entries"]["en"]) << name;
  }
}

TEST(CatalogueTotals, ChoicesAndTheirRepeats) {
  const auto& choices = statedTotals()["choices"];
  int values = 0;
  int distinct = 0;
  int listsWithRepeats = 0;
  for (const TagItem* item : TagItem::allCases()) {
    const auto list = item->choices();
    const std::set<std::string_view> once(list.begin(), list.end());
    values += static_cast<int>(list.size());
    distinct += static_cast<int>(once.size());
    listsWithRepeats += once.size() < list.size();
  }
  EXPECT_EQ(distinct, choices["distinct_values"]);
  EXPECT_EQ(values - distinct, choices["repeats"]);
  EXPECT_EQ(listsWithRepeats, choices["lists_with_repeats"]);
}

TEST(CatalogueTotals, SharedValueTablesServeTheirStatedNumberOfTags) {
  using Table = std::vector<std::pair<std::string, std::string>>;
  std::map<Table, int> users;
  for (const TagItem* item : TagItem::allCases()) {
    if (!item->choices().empty()) {
      Table table;
      for (std::string_view choice : item->choices()) {
        const auto label = item->strings().defaultTable().find(
            TagStrings::makeID({item->stream().rawValue(), item->key().rawValue(), choice}));
        table.emplace_back(choice, label.value_or("?"));
      }
      ++users[table];
    }
  }
  const auto& tables = catalogueRows()["shared_value_tables"];
  const auto& stated = statedTotals()["shared_table_tags"];
  ASSERT_EQ(tables.size(), 29u);
  int served = 0;
  for (const auto& [name, pairs] : tables.items()) {
    const Table table = pairs.get<Table>();
    EXPECT_EQ(users[table], stated[name]) << name;
    served += users[table];
  }
  EXPECT_EQ(served, statedTotals()["shared_tables_tags_total"]);
  EXPECT_EQ(users.size(), statedTotals()["choices"]["distinct_tables"]);
}
