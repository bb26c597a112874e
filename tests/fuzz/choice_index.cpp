// A value's place in a tag's choices, as the catalogue finds it for texts the tool prints
// ("6 rotated", "2.x"). Whatever the text, a place found is one of the choices, its entry is the
// text itself or a front of it cut at a blank, point or comma, and that entry finds the same
// place again; each entry finds its own first place.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <lorvane/canonical_text.hpp>
#include <lorvane/tag_item.hpp>

#include "fuzz_check.hpp"

namespace {

using lorvane::TagItem;
using lorvane::fuzz::require;

const std::vector<const TagItem*>& itemsWithChoices() {
  static const auto items = [] {
    std::vector<const TagItem*> found;
    for (const TagItem* item : TagItem::allCases()) {
      if (!item->choices().empty()) {
        found.push_back(item);
      }
    }
    return found;
  }();
  return items;
}

// Whether `entry` is `text` or a front of it that ends before a blank, point or comma.
bool isCutFront(std::string_view entry, std::string_view text) {
  if (lorvane::canonicallyEqual(entry, text)) {
    return true;
  }
  for (std::size_t end = 0; end < text.size(); ++end) {
    if ((text[end] == ' ' || text[end] == '.' || text[end] == ',') &&
        lorvane::canonicallyEqual(entry, text.substr(0, end))) {
      return true;
    }
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider provider(data, size);
  const auto& items = itemsWithChoices();
  const TagItem& item = *items[provider.ConsumeIntegralInRange<std::size_t>(0, items.size() - 1)];
  const auto choices = item.choices();
  const std::string text = provider.ConsumeRemainingBytesAsString();

  if (const auto place = item.index(text)) {
    require(*place < choices.size(), "a place found is one of the choices");
    require(isCutFront(choices[*place], text), "the entry found is the text or a cut front of it");
    require(item.index(choices[*place]) == place, "the entry found finds its own place");
  }
  // Each entry, and each entry with the text behind a blank, finds the first equal entry.
  const std::size_t position = text.size() % choices.size();
  const std::string_view entry = choices[position];
  const auto own = item.index(entry);
  require(own && *own <= position && lorvane::canonicallyEqual(choices[*own], entry),
          "an entry finds its first equal");
  if (text.find_first_of(" .,") == std::string::npos && !entry.empty()) {
    const auto longer = item.index(std::string(entry) + " " + text);
    require(longer && isCutFront(choices[*longer], std::string(entry) + " " + text),
            "an entry with more text behind a blank is still found");
  }
  return 0;
}
