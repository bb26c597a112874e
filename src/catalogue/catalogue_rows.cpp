#include "catalogue/catalogue_rows.hpp"

#include <algorithm>

#include "catalogue/tag_item_maker.hpp"

namespace lorvane::detail {

TagStringTable StreamStrings::table(ETLanguage language) const {
  const std::span<const StringRow> rows = rows_[static_cast<std::size_t>(language.value())];
  return rows.empty() ? TagStringTable() : TagStringTable(text_, rows);
}

const TagStrings& StreamStrings::strings(TagStringTable (*tableGetter)(ETLanguage)) {
  return strings_.get([&] { return TagStrings(tableGetter); });
}

const TagItem& StreamTags::item(std::size_t index) {
  return items_[index]
      .get([&] {
        const TagRow& row = rows_[index];
        std::vector<std::string_view> choices;
        choices.reserve(row.choiceCount);
        for (const TextRef& choice : choiceRows_.subspan(row.firstChoice, row.choiceCount)) {
          choices.push_back(textAt(text_, choice));
        }
        // The vector's elements stay where they are when it moves into place.
        const TagItem::Choices view(choices);
        return BuiltItem{std::move(choices),
                         TagItemMaker::make({.index = static_cast<int>(index),
                                             .name = TagName(stream_, textAt(text_, row.key)),
                                             .type = row.type,
                                             .count = row.count,
                                             .isList = (row.flags & list) != 0,
                                             .isWritable = (row.flags & writable) != 0,
                                             .isFlatten = (row.flags & flatten) != 0,
                                             .isBinary = (row.flags & binary) != 0,
                                             .isUnsafe = (row.flags & unsafe) != 0,
                                             .choices = view,
                                             .strings = &strings_()})};
      })
      .item;
}

const TagItem* StreamTags::find(std::string_view key) {
  const auto found = std::lower_bound(keyOrder_.begin(), keyOrder_.end(), key,
                                      [&](std::uint16_t index, std::string_view wanted) {
                                        return textAt(text_, rows_[index].key) < wanted;
                                      });
  if (found == keyOrder_.end() || textAt(text_, rows_[*found].key) != key) {
    return nullptr;
  }
  return &item(*found);
}

std::span<const TagItem* const> StreamTags::all() {
  return all_.get([&] {
    std::vector<const TagItem*> made;
    made.reserve(rows_.size());
    for (std::size_t index = 0; index < rows_.size(); ++index) {
      made.push_back(&item(index));
    }
    return made;
  });
}

const TagStream& CatalogueIndex::stream(std::size_t position) {
  return streams_[position].get([&] { return TagStream(names_[position]); });
}

std::span<const TagStream> CatalogueIndex::allCases() {
  return allCases_.get([&] {
    std::vector<TagStream> made;
    made.reserve(tags_.size());
    for (std::size_t position = 0; position < tags_.size(); ++position) {
      made.push_back(stream(position));
    }
    return made;
  });
}

std::span<const TagStream> CatalogueIndex::makerStreams() {
  return makerStreams_.get([&] {
    std::vector<TagStream> made;
    made.reserve(makers_.size());
    for (const std::uint8_t position : makers_) {
      made.push_back(stream(position));
    }
    return made;
  });
}

std::span<const TagItem* const> CatalogueIndex::allItems() {
  return allItems_.get([&] {
    std::vector<const TagItem*> made;
    for (StreamTags* const tags : tags_) {
      const auto items = tags->all();
      made.insert(made.end(), items.begin(), items.end());
    }
    return made;
  });
}

StreamTags* CatalogueIndex::tagsOf(std::string_view stream) {
  const auto streams = names_.first(tags_.size());
  const auto found = std::lower_bound(streams.begin(), streams.end(), stream);
  if (found == streams.end() || *found != stream) {
    return nullptr;
  }
  return tags_[static_cast<std::size_t>(found - streams.begin())];
}

const TagItem* CatalogueIndex::find(std::string_view stream, std::string_view key) {
  StreamTags* tags = tagsOf(stream);
  return tags != nullptr ? tags->find(key) : nullptr;
}

}  // namespace lorvane::detail
