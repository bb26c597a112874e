#include <lorvane/tool_groups.hpp>

namespace lorvane {

std::optional<ToolGroupedName> ToolGroupedName::parse(std::string_view groupedName) {
  const auto firstColon = groupedName.find(':');
  const auto lastColon = groupedName.rfind(':');
  if (firstColon == std::string_view::npos) {
    return std::nullopt;
  }
  ToolGroupedName name;
  name.family0 = groupedName.substr(0, firstColon);
  if (firstColon != lastColon) {
    name.family1 = groupedName.substr(firstColon + 1, lastColon - firstColon - 1);
  }
  name.tag = groupedName.substr(lastColon + 1);
  if (name.family0.empty() || name.tag.empty() ||
      (firstColon != lastColon && name.family1.empty())) {
    return std::nullopt;
  }
  return name;
}

TagStream toolGroupStream(std::string_view family0, std::string_view family1) {
  if (family0 == "MakerNotes" && !family1.empty()) {
    return TagStream(family1);
  }
  return TagStream(family0);
}

std::optional<TagName> toolTagName(std::string_view groupedName) {
  const auto name = ToolGroupedName::parse(groupedName);
  if (!name) {
    return std::nullopt;
  }
  return TagName(toolGroupStream(name->family0, name->family1), TagKey(name->tag));
}

const TagItem* findToolTag(const ToolGroupedName& name) {
  const TagKey key(name.tag);
  if (!name.family1.empty() && name.family1 != name.family0) {
    if (const TagItem* item = TagItem::find(TagName(TagStream(name.family1), key))) {
      return item;
    }
  }
  if (name.family0 == "MakerNotes") {
    return nullptr;
  }
  return TagItem::find(TagName(TagStream(name.family0), key));
}

const TagItem* findToolTag(std::string_view groupedName) {
  const auto name = ToolGroupedName::parse(groupedName);
  return name ? findToolTag(*name) : nullptr;
}

}  // namespace lorvane
