#pragma once

#include <string_view>

#include <lorvane/tag_item.hpp>

#include "catalogue/catalogue_rows.hpp"

namespace lorvane::detail {

// The catalogue streams that findToolTag looks a tag of one pair of tool groups up in, found
// once for the pair: a file's answer names the same few groups for all of its tags.
class ToolGroupStreams {
public:
  ToolGroupStreams(std::string_view family0, std::string_view family1);

  // The item of this key in the family-1 stream, else in the family-0 stream.
  const TagItem* find(std::string_view key) const;

private:
  StreamTags* specific_ = nullptr;
  StreamTags* general_ = nullptr;
};

}  // namespace lorvane::detail
