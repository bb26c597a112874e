#include <lorvane/metadata_writer.hpp>

#include <charconv>
#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string_view>
#include <variant>

#include <lorvane/arguments_maker.hpp>
#include <lorvane/et_settings.hpp>
#include <lorvane/text.hpp>

#include "read/ordered_runs.hpp"
#include "read/tool_answer.hpp"

namespace lorvane {
namespace {

using Outcome = FileWriteResult::Outcome;

// The run machinery's own line for a command that outlived its time limit.
constexpr std::string_view timeLimitLine = "the tool did not finish within ";
// What each command has the tool print once it is done with the file ("-echo3"), quiet or not:
// a tool killed part way never says it.
constexpr std::string_view commandDone = "{lorvane: command done}";

// Enough of a file's state to see that the tool replaced or rewrote it.
struct FileState {
  std::uintmax_t size = 0;
  std::filesystem::file_time_type modified;
  friend bool operator==(const FileState&, const FileState&) = default;
};

std::optional<FileState> fileState(const std::string& path) {
  std::error_code error;
  FileState state;
  state.size = std::filesystem::file_size(path, error);
  if (error) {
    return std::nullopt;
  }
  state.modified = std::filesystem::last_write_time(path, error);
  return state;
}

// "    1 image files updated": the count of one kind of result of a command, or nothing for
// another line.
std::optional<std::size_t> countOf(std::string_view line, std::string_view what) {
  const auto start = line.find_first_not_of(' ');
  if (start == std::string_view::npos || !line.ends_with(what)) {
    return std::nullopt;
  }
  std::size_t count = 0;
  const char* end = line.data() + line.size() - what.size();
  const auto [stop, error] = std::from_chars(line.data() + start, end, count);
  return error == std::errc() && stop == end ? std::optional(count) : std::nullopt;
}

}  // namespace

std::string_view to_string(FileWriteResult::Outcome outcome) {
  switch (outcome) {
    case Outcome::updated: return "updated";
    case Outcome::unchanged: return "unchanged";
    case Outcome::refused: return "refused";
    case Outcome::failed: return "failed";
  }
  return "unknown";
}

std::ostream& operator<<(std::ostream& out, FileWriteResult::Outcome outcome) {
  return out << to_string(outcome);
}

struct MetadataWriter::State {
  explicit State(Options chosen) : options(chosen), tools(chosen.jobs) {}

  ETInput makeInput(const std::vector<std::string>& arguments, const std::string& file) const {
    ETInput input;
    input.parsesOutPipe = true;  // the tool's count of written files comes on standard output
    input.addArguments([&](ETInput::ArgumentsMaker& maker) {
      maker.additional = arguments;
      maker.additional.insert(maker.additional.end(), {"-echo3", std::string(commandDone)});
      maker.addDefaultSettings = false;
      const auto extra = ETSettings::shared().extraArguments();
      maker.additional.insert(maker.additional.end(), extra.begin(), extra.end());
      maker.enableSeparator = false;  // a value with a comma stays one value
      maker.extractsBinaries = false;
      maker.extractsEmbedded = false;
      maker.sourcePath = file;
    });
    input.keepsInvalidText = true;  // a name that isn't UTF-8 keeps its messages
    if (options.timeout.count() > 0) {
      input.timeLimit = options.timeout;
    }
    return input;
  }

