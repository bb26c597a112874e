#include "read/tool_answer.hpp"

#include <algorithm>
#include <optional>

#include <lorvane/text.hpp>
#include <lorvane/tool_groups.hpp>

#include "catalogue/alternatives.hpp"
#include "catalogue/tool_group_streams.hpp"
#include "read/tool_json.hpp"

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
  const auto choices = item.choices();
  const auto entry = std::find(choices.begin(), choices.end(), value.texts.front());
  if (entry == choices.end()) {
    return {};
  }
  return texts.label(item, static_cast<std::size_t>(entry - choices.begin()));
}

// What the tool wrote of one tag: {"desc": ..., "num": ..., "val": ...}.
struct TagEntry {
  ToolGroupedName parts;
  TagValue value;
  std::optional<TagValue> raw;
  std::optional<std::string> description;  // only a text counts
};

FileTag makeTag(TagEntry&& entry, const ToolGroupStreams& streams, const CatalogueTexts& texts) {
  const ToolGroupedName& parts = entry.parts;
  FileTag tag;
  tag.group = std::string(parts.family0);
  if (!parts.family1.empty()) {
    tag.group.append(":").append(parts.family1);
  }
  tag.family1 = std::string(parts.family1);
  tag.name = std::string(parts.tag);
  tag.item = streams.find(parts.tag);
  tag.section = tag.item != nullptr
                    ? std::string(tag.item->stream().rawValue())
                    : std::string(toolGroupStream(parts.family0, parts.family1).rawValue());
  tag.value = std::move(entry.value);
  tag.raw = entry.raw ? std::move(*entry.raw) : tag.value;
  if (tag.item != nullptr) {
    tag.title = texts.title(*tag.item);
    if (!entry.raw) {
      tag.label = catalogueLabel(*tag.item, tag.value, texts);
    }
  }
  // The tool knows which of the catalogue's alternative titles this file's tag has.
  if (tag.item == nullptr || (hasAlternatives(tag.title) && entry.description)) {
    tag.title = entry.description ? std::move(*entry.description) : tag.name;
  }
  return tag;
}

// A file of the answer, with the path the tool named it by.
struct ReadFile {
  FileTags tags;
  std::string source;
};

// The tool's answer, [{"SourceFile": ..., "Group:Tag": {"desc", "num", "val"}, ...}, ...], read
// into tags as it is parsed (nlohmann's SAX interface) instead of through a whole document:
// most of a document's cost is its objects, whose keys are copied each time one grows, and a
// file's answer is read as often as files are. Only a tag's value that holds a list or an
// object is made into JSON on its own. What has another shape is passed over, as it would be
// in a document: an entry of the list that is no object is a file without tags, a name that
// is no tool name or whose entry is no object is no tag.
class AnswerReader : public nlohmann::json_sax<Json> {
public:
  explicit AnswerReader(const CatalogueTexts& texts) : texts_(texts) {}

  // The files in order; nothing when the answer is no list.
  std::optional<std::vector<ReadFile>> files;
  // Why the text is no JSON.
  std::optional<std::string> error;

  bool null() override { return scalar(Json(nullptr)); }
  bool boolean(bool value) override { return scalar(Json(value)); }
  // Numbers come as texts (withQuotedNumbers); any other is taken as its text all the same.
  bool number_integer(Json::number_integer_t value) override {
    return scalar(Json(std::to_string(value)));
  }
  bool number_unsigned(Json::number_unsigned_t value) override {
    return scalar(Json(std::to_string(value)));
  }
  bool number_float(Json::number_float_t, const std::string& text) override {
    return scalar(Json(text));
  }
  bool binary(Json::binary_t&) override { return scalar(Json(nullptr)); }
  bool string(std::string& text) override {
    if (skipped_ > 0 || !building_.empty()) {
      return scalar(Json(std::move(text)));
    }
    if (level_ == Level::file && key_ == "SourceFile") {
      files->back().source = std::move(text);
    } else if (level_ == Level::entry && field_ != Field::none) {
      if (field_ == Field::description) {
        entry_.description = std::move(text);
      } else {
        (field_ == Field::value ? entry_.value : entry_.raw.emplace()) = {{std::move(text)}, false};
      }
    } else if (level_ == Level::files) {
      files->push_back({});
    }
    return true;
  }

