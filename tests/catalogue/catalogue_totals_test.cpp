// The built catalogue, walked through its public lists, against the totals the catalogue
// states about itself.

#include "catalogue_support.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

using namespace lorvane;
using lorvane::test::catalogueRows;
using lorvane::test::statedTotals;

namespace {

struct StreamTotals {
  int tags = 0;
  int writable = 0;
  int withChoices = 0;
  int values = 0;
  std::size_t englishEntries = 0;
};

std::map<std::string, StreamTotals> totalsByStream() {
  std::map<std::string, StreamTotals> byStream;
  for (const TagItem* item : TagItem::allCases()) {
    StreamTotals& totals = byStream[item->stream().rawValue()];
    ++totals.tags;
    totals.writable += item->isWritable();
    totals.withChoices += !item->choices().empty();
    totals.values += static_cast<int>(item->choices().size());
    totals.englishEntries = item->strings().defaultTable().size();
  }
  return byStream;
}

std::map<std::string, int> countOf(bool (TagItem::*flag)() const) {
  std::map<std::string, int> byStream;
  for (const TagItem* item : TagItem::allCases()) {
    if ((item->*flag)()) {
      ++byStream[item->stream().rawValue()];
    }
  }
  return byStream;
}

}  // namespace

TEST(CatalogueTotals, EveryStreamHasItsStatedTagsChoicesAndEnglishEntries) {
  const auto byStream = totalsByStream();
  const auto& streams = statedTotals()["streams"];
  ASSERT_EQ(byStream.size(), streams.size());
  for (const auto& [name, want] : streams.items()) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(byStream.contains(name));
    const StreamTotals& got = byStream.at(name);
    EXPECT_EQ(got.tags, want["tags"]);
    EXPECT_EQ(got.writable, want["writable"]);
    EXPECT_EQ(got.withChoices, want["with_choices"]);
    EXPECT_EQ(got.values, want["values"]);
    EXPECT_EQ(got.englishEntries, want["string_entries"]["en"]);
  }
  EXPECT_EQ(TagItem::allCases().size(), statedTotals()["tags"]);
}

TEST(CatalogueTotals, FlagsByStream) {
  const auto& flags = statedTotals()["flags"];
  // Writable tags are counted by stream above.
  const std::vector<std::pair<const char*, bool (TagItem::*)() const>> all{
      {"list", &TagItem::isList},
      {"flatten", &TagItem::isFlatten},
      {"binary", &TagItem::isBinary},
      {"unsafe", &TagItem::isUnsafe}};
  for (const auto& [name, flag] : all) {
    SCOPED_TRACE(name);
    const auto counts = countOf(flag);
    const auto flagged = [&](const TagItem* item) { return (item->*flag)(); };
    EXPECT_EQ(std::ranges::count_if(TagItem::allCases(), flagged), flags[name]["total"]);
    const auto& byStream = flags[name].contains("streams") ? flags[name]["streams"]
                                                           : flags[name]["top_streams"];
    for (const auto& [stream, count] : byStream.items()) {
      EXPECT_EQ(counts.contains(stream) ? counts.at(stream) : 0, count) << stream;
    }
  }
  int unsafeWritable = 0;
  for (const TagItem* item : TagItem::allCases()) {
    unsafeWritable += item->isUnsafe() && item->isWritable();
    if (item->isFlatten()) {
      EXPECT_TRUE(item->isWritable()) << item->name();
    }
  }
  EXPECT_EQ(unsafeWritable, flags["unsafe"]["writable"]);
}

TEST(CatalogueTotals, CountsAndTypes) {
  const auto& count = statedTotals()["count"];
  std::map<int, int> counts;
  std::map<std::string, int> types;
  const TagItem* largest = TagItem::allCases().front();
  int positive = 0;
  for (const TagItem* item : TagItem::allCases()) {
    ++counts[item->count()];
    ++types[item->type().swiftName()];
    positive += item->count() > 0;
    largest = item->count() > largest->count() ? item : largest;
  }
  EXPECT_EQ(counts[0], count["zero"]);
  EXPECT_EQ(counts[-1], count["minus_one"]);
  EXPECT_EQ(positive, count["positive"]);
  for (const auto& [value, tags] : count["frequent_positive"].items()) {
    EXPECT_EQ(counts[std::stoi(value)], tags) << "count " << value;
  }
  EXPECT_EQ(largest->count(), count["largest"]["value"]);
  EXPECT_EQ(largest->name().rawValue(), count["largest"]["tag"]);
  EXPECT_EQ(types, (statedTotals()["types"].get<std::map<std::string, int>>()));
}

TEST(CatalogueTotals, ChoicesTheirRepeatsAndTheLongestLists) {
  // The tags with choices and their values are counted by stream above.
  const auto& choices = statedTotals()["choices"];
  int values = 0;
  int distinct = 0;
  int listsWithRepeats = 0;
  std::size_t longest = 0;
  for (const TagItem* item : TagItem::allCases()) {
    const auto list = item->choices();
    const std::set<std::string_view> once(list.begin(), list.end());
    values += static_cast<int>(list.size());
    distinct += static_cast<int>(once.size());
    listsWithRepeats += once.size() < list.size();
    longest = std::max(longest, list.size());
  }
  EXPECT_EQ(distinct, choices["distinct_values"]);
  EXPECT_EQ(values - distinct, choices["repeats"]);
  EXPECT_EQ(listsWithRepeats, choices["lists_with_repeats"]);
  EXPECT_EQ(longest, choices["longest"]);
  for (const auto& [name, size] : choices["largest_lists"].items()) {
    EXPECT_EQ(test::itemsByName().at(name)->choices().size(), size) << name;
  }
}

TEST(CatalogueTotals, EnglishTablesHoldATitleForEveryTagAndALabelForEveryValue) {
  constexpr std::string_view alternative = " |\u00a0";
  std::size_t labelAlternatives = 0;
  std::size_t titleAlternatives = 0;
  for (const TagItem* item : TagItem::allCases()) {
    const TagStringTable& english = item->strings().defaultTable();
    const auto title = english.find(item->name().rawValue());
    ASSERT_TRUE(title) << item->name();
    titleAlternatives += title->find(alternative) != std::string_view::npos;
    const std::set<std::string_view> choices(item->choices().begin(), item->choices().end());
    for (std::string_view choice : choices) {
      const auto label = english.find(item->name().rawValue() + ":" + std::string(choice));
      ASSERT_TRUE(label) << item->name() << ":" << choice;
      labelAlternatives += label->find(alternative) != std::string_view::npos;
    }
  }
  const auto& alternatives = statedTotals()["strings"]["english_alternatives"];
  EXPECT_EQ(labelAlternatives, alternatives["labels"]);
  EXPECT_EQ(titleAlternatives, alternatives["titles"]);
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
