#pragma once

// The catalogue's titles and labels in a language the caller chooses, with English behind it,
// whatever language the process itself has: items localise into the user's language only.

#include <cstddef>
#include <string>

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
  TagStrings stringsOf(const TagItem& item) const;

  ETLanguage language_;
};

}  // namespace lorvane::detail
