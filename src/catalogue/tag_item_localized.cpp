// A tag's texts in any language, from the catalogue's tables of that language.

#include <cassert>

#include <lorvane/tag_item.hpp>

#include "catalogue/catalogue_texts.hpp"

namespace lorvane {

std::string TagItem::localizedKey(ETLanguage language) const {
  return detail::CatalogueTexts(language).title(*this);
}

std::string TagItem::localizedTitle(ETLanguage language) const {
  return stream().rawValue() + " " + localizedKey(language);
}

std::string TagItem::localizedChoice(std::size_t position, ETLanguage language) const {
  assert(position < choices_.size() && "localizedChoice: position outside choices()");
  return detail::CatalogueTexts(language).label(*this, position);
}

}  // namespace lorvane
