#include "catalogue_texts.hpp"

#include "catalogue_rows.hpp"

namespace lorvane::detail {

std::string CatalogueTexts::localize(const TagItem& item,
                                     std::initializer_list<std::string_view> parts) const {
  std::string id = TagStrings::makeID(parts);
  if (const StreamTags* tags = catalogueIndex.tagsOf(item.stream().rawValue())) {
    if (language_ != ETLanguage::english) {
      if (const auto text = tags->table(language_).find(id)) {
        return std::string(*text);
      }
    }
    if (const auto text = tags->table(ETLanguage::english).find(id)) {
      return std::string(*text);
    }
  }
  return id;
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
