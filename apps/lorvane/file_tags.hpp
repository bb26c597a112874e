#pragma once

// What `lorvane show` makes of the tool's long JSON ("-j -l -G0:1"): per file, one entry per
// tag the tool reported, with the printed and the raw value exactly as the tool wrote them,
// the catalogue's entry where it has the tag, and a title in the chosen language.

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <lorvane/tag_item.hpp>

namespace lorvane::app {

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
};

struct FileTags {
  std::string file;                  // as given on the command line
  std::optional<std::string> error;  // the tool's error for this file
  std::vector<FileTag> tags;         // in the tool's order
};

// The objects of the tool's JSON array, one per file it read, and its messages that name no
// file object ("Error: File not found - x.jpg").
struct ToolReading {
  std::string text;  // the JSON as the tool wrote it
  std::vector<nlohmann::ordered_json> objects;
  std::vector<std::string> messages;
};

// One entry per file of `files`, in that order: the objects whose SourceFile is that file (or
// lies in it, for a folder), or the tool's message about it as its error.
std::vector<FileTags> makeFileTags(const std::vector<std::string>& files,
                                   const ToolReading& reading);

// The same grouped by argument: entry i holds what files[i] gave (several for a folder).
std::vector<std::vector<FileTags>> makeFileTagsPerArgument(const std::vector<std::string>& files,
                                                           const ToolReading& reading);

// The tool's messages that name none of the files: makeFileTags has no place for them.
std::vector<std::string> messagesAboutNoFile(const std::vector<std::string>& files,
                                             const ToolReading& reading);

// `lorvane show --json`: one object per file, {"file", "error" (only when there is one),
// "tags": [{"group", "name", "stream" (or null), "title", "value", "raw"}]}; a list value is an
// array of texts, every other value one text.
nlohmann::ordered_json makeFileTagsJson(const std::vector<FileTags>& files);

}  // namespace lorvane::app
