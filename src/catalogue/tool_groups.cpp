#include <lorvane/tool_groups.hpp>

#include <lorvane/canonical_text.hpp>

#include "text/ascii_text.hpp"
#include "catalogue/tool_group_streams.hpp"

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
  return detail::ToolGroupStreams(name.family0, name.family1).find(name.tag);
}

const TagItem* findToolTag(std::string_view groupedName) {
  const auto name = ToolGroupedName::parse(groupedName);
  return name ? findToolTag(*name) : nullptr;
}

namespace detail {
namespace {

// The catalogue's names are ASCII, hence in NFC: a name in any other form is looked up once it
// is in NFC too, as TagItem::find does.
template <class Lookup>
auto inCanonicalForm(std::string_view name, Lookup lookup) {
  return isAscii(name) ? lookup(name) : lookup(canonicalForm(name));
}

StreamTags* catalogueStream(std::string_view stream) {
  return inCanonicalForm(stream, [](std::string_view name) { return catalogueIndex.tagsOf(name); });
}

}  // namespace

ToolGroupStreams::ToolGroupStreams(std::string_view family0, std::string_view family1) {
  if (!family1.empty() && family1 != family0) {
    specific_ = catalogueStream(family1);
  }
  if (family0 != "MakerNotes") {
    general_ = catalogueStream(family0);
  }
}

const TagItem* ToolGroupStreams::find(std::string_view key) const {
  return inCanonicalForm(key, [this](std::string_view name) {
    const TagItem* item = specific_ != nullptr ? specific_->find(name) : nullptr;
    return item != nullptr || general_ == nullptr ? item : general_->find(name);
  });
}

}  // namespace detail
}  // namespace lorvane
