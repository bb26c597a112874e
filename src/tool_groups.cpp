#include <lorvane/tool_groups.hpp>

namespace lorvane {

TagStream toolGroupStream(std::string_view family0, std::string_view family1) {
  if (family0 == "MakerNotes" && !family1.empty()) {
    return TagStream(family1);
  }
  return TagStream(family0);
}

std::optional<TagName> toolTagName(std::string_view groupedName) {
  const auto firstColon = groupedName.find(':');
  const auto lastColon = groupedName.rfind(':');
  if (firstColon == std::string_view::npos) {
    return std::nullopt;
  }
  const auto family0 = groupedName.substr(0, firstColon);
  const auto family1 = firstColon == lastColon
                           ? std::string_view()
                           : groupedName.substr(firstColon + 1, lastColon - firstColon - 1);
  const auto tag = groupedName.substr(lastColon + 1);
  if (family0.empty() || tag.empty() || (firstColon != lastColon && family1.empty())) {
    return std::nullopt;
  }
  return TagName(toolGroupStream(family0, family1), TagKey(tag));
}

}  // namespace lorvane
