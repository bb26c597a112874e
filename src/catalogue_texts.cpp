#include "catalogue_texts.hpp"

#include <optional>

#include "catalogue_rows.hpp"

namespace lorvane::detail {

TagStrings CatalogueTexts::stringsOf(const TagItem& item) const {
  const std::string& stream = item.stream().rawValue();
  std::optional<TagStringTable> local;
  if (language_ != ETLanguage::english) {
    local = catalogueIndex.table(stream, language_);
  }
  return TagStrings(local, catalogueIndex.table(stream, ETLanguage::english));
}

std::string CatalogueTexts::title(const TagItem& item) const {
  return stringsOf(item).localize({item.stream().rawValue(), item.key().rawValue()});
}

std::string CatalogueTexts::label(const TagItem& item, std::size_t position) const {
  const auto choices = item.choices();
  if (position >= choices.size()) {
    return {};
  }
  return stringsOf(item).localize(
      {item.stream().rawValue(), item.key().rawValue(), choices[position]});
}

}  // namespace lorvane::detail
