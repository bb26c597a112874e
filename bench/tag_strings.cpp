// The lookups an application makes while it shows tags: localize (a hit in a local table of
// 10,000 entries, a fallback to an English table of 20,000, a miss in both), and
// TagItem::index(choice) on a list as long as the catalogue's longest (2,642 entries).

#include <lorvane/lorvane.hpp>

#include "catalogue/tag_item_maker.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace lorvane;

namespace {

constexpr int localTableSize = 10'000;

// Owns the texts behind a table's sorted entries, the way the catalogue's constant arrays do.
struct SortedTable {
  std::vector<std::string> keys;
  std::vector<std::string> texts;
  std::vector<TagStringTable::Entry> entries;

  TagStringTable view() const { return TagStringTable(std::span(entries)); }
};

std::string textKey(int number) {
  // Titles and labels of one stream: "Sony:Key123" and "Sony:Key123:4".
  // Appended piece by piece: GCC 12 at -O3 warns falsely (-Wrestrict) on "literal" + string.
  std::string key = "Sony:Key";
  key += std::to_string(number / 8);
  if (number % 8 != 0) {
    key += ':';
    key += std::to_string(number % 8);
  }
  return key;
}

SortedTable makeTable(int size, int step, const std::string& language) {
  SortedTable table;
  for (int number = 0; number < size * step; number += step) {
    table.keys.push_back(textKey(number));
    table.texts.push_back(language + " text of " + table.keys.back());
  }
  for (std::size_t i = 0; i < table.keys.size(); ++i) {
    table.entries.push_back({table.keys[i], table.texts[i]});
  }
  std::ranges::sort(table.entries, {}, &TagStringTable::Entry::key);
  return table;
}

// English holds every key; the local language every other one, as translations are partial.
const SortedTable& english() {
  static const SortedTable table = makeTable(2 * localTableSize, 1, "English");
  return table;
}
const SortedTable& local() {
  static const SortedTable table = makeTable(localTableSize, 2, "Local");
  return table;
}

void localizeOne(benchmark::State& state, std::string_view key, std::string_view value) {
  const TagStrings strings(local().view(), english().view());
  for (auto _ : state) {
    benchmark::DoNotOptimize(strings.localize({"Sony", key, value}));
  }
}

void BM_LocalizeLocalHit(benchmark::State& state) { localizeOne(state, "Key600", "2"); }
void BM_LocalizeEnglishFallback(benchmark::State& state) { localizeOne(state, "Key600", "3"); }
void BM_LocalizeMiss(benchmark::State& state) { localizeOne(state, "Key600", "99"); }

void BM_LocalizeLocalHitOverMap(benchmark::State& state) {
  TagStringTable::Map localMap;
  for (const auto& entry : local().entries) {
    localMap.emplace(entry.key, entry.text);
  }
  const TagStrings strings(TagStringTable(localMap), english().view());
  for (auto _ : state) {
    benchmark::DoNotOptimize(strings.localize({"Sony", "Key600", "2"}));
  }
}

BENCHMARK(BM_LocalizeLocalHit);
BENCHMARK(BM_LocalizeEnglishFallback);
BENCHMARK(BM_LocalizeMiss);
BENCHMARK(BM_LocalizeLocalHitOverMap);

// Decimal genre ids, like "QuickTime:GenreID".
constexpr std::size_t choiceCount = 2'642;
const std::vector<std::string>& choiceTexts() {
  static const std::vector<std::string> texts = [] {
    std::vector<std::string> made;
    for (std::size_t i = 0; i < choiceCount; ++i) {
      made.push_back(std::to_string(4'000'000 + i * 7));
    }
    return made;
  }();
  return texts;
}

void indexOf(benchmark::State& state, const std::string& text) {
  const std::vector<std::string_view> choices(choiceTexts().begin(), choiceTexts().end());
  const TagStrings strings(std::nullopt, english().view());
  const TagItem item = detail::TagItemMaker::make({.name = TagName("QuickTime", "GenreID"),
                                                   .type = TagType::int32u,
                                                   .isWritable = true,
                                                   .choices = choices,
                                                   .strings = &strings});
  for (auto _ : state) {
    benchmark::DoNotOptimize(item.index(text));
  }
}

void BM_IndexFirstEntry(benchmark::State& state) { indexOf(state, choiceTexts().front()); }
void BM_IndexLastEntry(benchmark::State& state) { indexOf(state, choiceTexts().back()); }
// Found only after cutting at the blank: two passes over the list.
void BM_IndexCutAtBlank(benchmark::State& state) { indexOf(state, choiceTexts().back() + " Pop"); }
// No entry at all: the whole text, then every cut of all three separators.
void BM_IndexMiss(benchmark::State& state) { indexOf(state, "Jazz, Blues. Soul 12"); }

BENCHMARK(BM_IndexFirstEntry);
BENCHMARK(BM_IndexLastEntry);
BENCHMARK(BM_IndexCutAtBlank);
BENCHMARK(BM_IndexMiss);

}  // namespace

BENCHMARK_MAIN();
