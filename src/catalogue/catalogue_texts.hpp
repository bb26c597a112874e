#pragma once

// The catalogue's titles and labels in a language the caller chooses, with English behind it,
// whatever language the process itself has: items localise into the user's language only.

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

#include <lorvane/et_language.hpp>
#include <lorvane/tag_item.hpp>

namespace lorvane::detail {

class CatalogueTexts {
public:
  explicit CatalogueTexts(ETLanguage language) : language_(language) {}

  ETLanguage language() const { return language_; }
  // As item.localizedKey() and item.localizedChoice(position) give them in the user's language.
  std::string title(const TagItem& item) const;
  std::string label(const TagItem& item, std::size_t position) const;

private:
  // TagStrings::localize of the parts with the user's table of the item's stream and the English
  // one.
  std::string localize(const TagItem& item, std::initializer_list<std::string_view> parts) const;

  ETLanguage language_;
};

}  // namespace lorvane::detail
