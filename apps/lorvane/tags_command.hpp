#pragma once

// `lorvane tags`: looks tags up in the catalogue, without running the tool.

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include <lorvane/tag_item.hpp>

namespace lorvane::app {

struct TagsRequest {
  std::vector<std::string> patterns;
  bool listsChoices = false;  // every value with its label, also for several tags
  bool printsJson = false;
};

// The catalogue's tags a pattern names, in catalogue order: a full name ("EXIF:Orientation"),
// a key in any stream ("Orientation"), either with the wildcards "*" and "?" ("Canon:*Lens*"),
// or words that all stand in the tag's localised title ("Ausrichtung").
std::vector<const TagItem*> findTags(const std::string& pattern);

// The names of the item's flags that are set, of "list", "writable", "flatten", "binary" and
// "unsafe", in that order.
std::vector<std::string_view> tagFlagNames(const TagItem& item);

// 0 when something matched, 1 when nothing did.
int runTags(const TagsRequest& request, std::ostream& out, std::ostream& err);

}  // namespace lorvane::app
