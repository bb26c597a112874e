#include "tool_answer.hpp"

#include <algorithm>
#include <optional>

#include <lorvane/text.hpp>
#include <lorvane/tool_groups.hpp>

#include "alternatives.hpp"
#include "tool_json.hpp"

namespace lorvane {

std::string TagValue::joined() const {
  std::string result;
  for (const auto& text : texts) {
    if (&text != &texts.front()) {
      result += ", ";
    }
    result += text;
  }
  return result;
}

namespace detail {
namespace {

using Json = nlohmann::ordered_json;

// The parsed answer is read once: its strings move into the value instead of being copied.
std::string takeText(Json& value) {
  return value.is_string() ? std::move(value.get_ref<std::string&>()) : scalarText(value);
}

TagValue makeValue(Json& value) {
  TagValue result;
  if (value.is_array()) {
    result.isList = true;
    result.texts.reserve(value.size());
    for (auto& element : value) {
      result.texts.push_back(takeText(element));
    }
  } else {
    result.texts.push_back(takeText(value));
  }
  return result;
}

// The catalogue's label of a raw value the tool printed as it is: only a whole entry of the
// choices counts, never the front of a value of several parts ("0 1 1 2" is no "0").
std::string catalogueLabel(const TagItem& item, const TagValue& value,
                           const CatalogueTexts& texts) {
  if (value.isList || value.texts.size() != 1) {
    return {};
  }
  const auto position = item.index(value.texts.front());
  if (!position || item.choices()[*position] != value.texts.front()) {
    return {};
  }
  return texts.label(item, *position);
}

std::optional<FileTag> makeTag(const std::string& groupedName, Json& entry,
                               const CatalogueTexts& texts) {
  const auto parts = ToolGroupedName::parse(groupedName);
  if (!parts || !entry.is_object()) {
    return std::nullopt;
  }
  FileTag tag;
  tag.group = std::string(parts->family0);
  if (!parts->family1.empty()) {
    tag.group.append(":").append(parts->family1);
  }
  tag.family1 = std::string(parts->family1);
  tag.name = std::string(parts->tag);
  tag.item = findToolTag(*parts);
  tag.section = tag.item != nullptr
                    ? std::string(tag.item->stream().rawValue())
                    : std::string(toolGroupStream(parts->family0, parts->family1).rawValue());
  if (const auto value = entry.find("val"); value != entry.end()) {
    tag.value = makeValue(*value);
  }
  const auto raw = entry.find("num");
  tag.raw = raw != entry.end() ? makeValue(*raw) : tag.value;
  const auto description = entry.find("desc");
  const bool hasDescription = description != entry.end() && description->is_string();
  if (tag.item != nullptr) {
    tag.title = texts.title(*tag.item);
    if (raw == entry.end()) {
      tag.label = catalogueLabel(*tag.item, tag.value, texts);
    }
  }
  // The tool knows which of the catalogue's alternative titles this file's tag has.
  if (tag.item == nullptr || (hasAlternatives(tag.title) && hasDescription)) {
    tag.title = hasDescription ? takeText(*description) : tag.name;
  }
  return tag;
}

FileTags makeFile(std::string file, Json& object, const CatalogueTexts& texts) {
  FileTags result{std::move(file), std::nullopt, {}};
  result.tags.reserve(object.size());
  for (auto& [groupedName, entry] : object.items()) {
    if (auto tag = makeTag(groupedName, entry, texts)) {
      if (tag->group == "ExifTool" && tag->name == "Error") {
        result.error = tag->value.joined();
      }
      result.tags.push_back(std::move(*tag));
    }
  }
  return result;
}

bool liesIn(std::string_view path, std::string_view folder) {
  return path.size() > folder.size() && path.starts_with(folder) &&
         (folder.ends_with('/') || path[folder.size()] == '/');
}

std::string joinedLines(const std::vector<std::string>& lines) {
  std::string text;
  for (const auto& line : lines) {
    text.append(text.empty() ? "" : "\n").append(line);
  }
  return text;
}

}  // namespace

std::string messageAbout(std::string message, std::string_view toolPath) {
  // The message shows the name as a run that keeps invalid text shows it.
  const std::string tail = " - " + mendUTF8(toolPath);
  if (message.size() > tail.size() && message.ends_with(tail)) {
    message.resize(message.size() - tail.size());
  }
  for (std::string_view prefix : {"Error: ", "Warning: "}) {
    if (message.starts_with(prefix)) {
      return message.substr(prefix.size());
    }
  }
  return message;
}

std::vector<FileTags> makeFileTags(const std::string& given, std::string_view toolPath,
                                   const ToolAnswer& answer, const CatalogueTexts& texts) {
  // A line feed in a file name cuts the tool's message about it: its lines join again first.
  const std::string messages = joinedLines(answer.messages);
  Json objects = Json::array();
  try {
    if (answer.json.find_first_not_of(" \t\r\n") != std::string::npos) {
      objects = parseToolJson(answer.json);
    }
  } catch (const nlohmann::json::exception& error) {
    return {
        {given, "ExifTool's output is not the JSON expected: " + std::string(error.what()), {}}};
  }
  if (!objects.is_array() || objects.empty()) {
    return {{given, messages.empty() ? "not read" : messageAbout(messages, toolPath), {}}};
  }
  std::vector<FileTags> files;
  for (auto& object : objects) {
    std::string name = given;
    if (const auto source = object.find("SourceFile");
        source != object.end() && source->is_string()) {
      const auto& path = source->get_ref<const std::string&>();
      if (liesIn(path, toolPath)) {
        name.append(path, toolPath.size());
      }
    }
    files.push_back(makeFile(std::move(name), object, texts));
  }
  // Messages beside a file's JSON say what went wrong with it; beside a folder's files they
  // name the folder.
  if (!messages.empty()) {
    if (files.size() == 1 && !files.front().error) {
      files.front().error = messageAbout(messages, toolPath);
    } else if (files.size() > 1) {
      files.push_back({given, messageAbout(messages, toolPath), {}});
    }
  }
  return files;
}

}  // namespace detail
}  // namespace lorvane
