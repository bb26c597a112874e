#include "file_tags.hpp"

#include <algorithm>
#include <iterator>
#include <map>

#include <lorvane/tool_groups.hpp>

#include "alternatives.hpp"
#include "tool_json.hpp"

namespace lorvane::app {
namespace {

using Json = nlohmann::ordered_json;

TagValue makeValue(const Json& value) {
  TagValue result;
  if (value.is_array()) {
    result.isList = true;
    for (const auto& element : value) {
      result.texts.push_back(scalarText(element));
    }
  } else {
    result.texts.push_back(scalarText(value));
  }
  return result;
}

// The catalogue's label of a raw value the tool printed as it is: only a whole entry of the
// choices counts, never the front of a value of several parts ("0 1 1 2" is no "0").
std::string catalogueLabel(const TagItem& item, const TagValue& value) {
  if (value.isList || value.texts.size() != 1) {
    return {};
  }
  const auto position = item.index(value.texts.front());
  if (!position || item.choices()[*position] != value.texts.front()) {
    return {};
  }
  return item.localizedChoice(*position);
}

std::optional<FileTag> makeTag(const std::string& groupedName, const Json& entry) {
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
    tag.title = tag.item->localizedKey();
    if (raw == entry.end()) {
      tag.label = catalogueLabel(*tag.item, tag.value);
    }
  }
  // The tool knows which of the catalogue's alternative titles this file's tag has.
  if (tag.item == nullptr || (hasAlternatives(tag.title) && hasDescription)) {
    tag.title = hasDescription ? description->get<std::string>() : tag.name;
  }
  return tag;
}

FileTags makeFile(std::string file, const Json& object) {
  FileTags result{std::move(file), std::nullopt, {}};
  for (const auto& [groupedName, entry] : object.items()) {
    if (auto tag = makeTag(groupedName, entry)) {
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

// "Error: File not found - x.jpg": the tool names the file it could not read at the end.
bool namesFile(std::string_view message, std::string_view file) {
  return message.size() > file.size() + 3 && message.ends_with(file) &&
         message.substr(message.size() - file.size() - 3, 3) == " - ";
}

std::optional<std::string> messageAbout(const std::vector<std::string>& messages,
                                        std::string_view file) {
  for (const auto& message : messages) {
    if (namesFile(message, file)) {
      auto text = message.substr(0, message.size() - file.size() - 3);
      if (text.starts_with("Error: ")) {
        text.erase(0, 7);
      }
      return text;
    }
  }
  return std::nullopt;
}

}  // namespace

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

std::vector<std::vector<FileTags>> makeFileTagsPerArgument(const std::vector<std::string>& files,
                                                           const ToolReading& reading) {
  // Each object goes to the first argument that names it and has not had it yet: the same
  // file given twice is read twice; a folder takes every object inside it.
  std::map<std::string, std::vector<std::size_t>, std::less<>> argumentsOfPath;
  for (std::size_t i = 0; i < files.size(); ++i) {
    argumentsOfPath[files[i]].push_back(i);
  }
  std::vector<std::vector<const Json*>> objectsOfArgument(files.size());
  std::map<std::string, std::size_t, std::less<>> takenOfPath;
  std::vector<const Json*> unnamed;
  for (const auto& object : reading.objects) {
    const auto source = object.find("SourceFile");
    if (source == object.end() || !source->is_string()) {
      continue;
    }
    const auto& path = source->get_ref<const std::string&>();
    if (const auto found = argumentsOfPath.find(path); found != argumentsOfPath.end()) {
      auto& taken = takenOfPath[path];
      objectsOfArgument[found->second[std::min(taken, found->second.size() - 1)]].push_back(
          &object);
      ++taken;
      continue;
    }
    const auto folder = std::find_if(files.begin(), files.end(),
                                     [&](const std::string& file) { return liesIn(path, file); });
    if (folder != files.end()) {
      objectsOfArgument[static_cast<std::size_t>(folder - files.begin())].push_back(&object);
    } else {
      unnamed.push_back(&object);
    }
  }
  // The tool prints a name that isn't UTF-8 mended: such an object goes to the first argument
  // that has none, in order.
  for (std::size_t i = 0, next = 0; i < files.size() && next < unnamed.size(); ++i) {
    if (objectsOfArgument[i].empty() && !messageAbout(reading.messages, files[i])) {
      objectsOfArgument[i].push_back(unnamed[next++]);
    }
  }
  std::vector<std::vector<FileTags>> result(files.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (objectsOfArgument[i].empty()) {
      FileTags missing{files[i], messageAbout(reading.messages, files[i]), {}};
      if (!missing.error) {
        missing.error = "not read";
      }
      result[i].push_back(std::move(missing));
      continue;
    }
    for (const Json* object : objectsOfArgument[i]) {
      const auto& source = (*object)["SourceFile"].get_ref<const std::string&>();
      result[i].push_back(makeFile(liesIn(source, files[i]) ? source : files[i], *object));
    }
  }
  return result;
}

std::vector<FileTags> makeFileTags(const std::vector<std::string>& files,
                                   const ToolReading& reading) {
  std::vector<FileTags> result;
  for (auto& group : makeFileTagsPerArgument(files, reading)) {
    std::move(group.begin(), group.end(), std::back_inserter(result));
  }
  return result;
}

std::vector<std::string> messagesAboutNoFile(const std::vector<std::string>& files,
                                             const ToolReading& reading) {
  std::vector<std::string> messages;
  for (const auto& message : reading.messages) {
    if (std::none_of(files.begin(), files.end(),
                     [&](const std::string& file) { return namesFile(message, file); })) {
      messages.push_back(message);
    }
  }
  return messages;
}

namespace {

nlohmann::ordered_json valueJson(const TagValue& value) {
  if (value.isList) {
    return value.texts;
  }
  return value.texts.empty() ? std::string() : value.texts.front();
}

}  // namespace

nlohmann::ordered_json makeFileTagsJson(const std::vector<FileTags>& files) {
  auto json = nlohmann::ordered_json::array();
  for (const auto& file : files) {
    nlohmann::ordered_json object = {{"file", file.file}};
    if (file.error) {
      object["error"] = *file.error;
    }
    auto& tags = object["tags"] = nlohmann::ordered_json::array();
    for (const auto& tag : file.tags) {
      tags.push_back(
          {{"group", tag.group},
           {"name", tag.name},
           {"stream", tag.item != nullptr ? nlohmann::ordered_json(tag.item->stream().rawValue())
                                          : nlohmann::ordered_json(nullptr)},
           {"title", tag.title},
           {"value", valueJson(tag.value)},
           {"raw", valueJson(tag.raw)}});
    }
    json.push_back(std::move(object));
  }
  return json;
}

}  // namespace lorvane::app
