#pragma once

#include <lorvane/tag_item.hpp>

namespace lorvane::detail {

// The one door to TagItem's constructor: the catalogue's generated rows make their items
// through it, and tests make small hand-made ones. Applications cannot reach it. The fields
// are named, so that an item reads as what it is:
//
//   TagItemMaker::make({.name = TagName("EXIF", "Orientation"), .type = TagType::int16u,
//                       .isWritable = true, .choices = choices, .strings = &strings});
struct TagItemMaker {
  struct Fields {
    int index = 0;
    TagName name{};
    TagType type = TagType::string;
    int count = 0;
    bool isList = false;
    bool isWritable = false;
    bool isFlatten = false;
    bool isBinary = false;
    bool isUnsafe = false;
    TagItem::Choices choices{};
    const TagStrings* strings = nullptr;  // must be given: every item has its stream's texts
  };

  static TagItem make(const Fields& fields) {
    return TagItem(fields.index, fields.name, fields.type, fields.count, fields.isList,
                   fields.isWritable, fields.isFlatten, fields.isBinary, fields.isUnsafe,
                   fields.choices, *fields.strings);
  }
};

}  // namespace lorvane::detail
