#include "show_command.hpp"

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <variant>

#include <nlohmann/json.hpp>

#include <lorvane/arguments_maker.hpp>
#include <lorvane/et_output.hpp>
#include <lorvane/et_process.hpp>
#include <lorvane/metadata_reader.hpp>
#include <lorvane/tag_item.hpp>
#include <lorvane/text.hpp>

#include "interruption.hpp"
#include "tag_table.hpp"

namespace lorvane::app {
namespace {

using Json = nlohmann::ordered_json;

void drawProgress(std::ostream& err, double progress) {
  constexpr int width = 40;
  const int filled = std::clamp(static_cast<int>(progress * width + 0.5), 0, width);
  err << "\r[" << std::string(static_cast<std::size_t>(filled), '#')
      << std::string(static_cast<std::size_t>(width - filled), ' ') << "] "
      << static_cast<int>(progress * 100 + 0.5) << "%" << std::flush;
}

Json valueJson(const TagValue& value) {
  if (value.isList) {
    return value.texts;
  }
  return value.texts.empty() ? std::string() : value.texts.front();
}

// {"time", "utc" (where the zone is known), "source", "zoneSource"}.
Json captureTimeJson(const CaptureTime& taken) {
  Json object = {{"time", taken.time.iso8601()}};
  if (const auto utc = taken.time.utc()) {
    object["utc"] = utcText(*utc, taken.time.subseconds);
  }
  object["source"] = taken.source;
  object["zoneSource"] = taken.zoneSource;
  return object;
}

// {"latitude", "longitude", "altitude" (where known), "source"}.
Json locationJson(const GeoLocation& place) {
  Json object = {{"latitude", place.latitude}, {"longitude", place.longitude}};
  if (place.altitude) {
    object["altitude"] = *place.altitude;
  }
  object["source"] = place.source;
  return object;
}

// {"file", "error" (only when there is one), "captureTime" and "location" (where the file has
// them), "tags": [{"group", "name", "stream" (or null), "title", "value", "raw"}]}; a list value
// is an array of texts, every other value one text.
Json fileJson(const FileTags& file) {
  Json object = {{"file", file.file}};
  if (file.error) {
    object["error"] = *file.error;
  }
  if (const auto taken = file.captureTime()) {
    object["captureTime"] = captureTimeJson(*taken);
  }
  if (const auto place = file.location()) {
    object["location"] = locationJson(*place);
  }
  auto& tags = object["tags"] = Json::array();
  for (const auto& tag : file.tags) {
    tags.push_back(
        {{"group", tag.group},
         {"name", tag.name},
         {"stream", tag.item != nullptr ? Json(tag.item->stream().rawValue()) : Json(nullptr)},
         {"title", tag.title},
         {"value", valueJson(tag.value)},
         {"raw", valueJson(tag.raw)}});
    if (!tag.origin.empty()) {
      tags.back()["origin"] = tag.origin;
    }
  }
  if (!file.sidecars.empty()) {
    object["sidecars"] = file.sidecars;
  }
  if (!file.warnings.empty()) {
    object["warnings"] = file.warnings;
  }
  return object;
}

// The tool's JSON with each "SourceFile" named as the user gave the file: the tool was given
// a name that starts with "-" as "./NAME", and names the file so. All else stays as it came.
std::string withGivenNames(std::string_view toolJson, const std::vector<std::string>& files) {
  // The given names of each spelling, in order: the same file given twice is read twice.
  std::map<std::string, std::vector<std::string>, std::less<>> givenOfName;
  for (const auto& file : files) {
    givenOfName[ETInput::ArgumentsMaker::sourceArgument(file)].push_back(file);
  }
  std::map<std::string, std::size_t, std::less<>> taken;
  constexpr std::string_view key = "\"SourceFile\": ";
  std::string result;
  std::size_t copied = 0;
  for (auto at = toolJson.find(key); at != std::string_view::npos; at = toolJson.find(key, at)) {
    at += key.size();
    // The JSON string behind the key, up to its closing quote.
    std::size_t end = at + 1;
    while (end < toolJson.size() && toolJson[end] != '"') {
      end += toolJson[end] == '\\' ? 2 : 1;
    }
    if (at >= toolJson.size() || toolJson[at] != '"' || end >= toolJson.size()) {
      break;
    }
    ++end;
    const auto source = Json::parse(toolJson.substr(at, end - at)).get<std::string>();
    std::optional<std::string> given;
    if (const auto found = givenOfName.find(source); found != givenOfName.end()) {
      given = found->second[std::min(taken[source]++, found->second.size() - 1)];
    } else {
      // A file in a folder: the folder as given, then the rest of the path.
      for (const auto& [name, givens] : givenOfName) {
        if (source.size() > name.size() && source.starts_with(name) &&
            (name.ends_with('/') || source[name.size()] == '/')) {
          given = givens.front() + source.substr(name.size());
          break;
        }
      }
    }
    if (given && *given != source) {
      result.append(toolJson.substr(copied, at - copied));
      result += Json(*given).dump(-1, ' ', false, Json::error_handler_t::replace);
      copied = end;
    }
    at = end;
  }
  result.append(toolJson.substr(copied));
  return result;
}

// A name that isn't UTF-8 comes out mended rather than stopping the output.
std::string dumped(const Json& json, int indent) {
  return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

// The tool's JSON of all files as it came, from one run (several runs would print several
// arrays), and its messages.
int printToolJson(const ShowRequest& request, std::ostream& out, std::ostream& err,
                  const std::function<void(double)>& onProgress) {
  ETInput input;
  input.addArguments(request.files, [&](const std::string& file, ETInput::ArgumentsMaker& maker) {
    maker.additional = {"-json", "-long", "-G0:1"};
    maker.enableSeparator = false;
    maker.extractsBinaries = false;
    maker.extractsEmbedded = false;
    maker.language = request.language;
    maker.sourcePath = file;
  });
  input.keepsInvalidText = true;
  if (onProgress) {
    input.onProgressHandler = [&](ETProcess& process) { onProgress(process.output().progress); };
  }
  interruption::cancelsOnInterruption(input);
  const ETOutput output = ETProcess::run(input);
  if (interruption::signalNumber() != 0) {
    return 1;  // the tool was stopped: its JSON may end halfway
  }
  int status = 0;
  for (const auto& log : output.processLogs) {
    if (const auto* unknown = std::get_if<ETOutput::UnknownLog>(&log)) {
      if (const auto line = nonBlank(unknown->line)) {
        err << "lorvane: " << line->substr(0, line->find_last_not_of("\r\n") + 1) << "\n";
        status = 1;
      }
    }
  }
  out << withGivenNames(output.decodeOutData().value_or(""), request.files);
  return status;
}

}  // namespace

int runShow(const ShowRequest& request, std::ostream& out, std::ostream& err) {
  std::function<void(double)> onProgress;
  if (request.drawsProgress && request.files.size() > 1) {
    onProgress = [&err](double progress) { drawProgress(err, progress); };
  }
  // The bar stands on its own line of standard error; a message or a table goes after it.
  bool barShown = false;
  const auto clearProgress = [&] {
    if (barShown) {
      err << "\r" << std::string(48, ' ') << "\r" << std::flush;
      barShown = false;
    }
  };
  std::function<void(double)> drawing;
  if (onProgress) {
    drawing = [&](double progress) {
      onProgress(progress);
      barShown = true;
    };
  }
  if (request.printsToolJson) {
    const int status = printToolJson(request, out, err, drawing);
    clearProgress();
    return status;
  }

  int status = 0;
  bool isFirst = true;
  if (request.printsJson) {
    out << "[";
  }
  MetadataReader reader(
      {.language = request.language,
       .jobs = request.jobs,
       .timeout = request.timeout,
       .sidecars = request.readsSidecars ? SidecarPolicy::merge : SidecarPolicy::ignore});
  // The files read before a signal are printed whole, the array closed; no more come.
  const interruption::CancelRegistration cancelOnSignal([&reader] { reader.cancel(); });
  const auto print = [&](FileTags&& file) {
    clearProgress();
    if (request.printsJson) {
      // As one dump of the whole array would indent it.
      std::string text(isFirst ? "\n  " : ",\n  ");
      for (const char c : dumped(fileJson(file), 2)) {
        text += c;
        if (c == '\n') {
          text += "  ";
        }
      }
      out << text;
    } else if (request.printsJsonLines) {
      out << dumped(fileJson(file), -1) << "\n";
    } else if (!(file.error && file.tags.empty())) {
      printTagTable(out, file, TableStyle{request.dimsRawValues});
    }
    isFirst = false;
    out.flush();
    for (const auto& warning : file.warnings) {
      err << "lorvane: " << escapeControls(file.file, LineFeeds::escaped) << ": "
          << escapeControls(warning, LineFeeds::escaped) << "\n";
    }
    if (file.error) {
      err << "lorvane: " << escapeControls(file.file, LineFeeds::escaped) << ": " << *file.error
          << "\n";
      status = 1;
    }
  };
  if (request.standardInput) {
    print(reader.readBytes(*request.standardInput, request.nameHint));
  } else {
    reader.readEach(request.files, print, drawing);
  }
  clearProgress();
  if (request.printsJson) {
    out << (isFirst ? "]\n" : "\n]\n");
  }
  return status;
}

nlohmann::ordered_json fileObject(const FileTags& file) { return fileJson(file); }

std::string fileLine(const FileTags& file) { return dumped(fileJson(file), -1); }

}  // namespace lorvane::app