  bool start_object(std::size_t) override { return open(Json::object()); }
  bool start_array(std::size_t) override { return open(Json::array()); }
  bool key(std::string& name) override {
    if (skipped_ > 0) {
      return true;
    }
    if (!building_.empty()) {
      building_.back().key = std::move(name);
    } else if (level_ == Level::file) {
      key_ = std::move(name);
    } else if (level_ == Level::entry) {
      field_ = name == "val"    ? Field::value
               : name == "num"  ? Field::raw
               : name == "desc" ? Field::description
                                : Field::none;
    }
    return true;
  }
  bool end_object() override { return close(); }
  bool end_array() override { return close(); }

  bool parse_error(std::size_t, const std::string&,
                   const nlohmann::json::exception& problem) override {
    error = problem.what();
    return false;
  }

private:
  // Where the parser is: outside everything, in the list of files, in a file, in a tag's entry.
  enum class Level { top, files, file, entry };
  enum class Field { none, value, raw, description };
  // A list or object within a tag's value, made as it comes.
  struct Building {
    Json container;
    std::string key;  // of the next member, in an object
  };

  // A value that is no text, or any value within a container that is made or passed over.
  bool scalar(Json value) {
    if (skipped_ > 0) {
      return true;
    }
    if (!building_.empty()) {
      add(std::move(value));
    } else if (level_ == Level::entry && field_ != Field::none) {
      take(std::move(value));
    } else if (level_ == Level::files) {
      files->push_back({});
    }
    return true;
  }

  bool open(Json container) {
    const bool isObject = container.is_object();
    if (skipped_ > 0) {
      ++skipped_;
    } else if (!building_.empty() || (level_ == Level::entry && field_ != Field::none)) {
      building_.push_back({std::move(container), {}});
    } else if (level_ == Level::top && !isObject) {
      files.emplace();
      level_ = Level::files;
    } else if (level_ == Level::files && isObject) {
      files->push_back({});
      level_ = Level::file;
    } else if (const auto parts = level_ == Level::file && isObject ? ToolGroupedName::parse(key_)
                                                                    : std::nullopt) {
      entry_ = {*parts, {}, std::nullopt, std::nullopt};  // views into key_, kept until its end
      field_ = Field::none;
      level_ = Level::entry;
    } else {
      if (level_ == Level::files) {
        files->push_back({});
      }
      skipped_ = 1;
    }
    return true;
  }

  bool close() {
    if (skipped_ > 0) {
      --skipped_;
    } else if (!building_.empty()) {
      Json done = std::move(building_.back().container);
      building_.pop_back();
      if (building_.empty()) {
        take(std::move(done));
      } else {
        add(std::move(done));
      }
    } else if (level_ == Level::entry) {
      const ToolGroupStreams& streams = streamsOf(entry_.parts);
      auto tag = makeTag(std::move(entry_), streams, texts_);
      FileTags& file = files->back().tags;
      if (tag.group == "ExifTool" && tag.name == "Error") {
        file.error = tag.value.joined();
      }
      file.tags.push_back(std::move(tag));
      level_ = Level::file;
    } else if (level_ == Level::file) {
      level_ = Level::files;
    } else if (level_ == Level::files) {
      level_ = Level::top;
    }
    return true;
  }

  // The catalogue streams of the tag's groups, looked for again only when they change.
  const ToolGroupStreams& streamsOf(const ToolGroupedName& parts) {
    if (!streams_ || parts.family0 != family0_ || parts.family1 != family1_) {
      family0_ = parts.family0;
      family1_ = parts.family1;
      streams_.emplace(family0_, family1_);
    }
    return *streams_;
  }

