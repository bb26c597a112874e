#pragma once

// From ExifTool's group names to the catalogue's streams.
//
// ExifTool files every tag in groups of several families: family 0 is the general group
// ("EXIF", "XMP", "MakerNotes", "File"), family 1 the specific one ("IFD0", "XMP-dc", "Canon",
// "System"). The catalogue files a tag under its family-0 group, except maker notes, which it
// files under the maker's family-1 group ("Canon", "Nikon", "Sony", ...). With "-G0:1" the tool
// prints names such as "EXIF:IFD0:Orientation", "MakerNotes:Canon:LensType" or, where both
// families agree, "File:FileType".
//
//   TagName name = *toolTagName("MakerNotes:Canon:LensType");   // "Canon:LensType"
//   const TagItem* item = TagItem::find(name);

#include <optional>
#include <string_view>

#include <lorvane/tag_name.hpp>
#include <lorvane/tag_stream.hpp>

namespace lorvane {

// The catalogue stream of a tag in these groups; family1 may be empty.
TagStream toolGroupStream(std::string_view family0, std::string_view family1);

// The catalogue name of a tag as printed with "-G0:1" or "-G0" ("Group0[:Group1]:Tag"),
// or nothing for a name without a group ("SourceFile") or with an empty part.
std::optional<TagName> toolTagName(std::string_view groupedName);

}  // namespace lorvane
