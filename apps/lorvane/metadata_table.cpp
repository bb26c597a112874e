#include "metadata_table.hpp"

#include <algorithm>
#include <ostream>
#include <string_view>

#include <nlohmann/json.hpp>

#include <lorvane/lorvane.hpp>

namespace lorvane::show {
namespace {

// The value as the tool meant it: strings as they stand, lists joined like the tool's own
// "-sep , " output, numbers in the JSON's own notation.
std::string valueText(const nlohmann::ordered_json& value) {
  if (value.is_string()) {
    return value.get<std::string>();
  }
  if (value.is_array()) {
    std::string joined;
    for (const auto& element : value) {
      if (!joined.empty()) {
        joined += ", ";
      }
      joined += valueText(element);
    }
    return joined;
  }
  return value.dump();
}

MetadataRow makeRow(const TagName& name, const nlohmann::ordered_json& value) {
  MetadataRow row;
  row.value = valueText(value);
  const TagItem* item = TagItem::find(name);
  if (item == nullptr) {
    row.title = name.key().rawValue();
    return row;
  }
  row.isKnown = true;
  row.title = item->localizedKey();
  if (!value.is_array() && !value.is_object()) {
    if (const auto position = item->index(row.value)) {
      row.label = item->localizedChoice(*position);
    }
  }
  return row;
}

FileMetadata makeFileMetadata(const nlohmann::ordered_json& object) {
  FileMetadata file;
  for (const auto& [groupedName, value] : object.items()) {
    if (groupedName == "SourceFile") {
      file.path = value.get<std::string>();
      continue;
    }
    if (groupedName == "ExifTool:Error") {
      file.error = valueText(value);
    }
    const auto name = toolTagName(groupedName);
    if (!name) {
      continue;
    }
    const std::string stream(name->stream().rawValue());
    auto section = std::find_if(file.sections.begin(), file.sections.end(),
                                [&](const StreamSection& s) { return s.stream == stream; });
    if (section == file.sections.end()) {
      section = file.sections.insert(file.sections.end(), StreamSection{stream, {}});
    }
    section->rows.push_back(makeRow(*name, value));
  }
  return file;
}

// Columns line up by characters, not bytes, so that titles in any language align.
std::size_t displayWidth(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

ETInput makeToolInput(const std::vector<std::string>& files, std::optional<ETLanguage> language) {
  ETInput input;
  input.addArguments(files, [&](const std::string& file, ETInput::ArgumentsMaker& maker) {
    maker.additional = {"-json", "-G0:1"};
    maker.enableRawValues = true;
    maker.enableSeparator = false;  // lists stay JSON arrays
    maker.extractsBinaries = false;
    maker.extractsEmbedded = false;
    maker.language = language;
    maker.sourcePath = file;
  });
  return input;
}

std::vector<FileMetadata> makeMetadataTables(const nlohmann::ordered_json& toolOutput) {
  std::vector<FileMetadata> files;
  for (const auto& object : toolOutput) {
    files.push_back(makeFileMetadata(object));
  }
  return files;
}

void printMetadata(std::ostream& out, const FileMetadata& file) {
  std::size_t titleWidth = 0;
  for (const auto& section : file.sections) {
    for (const auto& row : section.rows) {
      titleWidth = std::max(titleWidth, displayWidth(row.title));
    }
  }
  out << "== " << file.path << "\n";
  for (const auto& section : file.sections) {
    out << section.stream << "\n";
    for (const auto& row : section.rows) {
      out << "  " << row.title << std::string(titleWidth - displayWidth(row.title) + 2, ' ')
          << row.value;
      if (!row.label.empty() && row.label != row.value) {
        out << " (" << row.label << ")";
      }
      out << "\n";
    }
  }
}

}  // namespace lorvane::show
