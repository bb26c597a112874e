// Tag names as users type them and as the tool prints them with its groups. Whatever the text,
// a parsed name reads back as itself from its raw form; names that are equal hash and order as
// equal; and the tool-group mapping keeps the tag's own name, files maker notes under the
// maker and only ever finds the catalogue item of the name it was given.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include <lorvane/tag_item.hpp>
#include <lorvane/tag_name.hpp>
#include <lorvane/tool_groups.hpp>

#include "fuzz_check.hpp"

namespace {

using lorvane::TagName;
using lorvane::fuzz::require;

void checkParse(std::string_view text) {
  const auto name = TagName::parse(text);
  require(name.has_value() == (text.find(':') != std::string_view::npos),
          "a raw name parses exactly when it holds a colon");
  if (!name) {
    return;
  }
  require(name->stream().rawValue().find(':') == std::string::npos,
          "the stream ends at the first colon");
  require(text.find(name->stream().rawValue()) != std::string_view::npos &&
              text.find(name->key().rawValue()) != std::string_view::npos,
          "both parts are pieces of the text");
  const auto again = TagName::parse(name->rawValue());
  require(again && again->stream().rawValue() == name->stream().rawValue() &&
              again->key().rawValue() == name->key().rawValue(),
          "a parsed name reads back from its raw value byte for byte");
}

void checkEquality(const TagName& a, const TagName& b) {
  const bool equal = a == b;
  require(equal == ((a <=> b) == 0), "equality and order agree");
  require(!equal || std::hash<TagName>{}(a) == std::hash<TagName>{}(b), "equal names hash alike");
  require(((a <=> b) < 0) == ((b <=> a) > 0), "order is antisymmetric");
}

void checkToolName(std::string_view text) {
  const auto parts = lorvane::ToolGroupedName::parse(text);
  const auto name = lorvane::toolTagName(text);
  require(parts.has_value() == name.has_value(), "the mapping takes what the split takes");
  const lorvane::TagItem* item = lorvane::findToolTag(text);
  if (!parts) {
    require(item == nullptr, "a name the split refuses finds no item");
    return;
  }
  std::string joined(parts->family0);
  if (!parts->family1.empty()) {
    joined.append(":").append(parts->family1);
  }
  joined.append(":").append(parts->tag);
  require(joined == text, "the parts make up the whole name");
  require(parts->tag.find(':') == std::string_view::npos, "the tag is behind the last colon");
  require(name->key().rawValue() == parts->tag, "the key is the tool's tag name unchanged");
  const std::string_view expectedStream =
      parts->family0 == "MakerNotes" && !parts->family1.empty() ? parts->family1 : parts->family0;
  require(name->stream().rawValue() == expectedStream,
          "maker notes go under the maker, all else under family 0");
  if (item) {
    require(lorvane::TagItem::find(item->name()) == item, "the item is the catalogue's own");
    require(item->key() == lorvane::TagKey(parts->tag), "the item has the tool's tag name");
    require(item->stream() == lorvane::TagStream(parts->family1) ||
                (parts->family0 != "MakerNotes" &&
                 item->stream() == lorvane::TagStream(parts->family0)),
            "the item lives in one of the name's groups, maker notes only under the maker");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider provider(data, size);
  const std::string first = provider.ConsumeRandomLengthString();
  const std::string second = provider.ConsumeRemainingBytesAsString();
  for (const std::string_view text : {std::string_view(first), std::string_view(second)}) {
    checkParse(text);
    checkToolName(text);
  }
  const auto a = TagName::parse(first);
  const auto b = TagName::parse(second);
  if (a && b) {
    checkEquality(*a, *b);
    checkEquality(*a, *a);
  }
  return 0;
}
