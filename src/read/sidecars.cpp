#include "read/sidecars.hpp"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>

#include <lorvane/arguments_maker.hpp>
#include <lorvane/tag_item.hpp>
#include <lorvane/tag_name.hpp>

namespace lorvane::detail {
namespace {

namespace fs = std::filesystem;

bool isXmp(const FileTag& tag) { return tag.group == "XMP" || tag.group.starts_with("XMP:"); }

std::string key(const FileTag& tag) { return tag.group + '\n' + tag.name; }

std::string fileType(const FileTags& file) {
  for (const auto& tag : file.tags) {
    if (tag.group == "File" && tag.name == "FileType") {
      return tag.value.joined();
    }
  }
  return {};
}

// IPTC's names whose XMP counterpart (IPTC Core) is named otherwise; every other IPTC tag has
// none. EXIF's tags have the same name in XMP's tiff and exif schemas.
constexpr std::pair<std::string_view, std::string_view> iptcCounterparts[] = {
    {"By-line", "Creator"},
    {"By-lineTitle", "AuthorsPosition"},
    {"Caption-Abstract", "Description"},
    {"Category", "Category"},
    {"City", "City"},
    {"CopyrightNotice", "Rights"},
    {"Country-PrimaryLocationCode", "CountryCode"},
    {"Country-PrimaryLocationName", "Country"},
    {"Credit", "Credit"},
    {"DateCreated", "DateCreated"},
    {"Headline", "Headline"},
    {"Keywords", "Subject"},
    {"ObjectName", "Title"},
    {"OriginalTransmissionReference", "TransmissionReference"},
    {"Province-State", "State"},
    {"Source", "Source"},
    {"SpecialInstructions", "Instructions"},
    {"Sub-location", "Location"},
    {"SupplementalCategories", "SupplementalCategories"},
    {"Urgency", "Urgency"},
    {"Writer-Editor", "CaptionWriter"},
};

const TagItem* xmpCounterpart(const TagItem& item) {
  const std::string_view stream = item.stream().rawValue();
  std::string_view name = item.key().rawValue();
  if (stream == "IPTC") {
    name = {};
    for (const auto& [iptc, xmp] : iptcCounterparts) {
      if (iptc == item.key().rawValue()) {
        name = xmp;
      }
    }
  } else if (stream != "EXIF") {
    return nullptr;
  }
  if (name.empty()) {
    return nullptr;
  }
  const auto counterpart = TagName::parse("XMP:" + std::string(name));
  const TagItem* found = counterpart ? TagItem::find(*counterpart) : nullptr;
  return found != nullptr && found->isWritable() ? found : nullptr;
}

}  // namespace

std::vector<std::string> sidecarNames(const std::string& file) {
  std::vector<std::string> names = {file + ".xmp"};
  const fs::path path(file);
  if (path.has_extension() && path.has_stem()) {
    names.push_back(fs::path(path).replace_extension(".xmp").string());
  }
  std::erase(names, file);
  return names;
}

std::vector<std::string> existingSidecars(const std::string& file) {
  std::vector<std::string> found;
  for (auto& name : sidecarNames(file)) {
    std::error_code error;
    if (fs::exists(name, error) && !fs::is_directory(name, error)) {
      found.push_back(std::move(name));
    }
  }
  return found;
}

void mergeSidecar(FileTags& file, FileTags&& sidecar) {
  if (sidecar.error) {
    file.warnings.push_back("sidecar " + sidecar.file + ": " + *sidecar.error);
    return;
  }
  if (const std::string type = fileType(sidecar); type != "XMP") {
    file.warnings.push_back("sidecar " + sidecar.file + ": ExifTool reads it as " +
                            (type.empty() ? std::string("no known format") : type) +
                            ", not as XMP");
    return;
  }
  file.sidecars.push_back(sidecar.file);
  // The sidecar's tags by name, each list in the sidecar's order.
  std::unordered_map<std::string, std::vector<FileTag>> byName;
  std::vector<std::string> order;
  for (auto& tag : sidecar.tags) {
    if (!isXmp(tag)) {
      continue;
    }
    tag.origin = sidecar.file;
    auto [entry, isNew] = byName.try_emplace(key(tag));
    if (isNew) {
      order.push_back(entry->first);
    }
    entry->second.push_back(std::move(tag));
  }
  std::vector<FileTag> merged;
  merged.reserve(file.tags.size() + sidecar.tags.size());
  for (auto& tag : file.tags) {
    if (tag.origin.empty() && !byName.empty()) {
      if (const auto found = byName.find(key(tag)); found != byName.end()) {
        for (auto& fromSidecar : found->second) {
          merged.push_back(std::move(fromSidecar));
        }
        found->second.clear();
      }
    }
    merged.push_back(std::move(tag));
  }
  for (const auto& name : order) {
    for (auto& fromSidecar : byName[name]) {
      merged.push_back(std::move(fromSidecar));
    }
  }
  file.tags = std::move(merged);
}

FileTags makeFileWithSidecars(const std::string& file, std::string_view toolPath,
                              const std::vector<std::string>& sidecars, const ToolAnswer& answer,
                              const CatalogueTexts& texts) {
  std::vector<FileTags> read = makeToolFileTags(answer.json, texts);
  // Each file as given, with what the tool said of it alone.
  const auto take = [&](const std::string& given, std::string_view path) {
    FileTags result{given, std::nullopt, {}};
    for (auto& entry : read) {
      if (entry.file == path) {
        result = std::move(entry);
        result.file = given;
        entry.file.clear();
        break;
      }
    }
    const std::string tail = " - " + std::string(path);
    std::string message;
    for (const auto& line : answer.messages) {
      const bool aboutSidecar = std::any_of(sidecars.begin(), sidecars.end(), [&](auto& name) {
        return line.ends_with(" - " + ETInput::ArgumentsMaker::sourceArgument(name));
      });
      if (path == toolPath ? !aboutSidecar : line.ends_with(tail)) {
        message.append(message.empty() ? "" : "\n").append(line);
      }
    }
    if (!message.empty() && !result.error) {
      result.error = messageAbout(message, path);
    }
    if (result.tags.empty() && !result.error) {
      result.error = "not read";
    }
    return result;
  };
  FileTags merged = take(file, toolPath);
  for (const auto& sidecar : sidecars) {
    mergeSidecar(merged, take(sidecar, ETInput::ArgumentsMaker::sourceArgument(sidecar)));
  }
  return merged;
}

std::vector<FileTags> mergeFolderSidecars(std::vector<FileTags>&& files) {
  std::map<std::string, std::size_t, std::less<>> indexOf;
  for (std::size_t i = 0; i < files.size(); ++i) {
    indexOf.emplace(files[i].file, i);
  }
  // Which file's sidecars stand where; a sidecar may belong to two files (photo.xmp to
  // photo.cr2 and photo.jpg).
  std::vector<std::vector<std::size_t>> sidecarsOf(files.size());
  std::set<std::size_t> taken;
  for (std::size_t i = 0; i < files.size(); ++i) {
    for (const auto& name : sidecarNames(files[i].file)) {
      if (const auto found = indexOf.find(name); found != indexOf.end() && found->second != i) {
        sidecarsOf[i].push_back(found->second);
        taken.insert(found->second);
      }
    }
  }
  std::vector<FileTags> result;
  result.reserve(files.size() - taken.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (taken.contains(i)) {
      continue;
    }
    for (const std::size_t sidecar : sidecarsOf[i]) {
      mergeSidecar(files[i], FileTags(files[sidecar]));
    }
    result.push_back(std::move(files[i]));
  }
  return result;
}

std::variant<std::vector<std::string>, std::string> sidecarArguments(
    std::span<const TagAssignment> assignments) {
  std::vector<std::string> arguments;
  for (const auto& assignment : assignments) {
    TagAssignment mapped = assignment;
    if (assignment.item->stream().rawValue() != "XMP") {
      mapped.item = xmpCounterpart(*assignment.item);
      if (mapped.item == nullptr) {
        return std::string(assignment.item->name().rawValue()) +
               " has no XMP counterpart in the catalogue to write to the sidecar";
      }
    }
    for (auto& argument : mapped.toolArguments()) {
      arguments.push_back(std::move(argument));
    }
  }
  return arguments;
}

}  // namespace lorvane::detail
