#pragma once

// What a file holds, as ExifTool read it and as the catalogue names it: per file, one entry per
// tag the tool reported, with the printed and the raw value exactly as the tool wrote them (no
// number passes through a double), the catalogue's entry where it has the tag, and a title in
// the reader's language. MetadataReader makes these.

#include <optional>
#include <string>
#include <vector>

namespace lorvane {

// Only pointed to here: its header pulls in the whole generated catalogue, which a unit that
// only reads or writes files needn't compile.
class TagItem;

// A value as text: one text, or the elements of a list.
struct TagValue {
  std::vector<std::string> texts;
  bool isList = false;

  // The elements joined as the tool's own "-sep ', '" output joins them.
  std::string joined() const;
  friend bool operator==(const TagValue&, const TagValue&) = default;
};

struct FileTag {
  std::string group;              // the tool's family 0 and 1 groups, "EXIF:IFD0"
  std::string family1;            // "IFD0"; empty where the tool printed one group
  std::string name;               // the tool's tag name, "Orientation"
  const TagItem* item = nullptr;  // the catalogue's entry, if it has the tag
  std::string section;            // the catalogue stream, or the group the tag belongs to
  std::string title;              // the catalogue's title, else the tool's description
  TagValue value;                 // the tool's printed value
  TagValue raw;                   // the raw value; equal to value where the tool gave none
  std::string label;              // the catalogue's label, only where the tool printed none
  std::string origin = {};        // empty for the file itself, else the sidecar it came from
};

struct FileTags {
  std::string file;                  // as the caller named it (a folder's files by their path)
  std::optional<std::string> error;  // why the file could not be read, or the tool's error
  std::vector<FileTag> tags;         // in the tool's order
  // The sidecars whose XMP tags were read with the file (MetadataReader::Options::sidecars),
  // and what went wrong beside the file's own reading, such as a sidecar that could not be read.
  std::vector<std::string> sidecars = {};
  std::vector<std::string> warnings = {};
};

}  // namespace lorvane