  void add(Json value) {
    Building& parent = building_.back();
    if (parent.container.is_object()) {
      parent.container[std::move(parent.key)] = std::move(value);
    } else {
      parent.container.push_back(std::move(value));
    }
  }

  // A whole value of the entry's field.
  void take(Json value) {
    if (field_ == Field::description) {
      entry_.description = value.is_string() ? std::optional(takeText(value)) : std::nullopt;
    } else {
      (field_ == Field::value ? entry_.value : entry_.raw.emplace()) = makeValue(value);
    }
  }

  const CatalogueTexts& texts_;
  Level level_ = Level::top;
  std::size_t skipped_ = 0;  // containers open within one that is passed over
  std::vector<Building> building_;
  std::string key_;  // a file's member being read
  Field field_ = Field::none;
  TagEntry entry_;
  std::string family0_;
  std::string family1_;
  std::optional<ToolGroupStreams> streams_;
};

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

bool namesFilesInOrder(std::string_view json, std::span<const std::string> sources) {
  // Each file's object starts so; a line feed within a JSON string is escaped, so nothing else
  // does.
  constexpr std::string_view key = "{\n  \"SourceFile\": \"";
  std::size_t found = 0;
  for (auto at = json.find(key); at != std::string_view::npos; at = json.find(key, at)) {
    const std::size_t start = at + key.size();
    bool escaped = false;
    std::size_t end = start;
    while (end < json.size() && json[end] != '"') {
      escaped = escaped || json[end] == '\\';
      end += json[end] == '\\' ? 2 : 1;
    }
    if (end >= json.size() || found == sources.size()) {
      return false;
    }
    const std::string_view name = json.substr(start, end - start);
    if (escaped) {
      const auto text = Json::parse(json.substr(start - 1, end - start + 2), nullptr, false);
      if (!text.is_string() || text.get_ref<const std::string&>() != sources[found]) {
        return false;
      }
    } else if (name != sources[found]) {
      return false;
    }
    ++found;
    at = end;
  }
  return found == sources.size();
}

// The answer read into tags, by nlohmann's parser only where the quick one is unsure.
void readAnswer(const std::string& json, std::optional<AnswerReader>& reader,
                const CatalogueTexts& texts) {
  reader.emplace(texts);
  if (json.find_first_not_of(" \t\r\n") != std::string::npos && !readToolJson(json, *reader)) {
    reader.emplace(texts);
    Json::sax_parse(withQuotedNumbers(json), &*reader);
  }
}

std::vector<FileTags> makeToolFileTags(const std::string& json, const CatalogueTexts& texts) {
  std::optional<AnswerReader> answer;
  readAnswer(json, answer, texts);
  AnswerReader& reader = *answer;
  std::vector<FileTags> files;
  if (!reader.error && reader.files) {
    for (auto& [file, source] : *reader.files) {
      file.file = std::move(source);
      files.push_back(std::move(file));
    }
  }
  return files;
}

std::vector<FileTags> makeFileTags(const std::string& given, std::string_view toolPath,
                                   const ToolAnswer& answer, const CatalogueTexts& texts) {
  // A line feed in a file name cuts the tool's message about it: its lines join again first.
  const std::string messages = joinedLines(answer.messages);
  std::optional<AnswerReader> read;
  readAnswer(answer.json, read, texts);
  AnswerReader& reader = *read;
  if (reader.error) {
    return {{given, "ExifTool's output is not the JSON expected: " + *reader.error, {}}};
  }
  if (!reader.files || reader.files->empty()) {
    return {{given, messages.empty() ? "not read" : messageAbout(messages, toolPath), {}}};
  }
  std::vector<FileTags> files;
  files.reserve(reader.files->size());
  for (auto& [file, source] : *reader.files) {
    file.file = given;
    if (liesIn(source, toolPath)) {
      file.file.append(source, toolPath.size());
    }
    files.push_back(std::move(file));
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
