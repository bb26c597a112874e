#pragma once

// What `lorvane show` makes of ExifTool's JSON: per file, the tags grouped by catalogue stream,
// each with its title and, where the catalogue knows the tag's choices, the label of its value,
// both in the catalogue's language. Kept apart from main() so that tests can drive it.

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include <lorvane/et_input.hpp>
#include <lorvane/et_language.hpp>

namespace lorvane::show {

struct MetadataRow {
  std::string title;   // the catalogue's title, or the tool's tag name for an unknown tag
  std::string value;   // the raw value as the tool printed it
  std::string label;   // the localised label of the value, empty when there is none
  bool isKnown = false;  // the catalogue has the tag
};

struct StreamSection {
  std::string stream;  // the catalogue stream, or the tool's group when the catalogue has none
  std::vector<MetadataRow> rows;
};

struct FileMetadata {
  std::string path;
  std::vector<StreamSection> sections;  // in the order the tool printed them
  std::optional<std::string> error;     // the tool's error for this file, if it had one
};

// The run that reads all files at once: JSON with family 0 and 1 group names ("-G0:1") and
// raw values ("-n"), in the tool's language `language` when one is given.
ETInput makeToolInput(const std::vector<std::string>& files, std::optional<ETLanguage> language);

// Reads the output of `exiftool -json -G0:1 -n` (an array of one object per file).
// Throws nlohmann::json::exception when the text is not such JSON.
std::vector<FileMetadata> makeMetadataTables(const nlohmann::ordered_json& toolOutput);

// One table per file: a heading with the path, then per stream its name and aligned rows.
void printMetadata(std::ostream& out, const FileMetadata& file);

}  // namespace lorvane::show