  // What the tool said of one file's command, with what the file looked like before it.
  FileWriteResult makeResult(const std::string& file, bool hadOriginal,
                             const std::optional<FileState>& before, const ETInput& input,
                             const ETOutput& output) const {
    FileWriteResult result{file, Outcome::failed, {}, {}, std::nullopt};
    const std::string& toolPath = input.arguments.back();
    std::size_t updated = 0;
    std::size_t unchanged = 0;
    bool refused = false;
    bool finished = false;
    for (const auto& log : output.processLogs) {
      if (std::holds_alternative<ETOutput::NoChanges>(log)) {
        ++unchanged;
      } else if (std::holds_alternative<ETOutput::NothingToWrite>(log)) {
        refused = true;
        result.messages.emplace_back("there is nothing to write to it");
      } else if (const auto* moved = std::get_if<ETOutput::FileMoved>(&log)) {
        result.movedTo = moved->to;
      } else if (std::holds_alternative<ETOutput::IccDeletedMayAffectColor>(log)) {
        result.messages.emplace_back("its ICC profile was deleted: the image's colours may change");
      } else if (std::holds_alternative<ETOutput::IccNoInformationToWrite>(log)) {
        result.messages.emplace_back("it has no ICC information to write");
      } else if (const auto* unknown = std::get_if<ETOutput::UnknownLog>(&log)) {
        if (!nonBlank(unknown->line)) {
          continue;
        }
        const std::string line =
            unknown->line.substr(0, unknown->line.find_last_not_of("\r\n") + 1);
        if (line == commandDone) {
          finished = true;
        } else if (line.starts_with(timeLimitLine)) {
          return {file, Outcome::failed, {"ExifTool did not finish writing it in time"}, {}, {}};
        } else if (const auto count = countOf(line, " image files updated")) {
          updated += *count;
        } else if (const auto count = countOf(line, " files weren't updated due to errors")) {
          refused = refused || *count > 0;
        } else if (line == "Nothing to do.") {
          refused = true;
        } else if (!countOf(line, " directories scanned") &&
                   !countOf(line, " image files created")) {
          refused = refused || line.starts_with("Error: ");
          result.messages.push_back(detail::messageAbout(line, toolPath));
        }
      }
    }
    if (refused) {
      result.outcome = Outcome::refused;
      return result;
    }
    if (!finished) {
      // Killed, lost or cancelled part way: whatever happened to the file, nobody said so.
      if (result.messages.empty()) {
        result.messages.emplace_back("ExifTool stopped before it was done with it");
      }
      return result;
    }
    // The count is missing where the tool runs quietly; then the file itself tells.
    const bool changed = before != fileState(file);
    if (updated == 1 || (updated == 0 && unchanged == 0 && changed)) {
      result.outcome = Outcome::updated;
      if (!options.overwritesOriginal && hadOriginal) {
        result.messages.push_back("an older " + file +
                                  "_original was left as it was: this file's original is not kept");
      } else if (!options.overwritesOriginal && fileState(file + "_original")) {
        result.original = file + "_original";
      }
    } else if (updated == 0) {
      result.outcome = Outcome::unchanged;
    }
    return result;
  }

  Options options;
  detail::ToolSlots tools;
};

MetadataWriter::MetadataWriter() : MetadataWriter(Options{}) {}

MetadataWriter::MetadataWriter(Options options) : state_(std::make_unique<State>(options)) {}

MetadataWriter::~MetadataWriter() = default;

std::vector<FileWriteResult> MetadataWriter::write(
    std::span<const TagAssignment> assignments, std::span<const std::string> files,
    const std::function<void(const FileWriteResult&)>& onFile) {
  std::vector<std::string> arguments;
  for (const auto& assignment : assignments) {
    for (auto& argument : assignment.toolArguments()) {
      arguments.push_back(std::move(argument));
    }
  }
  if (state_->options.overwritesOriginal) {
    arguments.emplace_back("-overwrite_original");
  }
  // What stands beside each file before its write; a folder is not written at all (the tool
  // would write every file in it).
  std::vector<char> isFolder(files.size());
  std::vector<char> hadOriginal(files.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    std::error_code error;
    isFolder[i] = std::filesystem::is_directory(files[i], error);
    hadOriginal[i] = std::filesystem::exists(files[i] + "_original", error);
  }
  std::vector<FileWriteResult> results;
  const auto deliver = [&](FileWriteResult&& result) {
    if (onFile) {
      onFile(result);
    }
    results.push_back(std::move(result));
  };
  std::vector<std::size_t> toWrite;
  // Each taken by the tool's thread that writes that file, just before the write.
  std::vector<std::optional<FileState>> before(files.size());
  for (std::size_t i = 0; i <= files.size(); ++i) {
    if (i < files.size() && !isFolder[i]) {
      toWrite.push_back(i);
      continue;
    }
    // The files before a folder are written first, so the results keep the files' order.
    detail::runInOrder<FileWriteResult>(
        state_->tools, false, toWrite.size(),
        [&](std::size_t k) {
          before[toWrite[k]] = fileState(files[toWrite[k]]);
          return state_->makeInput(arguments, files[toWrite[k]]);
        },
        [&](std::size_t k, const ETInput& input, ETOutput&& output) {
          const std::size_t i = toWrite[k];
          return state_->makeResult(files[i], hadOriginal[i] != 0, before[i], input, output);
        },
        deliver, {});
    toWrite.clear();
    if (i < files.size() && !state_->tools.isCancelled()) {
      deliver(
          {files[i], Outcome::refused, {"is a folder: name the files in it"}, {}, std::nullopt});
    }
  }
  return results;
}

void MetadataWriter::cancel() { state_->tools.cancel(); }

}  // namespace lorvane
