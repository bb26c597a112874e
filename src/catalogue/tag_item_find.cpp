#include <lorvane/canonical_text.hpp>
#include <lorvane/tag_item.hpp>

#include "catalogue/catalogue_rows.hpp"

namespace lorvane {

const TagItem* TagItem::find(const TagName& name) {
  // The catalogue's names are ASCII, hence in NFC: a name in any other form finds its tag
  // once it is in NFC too.
  return detail::catalogueIndex.find(canonicalForm(name.stream().rawValue()),
                                     canonicalForm(name.key().rawValue()));
}

}  // namespace lorvane
