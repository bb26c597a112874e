#include "catalogue/catalogue_texts.hpp"

#include <optional>

#include "catalogue/catalogue_rows.hpp"

namespace lorvane::detail {

std::string CatalogueTexts::localize(const TagItem& item,
                                     std::initializer_list<std::string_view> parts) const {
  // The stream is looked for once, for both of its tables.
  const StreamTags* tags = catalogueIndex.tagsOf(item.stream().rawValue());
  const auto table = [&](ETLanguage language) {
    return tags != nullptr ? tags->table(language) : TagStringTable();
  };
  std::optional<TagStringTable> local;
  if (language_ != ETLanguage::english) {
    local = table(language_);
  }
  return TagStrings(local, table(ETLanguage::english)).localize(parts);
}

std::string CatalogueTexts::title(const TagItem& item) const {
  return localize(item, {item.stream().rawValue(), item.key().rawValue()});
}

std::string CatalogueTexts::label(const TagItem& item, std::size_t position) const {
  const auto choices = item.choices();
  if (position >= choices.size()) {
    return {};
  }
  return localize(item, {item.stream().rawValue(), item.key().rawValue(), choices[position]});
}

}  // namespace lorvane::detail
