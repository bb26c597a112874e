#pragma once

// From ExifTool's group names to the catalogue's streams.
//
// ExifTool files every tag in groups of several families: family 0 is the general group
// ("EXIF", "XMP", "MakerNotes", "File", "APP6"), family 1 the specific one ("IFD0", "XMP-dc",
// "Canon", "System", "GoPro"). The catalogue files a tag under its family-0 group, except maker
// notes, which it files under the maker's family-1 group ("Canon", "Nikon", "Sony", ...), and
// tags whose family-1 group is a stream of its own (GoPro tags in a JPEG's APP6 segment, Canon
// tags in a CR3's tracks, CIFF data inside a JPEG). With "-G0:1" the tool prints names such as
// "EXIF:IFD0:Orientation", "MakerNotes:Canon:LensType", "APP6:GoPro:DeviceName" or, where both
// families agree, "File:FileType".
//
//   TagName name = *toolTagName("MakerNotes:Canon:LensType");   // "Canon:LensType"
//   const TagItem* item = findToolTag("APP6:GoPro:DeviceName");  // GoPro:DeviceName

#include <optional>
#include <string_view>

#include <lorvane/tag_item.hpp>
#include <lorvane/tag_name.hpp>
#include <lorvane/tag_stream.hpp>

namespace lorvane {

// A name as the tool prints it with "-G0:1" or "-G0", cut into its parts (views into the text).
struct ToolGroupedName {
  std::string_view family0;  // "EXIF"
  std::string_view family1;  // "IFD0"; empty where the tool printed one group only
  std::string_view tag;      // "Orientation"

  // Nothing for a name without a group ("SourceFile") or with an empty part.
  static std::optional<ToolGroupedName> parse(std::string_view groupedName);
};

// The catalogue stream of a tag in these groups by the rule alone; family1 may be empty.
TagStream toolGroupStream(std::string_view family0, std::string_view family1);

// The catalogue name of a tag as printed with "-G0:1" or "-G0" ("Group0[:Group1]:Tag") by the
// rule of toolGroupStream, or nothing for a name that ToolGroupedName::parse refuses.
std::optional<TagName> toolTagName(std::string_view groupedName);

// The catalogue's item of a tag as the tool printed its name, or nothing when the catalogue
// has no such tag. A family-1 group that is a stream with this key wins over family 0 (it is
// the more specific of the two); maker notes are only ever looked up under their family 1.
const TagItem* findToolTag(std::string_view groupedName);
const TagItem* findToolTag(const ToolGroupedName& name);

}  // namespace lorvane
