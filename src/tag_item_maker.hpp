#pragma once

#include <lorvane/tag_item.hpp>

#include <utility>

namespace lorvane::detail {

// The one door to TagItem's constructor: the catalogue's generated sources make their items
// through it, and tests make small hand-made ones. Applications cannot reach it.
struct TagItemMaker {
  static TagItem make(int index, TagName name, TagType type, int count, bool isList,
                      bool isWritable, bool isFlatten, bool isBinary, bool isUnsafe,
                      TagItem::Choices choices, const TagStrings& strings) {
    return TagItem(index, std::move(name), type, count, isList, isWritable, isFlatten, isBinary,
                   isUnsafe, choices, strings);
  }
};

}  // namespace lorvane::detail
