#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include <lorvane/et_language.hpp>
#include <lorvane/generated/tag_strings_catalogue.hpp>

namespace lorvane {

// One language's string table, read-only: text key to text. Over constant entries sorted by
// key in byte order it is a view that copies nothing, so the entries must outlive it; made
// from a caller's own map (applications, tests) it keeps a copy of that map, which its copies
// share, so that a later change of the caller's map never shows in it. Either way a lookup is
// a binary search, O(log n).
class TagStringTable {
public:
  struct Entry {
    std::string_view key;
    std::string_view text;
  };
  // Constant entries may also hold their strings as places in one text rather than as
  // addresses. The catalogue's generated tables take this form: a shared library whose
  // constant data held 100,000 addresses would have the loader patch every one of them at each
  // start of the program, and the tables would cost time and memory before anyone looks.
  struct TextSpan {
    std::uint32_t offset;
    std::uint32_t size;
  };
  struct TextEntry {
    TextSpan key;
    TextSpan text;
  };
  // The transparent comparator lets a lookup go without making a std::string of the key.
  using Map = std::map<std::string, std::string, std::less<>>;

  // The empty table.
  constexpr TagStringTable() = default;
  // The entries must be sorted by key in byte order, each key once (a debug build checks).
  constexpr explicit TagStringTable(std::span<const Entry> sortedEntries)
      : entries_(sortedEntries) {
    assert(std::ranges::adjacent_find(sortedEntries, std::ranges::greater_equal{}, &Entry::key) ==
               sortedEntries.end() &&
           "TagStringTable: entries not sorted by key, or a key twice");
  }
  // The same for entries whose strings lie in `text`.
  constexpr TagStringTable(const char* text, std::span<const TextEntry> sortedEntries)
      : text_(text), textEntries_(sortedEntries) {
    assert(std::ranges::adjacent_find(sortedEntries, std::ranges::greater_equal{},
                                      [&](const TextEntry& entry) { return in(entry.key); }) ==
               sortedEntries.end() &&
           "TagStringTable: entries not sorted by key, or a key twice");
  }
  explicit TagStringTable(Map map) : map_(std::make_shared<const Map>(std::move(map))) {}

  std::size_t size() const {
    return map_ != nullptr    ? map_->size()
           : text_ != nullptr ? textEntries_.size()
                              : entries_.size();
  }
  bool empty() const { return size() == 0; }

  // The text stored under exactly this key; an empty text is a text too.
  std::optional<std::string_view> find(std::string_view key) const {
    if (map_ != nullptr) {
      const auto found = map_->find(key);
      return found != map_->end() ? std::optional<std::string_view>(found->second) : std::nullopt;
    }
    if (text_ != nullptr) {
      const auto found = std::ranges::lower_bound(
          textEntries_, key, {}, [&](const TextEntry& entry) { return in(entry.key); });
      return found != textEntries_.end() && in(found->key) == key ? std::optional(in(found->text))
                                                                  : std::nullopt;
    }
    const auto found = std::ranges::lower_bound(entries_, key, {}, &Entry::key);
    return found != entries_.end() && found->key == key ? std::optional(found->text) : std::nullopt;
  }

private:
  constexpr std::string_view in(TextSpan span) const { return {text_ + span.offset, span.size}; }

  std::span<const Entry> entries_;
  const char* text_ = nullptr;
  std::span<const TextEntry> textEntries_;
  std::shared_ptr<const Map> map_;
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
