#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <lorvane/generated/tag_item_catalogue.hpp>
#include <lorvane/tag_name.hpp>
#include <lorvane/tag_strings.hpp>
#include <lorvane/tag_type.hpp>

namespace lorvane {

namespace detail {
struct TagItemMaker;
}

// One entry of the catalogue: what the library knows about one tag of ExifTool, without any
// value of a file. Only the library makes items (the catalogue's constants, such as
// TagItem::itemEXIFOrientation(), come from the generated base class); they are immutable and
// refer to the TagStrings of their stream, which outlives them.
class TagItem : public TagItemCatalogue {
public:
  // The raw values the tag can take, in catalogue order: constant data, not copied. Not
  // necessarily sorted; an entry may repeat and may be empty.
  using Choices = std::span<const std::string_view>;

  // The place in the stream's list, from 0 without gaps.
  int index() const { return index_; }
  const TagName& name() const { return name_; }
  const TagStream& stream() const { return name_.stream(); }
  const TagKey& key() const { return name_.key(); }
  TagType type() const { return type_; }
  // The size the catalogue records: mostly 0, -1 for a few tags.
  int count() const { return count_; }
  bool isList() const { return isList_; }
  bool isWritable() const { return isWritable_; }
  bool isFlatten() const { return isFlatten_; }
  bool isBinary() const { return isBinary_; }
  bool isUnsafe() const { return isUnsafe_; }
  Choices choices() const { return choices_; }
  const TagStrings& strings() const { return *strings_; }

  // The tag's title in the user's language, or its raw name when no table has one.
  std::string localizedKey() const;
  // The stream (never translated), a blank and localizedKey().
  std::string localizedTitle() const;
  // The label of the choice at this position, which must lie in choices(): a position outside
  // stops a debug build and gives the empty string otherwise.
  std::string localizedChoice(std::size_t position) const;
  // The same three in a language of the caller's choice, whatever the process's own (from that
  // language's table, else the English one, else the raw name), as a MetadataReader of that
  // language has them; no process-wide state is touched.
  std::string localizedKey(ETLanguage language) const;
  std::string localizedTitle(ETLanguage language) const;
  std::string localizedChoice(std::size_t position, ETLanguage language) const;

  // The position of the first entry of choices() equal to the choice. Failing that, a text
  // such as "6 rotated" or "2.x" is cut back at its last blank, then point, then comma, one
  // part at a time, and the longest front that is an entry wins. Nothing for the empty text.
  std::optional<std::size_t> index(std::string_view choice) const;

  // One pair for each position of choices(), in order: the entry and its label.
  std::vector<std::pair<std::string, std::string>> makeFilteredChoices() const;

  // The catalogue's item of this name, or nothing when the catalogue has no such tag. A binary
  // search over a generated index: it builds this item alone, never the rest of the catalogue.
  // Names compare as everywhere in the tag model (canonical equivalence, case-exact).
  static const TagItem* find(const TagName& name);

  // "TagItem<EXIF:Orientation>".
  std::string description() const;

  // Items are one per name: equality, order and hash look at the name alone.
  friend bool operator==(const TagItem& a, const TagItem& b) { return a.name_ == b.name_; }
  friend std::strong_ordering operator<=>(const TagItem& a, const TagItem& b) {
    return a.name_ <=> b.name_;
  }

private:
  friend struct detail::TagItemMaker;

  TagItem(int index, TagName name, TagType type, int count, bool isList, bool isWritable,
          bool isFlatten, bool isBinary, bool isUnsafe, Choices choices, const TagStrings& strings);

  // One cutting pass of index(choice) with one separator.
  std::optional<std::size_t> index(std::string_view choice, char separator) const;

  int count_;
  bool isList_;
  int index_;
  TagName name_;
  TagType type_;
  bool isWritable_;
  bool isFlatten_;
  bool isBinary_;
  bool isUnsafe_;
  Choices choices_;
  const TagStrings* strings_;
};

inline std::ostream& operator<<(std::ostream& out, const TagItem& item) {
  return out << item.description();
}

}  // namespace lorvane

template <>
struct std::hash<lorvane::TagItem> {
  std::size_t operator()(const lorvane::TagItem& item) const noexcept {
    return std::hash<lorvane::TagName>{}(item.name());
  }
};
