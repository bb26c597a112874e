// The built catalogue, row by row, against the rows it was made from (data/catalogue/rows.json)
// and the translated texts they give.

#include "catalogue_support.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace lorvane;
using lorvane::test::catalogueRows;

namespace {

std::string flagsOf(const TagItem& item) {
  std::string flags;
  for (const auto& [flag, isSet] : {std::pair{'L', item.isList()},
                                    {'W', item.isWritable()},
                                    {'F', item.isFlatten()},
                                    {'B', item.isBinary()},
                                    {'U', item.isUnsafe()}}) {
    if (isSet) {
      flags += flag;
    }
  }
  return flags;
}

// How the rows show a tag's choices: all of them in order, the leading ones, or a sample that
// stands in the catalogue's order.
enum class Shown { all, leading, sample };

// Compares the values and English labels the rows show with the item's; gives their number.
std::size_t expectShownChoices(const TagItem& item, const nlohmann::json& pairs, Shown shown) {
  const auto choices = item.choices();
  std::size_t from = 0;
  for (const auto& pair : pairs) {
    const std::string value = pair[0];
    const auto found =
        std::find(choices.begin() + static_cast<std::ptrdiff_t>(from), choices.end(), value);
    EXPECT_NE(found, choices.end()) << value;
    if (found == choices.end()) {
      return pairs.size();
    }
    const auto position = static_cast<std::size_t>(found - choices.begin());
    if (shown != Shown::sample) {
      EXPECT_EQ(position, from) << value;
    }
    EXPECT_EQ(item.strings().defaultTable().find(item.name().rawValue() + ":" + value),
              pair[1].get<std::string>());
    from = position + 1;
  }
  if (shown == Shown::all) {
    EXPECT_EQ(choices.size(), pairs.size());
  }
  return pairs.size();
}

}  // namespace

TEST(CatalogueRows, EveryRowWithItsFlagsTitleAndTheChoicesItShows) {
  const auto& rows = catalogueRows();
  const auto items = TagItem::allCases();
  std::size_t position = 0;
  std::size_t shownChoices = 0;
  for (const auto& stream : rows["streams"]) {
    for (const auto& row : stream["tags"]) {
      ASSERT_LT(position, items.size());
      const TagItem& item = *items[position++];
      const std::string key = row["key"];
      SCOPED_TRACE(stream["name"].get<std::string>() + ":" + key);
      ASSERT_EQ(item.stream().rawValue(), stream["name"]);
      ASSERT_EQ(item.key().rawValue(), key);
      EXPECT_EQ(item.index(), row["index"]);
      EXPECT_EQ(item.type().swiftName(), row["type"]);  // the rows name types as cases: "lang_alt"
      EXPECT_EQ(item.count(), row["count"]);
      EXPECT_EQ(flagsOf(item), row["flags"]);
      EXPECT_EQ(item.strings().defaultTable().find(item.name().rawValue()),
                row["title"].get<std::string>());
      EXPECT_EQ(item.choices().size(), row.value("n_choices", 0));
      if (row.contains("shared_table")) {
        shownChoices += expectShownChoices(
            item, rows["shared_value_tables"][row["shared_table"].get<std::string>()], Shown::all);
      } else if (row.contains("choices")) {
        const Shown shown = row["choices_complete"]               ? Shown::all
                            : row.value("choices_sampled", false) ? Shown::sample
                                                                  : Shown::leading;
        shownChoices += expectShownChoices(item, row["choices"], shown);
      }
    }
  }
  EXPECT_EQ(position, items.size());
  EXPECT_EQ(position, 19687u);
  EXPECT_EQ(shownChoices, 4639u);
}

TEST(CatalogueRows, TranslatedSamplesInEveryLanguage) {
  std::size_t texts = 0;
  for (const auto& sample : catalogueRows()["string_samples"]) {
    const std::string key = sample["text_key"];
    const auto stringTable = test::stringTableGetter(key.substr(0, key.find(':')));
    for (const ETLanguage language : ETLanguage::allCases()) {
      SCOPED_TRACE(key + " " + std::string(language.rawValue()));
      const auto text = stringTable(language).find(key).value_or(
          stringTable(ETLanguage::english).find(key).value_or(key));
      EXPECT_EQ(text, sample["texts"][std::string(test::dataCode(language))].get<std::string>());
      ++texts;
    }
  }
  EXPECT_EQ(texts, 29u * 7u);
  EXPECT_EQ(TagStrings::stringTableSony(ETLanguage::german).find("Sony:ExposureProgram:0"),
            "Programmautomatik");
}
