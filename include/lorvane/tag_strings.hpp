#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <lorvane/et_language.hpp>
#include <lorvane/generated/tag_strings_catalogue.hpp>

namespace lorvane {

// A read-only view of one language's string table: text key to text. It copies nothing, so
// whatever it looks at must outlive it. It looks either at constant entries sorted by key in
// byte order (the catalogue's generated arrays) or at a caller's own map (applications,
// tests). Either way a lookup is a binary search, O(log n).
class TagStringTable {
public:
  struct Entry {
    std::string_view key;
    std::string_view text;
  };
  // The transparent comparator lets a lookup go without making a std::string of the key.
  using Map = std::map<std::string, std::string, std::less<>>;

  // The empty table.
  constexpr TagStringTable() = default;
  // The entries must be sorted by key in byte order, each key once (a debug build checks).
  constexpr explicit TagStringTable(std::span<const Entry> sortedEntries) : entries_(sortedEntries) {
    assert(std::ranges::adjacent_find(sortedEntries, std::ranges::greater_equal{}, &Entry::key) ==
               sortedEntries.end() &&
           "TagStringTable: entries not sorted by key, or a key twice");
  }
  explicit TagStringTable(const Map& map) : map_(&map) {}
  // A temporary map would be gone before the first lookup.
  explicit TagStringTable(const Map&& map) = delete;

  std::size_t size() const { return map_ != nullptr ? map_->size() : entries_.size(); }
  bool empty() const { return size() == 0; }

  // The text stored under exactly this key; an empty text is a text too.
  std::optional<std::string_view> find(std::string_view key) const {
    if (map_ != nullptr) {
      const auto found = map_->find(key);
      return found != map_->end() ? std::optional<std::string_view>(found->second) : std::nullopt;
    }
    const auto found = std::ranges::lower_bound(entries_, key, {}, &Entry::key);
    return found != entries_.end() && found->key == key ? std::optional(found->text) : std::nullopt;
  }

private:
  std::span<const Entry> entries_;
  const Map* map_ = nullptr;
};

// The texts of one stream: the title of each tag and the label of each of its choices, in the
// user's language with English behind it, entry by entry. A text key is the stream, the key and
// for a label the choice, joined with ":" ("EXIF:Orientation", "EXIF:Orientation:1").
// Immutable once made, so any thread may localize at any time. The catalogue's instances
// (TagStrings::stringsEXIF(), ...) come from the generated base class.
class TagStrings : public TagStringsCatalogue {
public:
  using TableGetter = std::function<TagStringTable(ETLanguage)>;

  // Asks the getter for the table of ETLanguage::local() and then for the English one: once
  // when the user's language is English (no local table), twice otherwise, local first. The
  // getter is not kept.
  explicit TagStrings(const TableGetter& tableGetter);
  // Holds both tables as given, whatever the user's language.
  TagStrings(std::optional<TagStringTable> localTable, TagStringTable defaultTable)
      : localTable_(localTable), defaultTable_(defaultTable) {}

  const std::optional<TagStringTable>& localTable() const { return localTable_; }
  const TagStringTable& defaultTable() const { return defaultTable_; }

  // The parts joined with ":", nothing escaped; no parts give the empty string.
  static std::string makeID(std::initializer_list<std::string_view> parts) {
    return makeID(std::span(parts.begin(), parts.size()));
  }
  static std::string makeID(std::span<const std::string_view> parts);

  // The text of the id of the parts: from the local table, else from the default table, else
  // the id itself. Never fails, and a found empty text stays empty.
  std::string localize(std::initializer_list<std::string_view> parts) const {
    return localize(std::span(parts.begin(), parts.size()));
  }
  std::string localize(std::span<const std::string_view> parts) const;

private:
  std::optional<TagStringTable> localTable_;
  TagStringTable defaultTable_;
};

}  // namespace lorvane
