#pragma once

// The building blocks of the generated catalogue (src/generated/*.cpp): the shapes of its
// constant rows, and the objects that turn them into TagItem and TagStrings values on first
// use and hand out its string tables.
//
// Rows hold no pointers: every string is an offset and a size into one character array per
// translation unit. A shared library with some 200,000 string_views in constant data would
// have the dynamic loader patch each of them at every load (relocations), dirtying megabytes
// before anyone asks for a tag; offsets cost nothing until they are read. String tables are
// looked up in place (TagStringTable reads such rows); tags are built on first use.

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <string_view>
#include <vector>

#include <lorvane/et_language.hpp>
#include <lorvane/tag_item.hpp>
#include <lorvane/tag_stream.hpp>
#include <lorvane/tag_strings.hpp>
#include <lorvane/tag_type.hpp>

namespace lorvane::detail {

// A value made on first use, exactly once also when first uses race (latecomers wait for it),
// and never destroyed: catalogue constants live to the end of the process, and no static
// destructor may pull them from under another one. Constant-initialised, so it costs nothing
// at load time.
template <class T>
class Lazy {
public:
  constexpr Lazy() = default;
  Lazy(const Lazy&) = delete;
  Lazy& operator=(const Lazy&) = delete;

  template <class Make>
  const T& get(Make&& make) {
    if (const T* value = value_.load(std::memory_order_acquire)) {
      return *value;
    }
    std::call_once(once_, [&] { value_.store(new T(make()), std::memory_order_release); });
    return *value_.load(std::memory_order_acquire);
  }

private:
  std::once_flag once_;
  std::atomic<const T*> value_{nullptr};
};

// A string of a translation unit's text array.
using TextRef = TagStringTable::TextSpan;

constexpr std::string_view textAt(const char* text, TextRef ref) {
  return {text + ref.offset, ref.size};
}

// One entry of a string table: text key and text.
using StringRow = TagStringTable::TextEntry;

// The flags of a tag's row, written by name in the generated rows ("list | writable").
enum TagFlag : std::uint8_t {
  none = 0,
  list = 1,
  writable = 2,
  flatten = 4,
  binary = 8,
  unsafe = 16,
};

// One tag; its choices are `choiceCount` rows of the stream's choice rows from `firstChoice`.
struct TagRow {
  TextRef key;
  TagType type;
  std::uint8_t flags;
  std::int32_t count;
  std::uint32_t firstChoice;
  std::uint32_t choiceCount;
};

// The seven tables of one stream, in the order of ETLanguage::Case; an empty span is a
// language without a table.
using StringTableRows = std::array<std::span<const StringRow>, 7>;

// The texts of one stream: its seven tables, which are constant data looked at in place, and
// its TagStrings, built on first use with two of them at most (the local one and English).
class StreamStrings {
public:
  constexpr StreamStrings(const char* text, StringTableRows tables) : text_(text), rows_(tables) {}

  TagStringTable table(ETLanguage language) const;
  const TagStrings& strings(TagStringTable (*tableGetter)(ETLanguage));

private:
  const char* text_;
  StringTableRows rows_;
  Lazy<TagStrings> strings_;
};

// A tag built from its row, with the views of its choices that it looks at.
struct BuiltItem {
  std::vector<std::string_view> choices;
  TagItem item;
};

// The tags of one stream: each item is built on its first use, the list of all on its own.
class StreamTags {
public:
  // `keyOrder` holds the positions of `rows` in byte order of their keys.
  constexpr StreamTags(std::string_view stream, const char* text, std::span<const TagRow> rows,
                       std::span<const std::uint16_t> keyOrder, std::span<const TextRef> choices,
                       std::span<Lazy<BuiltItem>> items, const TagStrings& (*strings)(),
                       TagStringTable (*table)(ETLanguage))
      : stream_(stream),
        text_(text),
        rows_(rows),
        keyOrder_(keyOrder),
        choiceRows_(choices),
        items_(items),
        strings_(strings),
        table_(table) {}

  const TagItem& item(std::size_t index);
  std::span<const TagItem* const> all();
  // The item with this key (bytes compared), built if need be; nothing when there is none.
  const TagItem* find(std::string_view key);
  // The stream's texts in one language, whatever the user's.
  TagStringTable table(ETLanguage language) const { return table_(language); }

private:
  std::string_view stream_;
  const char* text_;
  std::span<const TagRow> rows_;
  std::span<const std::uint16_t> keyOrder_;
  std::span<const TextRef> choiceRows_;
  std::span<Lazy<BuiltItem>> items_;
  const TagStrings& (*strings_)();
  TagStringTable (*table_)(ETLanguage);
  Lazy<std::vector<const TagItem*>> all_;
};

// The catalogue's index: the stream constants, each built on its first use, the two lists of
// streams and the list of all tags, each copied on its own first use, and the search for a tag
// by name.
class CatalogueIndex {
public:
  // `names` holds the streams with tags, one for each of `tags` and in byte order, then those
  // without; `makers` holds positions in `names`.
  constexpr CatalogueIndex(std::span<const std::string_view> names,
                           std::span<const std::uint8_t> makers, std::span<Lazy<TagStream>> streams,
                           std::span<StreamTags* const> tags)
      : names_(names), makers_(makers), streams_(streams), tags_(tags) {}

  const TagStream& stream(std::size_t position);
  std::span<const TagStream> allCases();
  std::span<const TagStream> makerStreams();
  // Every tag: the streams' lists joined in stream order.
  std::span<const TagItem* const> allItems();
  // The item of this stream and key (bytes compared), built if need be; nothing when there is
  // none. A binary search over the stream names, then over the stream's keys.
  const TagItem* find(std::string_view stream, std::string_view key);
  // The tags of a stream (bytes compared); nothing for a stream without tags.
  StreamTags* tagsOf(std::string_view stream);

private:
  std::span<const std::string_view> names_;
  std::span<const std::uint8_t> makers_;
  std::span<Lazy<TagStream>> streams_;
  std::span<StreamTags* const> tags_;
  Lazy<std::vector<TagStream>> allCases_;
  Lazy<std::vector<TagStream>> makerStreams_;
  Lazy<std::vector<const TagItem*>> allItems_;
};

// Defined with the generated index.
extern CatalogueIndex catalogueIndex;

}  // namespace lorvane::detail
