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

#include "platform/new_file.hpp"
#include "read/ordered_runs.hpp"
#include "read/sidecars.hpp"
#include "read/tool_answer.hpp"

namespace lorvane {
namespace {

using Outcome = FileWriteResult::Outcome;

// The run machinery's own line for a command that outlived its time limit.
constexpr std::string_view timeLimitLine = "the tool did not finish within ";
// What each command has the tool print once it is done with the file ("-echo3"), quiet or not:
// a tool killed part way never says it.
constexpr std::string_view commandDone = "{lorvane: command done}";

// Where the tool writes a file before it renames it over the file.
constexpr std::string_view temporarySuffix = "_exiftool_tmp";
constexpr std::string_view originalSuffix = "_original";

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

bool exists(const std::string& path) {
  std::error_code error;
  return std::filesystem::exists(std::filesystem::symlink_status(path, error));
}

// What stood beside a file before its write, and the backup made of it, if any.
struct Preparation {
  bool hadOriginal = false;
  bool hadTemporary = false;
  std::optional<FileState> before;
  std::optional<std::string> backup;   // made in the backup folder
  std::optional<std::string> refusal;  // why the file must not be written
};

FileWriteResult makeFileResult(const std::string& file, Outcome outcome,
                               std::vector<std::string> messages) {
  return {file, outcome, std::move(messages), {}, std::nullopt, std::nullopt};
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
  explicit State(Options chosen)
      : options(std::move(chosen)),
        backups(options.overwritesOriginal && options.backups == BackupPolicy::besideFile
                    ? BackupPolicy::none
                    : options.backups),
        tools(options.target == WriteTarget::file ? options.jobs : 1) {}

  // The arguments that keep or drop the backup the tool makes.
  std::vector<std::string> backupArguments(BackupPolicy policy) const {
    if (policy == BackupPolicy::besideFile) {
      return {};
    }
    return {"-overwrite_original"};
  }

  // Taken on the thread that writes the file, just before the write.
  Preparation prepare(const std::string& file, BackupPolicy policy) const {
    Preparation preparation;
    preparation.hadOriginal = exists(file + std::string(originalSuffix));
    preparation.hadTemporary = exists(file + std::string(temporarySuffix));
    preparation.before = fileState(file);
    if (policy != BackupPolicy::folder || !preparation.before) {
      return preparation;  // a missing file: the tool says so
    }
    const std::string name =
        std::filesystem::path(file).filename().string() + std::string(originalSuffix);
    for (int number = 1; number < 100'000; ++number) {
      const std::string backup =
          (options.backupFolder / (number == 1 ? name : name + "_" + std::to_string(number)))
              .string();
      const platform::NewCopy copy = platform::copyToNewFile(file, backup);
      if (copy == platform::NewCopy::made) {
        preparation.backup = backup;
        return preparation;
      }
      if (copy == platform::NewCopy::failed) {
        break;
      }
    }
    preparation.refusal = "no backup of it could be made in " + options.backupFolder.string();
    return preparation;
  }

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

  // What the tool said of one file's command, with what stood beside the file before it; a
  // write that did not happen leaves no backup and no temporary file behind.
  FileWriteResult makeResult(const std::string& file, BackupPolicy policy,
                             const Preparation& preparation, const ETInput& input,
                             const ETOutput& output) const {
    if (preparation.refusal) {
      return makeFileResult(file, Outcome::refused, {*preparation.refusal});
    }
    FileWriteResult result = judge(file, preparation, input, output);
    if (result.outcome != Outcome::updated) {
      if (preparation.backup) {
        std::filesystem::remove(*preparation.backup);
      }
      std::error_code error;
      const std::string original = file + std::string(originalSuffix);
      const std::string temporary = file + std::string(temporarySuffix);
      // A tool killed between its two renames has moved the file to FILE_original.
      if (!preparation.hadOriginal && !exists(file) && exists(original)) {
        std::filesystem::rename(original, file, error);
      }
      if (!preparation.hadTemporary && exists(temporary)) {
        std::filesystem::remove(temporary, error);
      }
      return result;
    }
    if (policy == BackupPolicy::folder) {
      result.original = preparation.backup;
    } else if (policy == BackupPolicy::besideFile && preparation.hadOriginal) {
      result.messages.push_back("an older " + file +
                                "_original was left as it was: this file's original is not kept");
    } else if (policy == BackupPolicy::besideFile && fileState(file + "_original")) {
      result.original = file + "_original";
    }
    return result;
  }

  // What the tool said of one file's command: "updated" also for a file it created ("-o").
  FileWriteResult judge(const std::string& file, const Preparation& preparation,
                        const ETInput& input, const ETOutput& output) const {
    FileWriteResult result = makeFileResult(file, Outcome::failed, {});
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
          return makeFileResult(file, Outcome::failed,
                                {"ExifTool did not finish writing it in time"});
        } else if (const auto count = countOf(line, " image files updated")) {
          updated += *count;
        } else if (const auto count = countOf(line, " image files created")) {
          updated += *count;
        } else if (const auto count = countOf(line, " files weren't updated due to errors")) {
          refused = refused || *count > 0;
        } else if (line == "Nothing to do.") {
          refused = true;
        } else if (!countOf(line, " directories scanned")) {
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
    const bool changed = preparation.before != fileState(file);
    if (updated == 1 || (updated == 0 && unchanged == 0 && changed)) {
      result.outcome = Outcome::updated;
    } else if (updated == 0) {
      result.outcome = Outcome::unchanged;
    }
    return result;
  }

  // One command on `tool`, which a cancel given before it started stops at once.
  ETOutput run(detail::ToolSlot& tool, ETInput input) {
    input.onStartHandler = [this](ETProcess& process) {
      if (tools.isCancelled()) {
        process.cancel();
      }
    };
    return tool.run(input);
  }

  // One write of `arguments` to `file` on `tool`, with its backup.
  FileWriteResult writeOne(detail::ToolSlot& tool, std::vector<std::string> arguments,
                           const std::string& file, BackupPolicy policy) {
    const Preparation preparation = prepare(file, policy);
    const auto more = backupArguments(policy);
    arguments.insert(arguments.end(), more.begin(), more.end());
    const ETInput input = makeInput(arguments, file);
    const ETOutput output = preparation.refusal ? ETOutput{} : run(tool, input);
    return makeResult(file, policy, preparation, input, output);
  }

  // The file's sidecar written, made first from the file's own metadata where there is none
  // (the tool's copied tags would win over assignments given in the same command).
  FileWriteResult::Sidecar writeSidecar(detail::ToolSlot& tool,
                                        const std::vector<std::string>& arguments,
                                        const std::string& file) {
    FileWriteResult::Sidecar sidecar;
    const auto existing = detail::existingSidecars(file);
    sidecar.path = existing.empty() ? detail::sidecarNames(file).front() : existing.front();
    if (existing.empty()) {
      const ETInput input = makeInput({"-o", sidecar.path}, file);
      // Made where none was: a quiet tool prints no count of files created.
      FileWriteResult made = judge(sidecar.path, Preparation{}, input, run(tool, input));
      if (made.outcome != Outcome::updated || !exists(sidecar.path)) {
        if (exists(sidecar.path) && made.outcome == Outcome::failed) {
          std::filesystem::remove(sidecar.path);
        }
        sidecar.outcome = made.outcome == Outcome::failed ? Outcome::failed : Outcome::refused;
        sidecar.messages = std::move(made.messages);
        return sidecar;
      }
      sidecar.created = true;
    }
    // A sidecar made just now has nothing to keep.
    FileWriteResult written =
        writeOne(tool, arguments, sidecar.path, sidecar.created ? BackupPolicy::none : backups);
    if (sidecar.created &&
        (written.outcome == Outcome::refused || written.outcome == Outcome::failed)) {
      std::filesystem::remove(sidecar.path);
      sidecar.created = false;
    }
    sidecar.outcome = sidecar.created && written.outcome == Outcome::unchanged ? Outcome::updated
                                                                               : written.outcome;
    sidecar.messages = std::move(written.messages);
    sidecar.original = std::move(written.original);
    return sidecar;
  }

  Options options;
  BackupPolicy backups;  // overwritesOriginal taken into account
  detail::ToolSlots tools;
};

MetadataWriter::MetadataWriter() : MetadataWriter(Options{}) {}

MetadataWriter::MetadataWriter(Options options) : state_(std::make_unique<State>(options)) {}

MetadataWriter::~MetadataWriter() = default;

std::vector<FileWriteResult> MetadataWriter::write(
    std::span<const TagAssignment> assignments, std::span<const std::string> files,
    const std::function<void(const FileWriteResult&)>& onFile) {
  State& state = *state_;
  std::vector<std::string> arguments;
  for (const auto& assignment : assignments) {
    for (auto& argument : assignment.toolArguments()) {
      arguments.push_back(std::move(argument));
    }
  }
  std::vector<FileWriteResult> results;
  const auto deliver = [&](FileWriteResult&& result) {
    if (onFile) {
      onFile(result);
    }
    results.push_back(std::move(result));
  };
  // Reasons that refuse every file before any is touched.
  std::optional<std::string> refusal;
  std::vector<std::string> sidecarArguments;
  std::error_code error;
  if (state.backups == BackupPolicy::folder &&
      !std::filesystem::is_directory(state.options.backupFolder, error)) {
    refusal = "the backup folder " + state.options.backupFolder.string() + " is no folder";
  } else if (state.options.target != WriteTarget::file) {
    auto mapped = detail::sidecarArguments(assignments);
    if (auto* reason = std::get_if<std::string>(&mapped)) {
      refusal = std::move(*reason);
    } else {
      sidecarArguments = std::move(std::get<std::vector<std::string>>(mapped));
    }
  }
  // A folder is not written at all (the tool would write every file in it).
  std::vector<char> isFolder(files.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    isFolder[i] = std::filesystem::is_directory(files[i], error);
  }
  const auto refuse = [&](std::size_t i) {
    deliver(makeFileResult(files[i], Outcome::refused,
                           {isFolder[i] ? "is a folder: name the files in it" : *refusal}));
  };

  if (state.options.target != WriteTarget::file) {
    // File and sidecar, one after the other on one tool.
    for (std::size_t i = 0; i < files.size() && !state.tools.isCancelled(); ++i) {
      if (isFolder[i] || refusal) {
        refuse(i);
        continue;
      }
      detail::ToolSlot& tool = *state.tools.take(1).front();
      FileWriteResult result = state.options.target == WriteTarget::both
                                   ? state.writeOne(tool, arguments, files[i], state.backups)
                                   : makeFileResult(files[i], Outcome::unchanged, {});
      auto sidecar = state.writeSidecar(tool, sidecarArguments, files[i]);
      if (state.tools.isCancelled() && sidecar.outcome == Outcome::failed) {
        break;
      }
      if (state.options.target == WriteTarget::sidecar) {
        result.outcome = sidecar.outcome;
        result.messages = sidecar.messages;
      }
      result.sidecar = std::move(sidecar);
      deliver(std::move(result));
    }
    return results;
  }

  const auto more = state.backupArguments(state.backups);
  arguments.insert(arguments.end(), more.begin(), more.end());
  std::vector<std::size_t> toWrite;
  // Each taken by the tool's thread that writes that file, just before the write.
  std::vector<Preparation> preparations(files.size());
  for (std::size_t i = 0; i <= files.size(); ++i) {
    if (i < files.size() && !isFolder[i] && !refusal) {
      toWrite.push_back(i);
      continue;
    }
    // The files before a folder are written first, so the results keep the files' order.
    detail::runInOrder<FileWriteResult>(
        state.tools, false, toWrite.size(),
        [&](std::size_t k) {
          const std::size_t i = toWrite[k];
          preparations[i] = state.prepare(files[i], state.backups);
          // An input without arguments is not run.
          return preparations[i].refusal ? ETInput{} : state.makeInput(arguments, files[i]);
        },
        [&](std::size_t k, std::vector<detail::CommandAnswer>&& answers) {
          const std::size_t i = toWrite[k];
          return state.makeResult(files[i], state.backups, preparations[i], answers.front().input,
                                  answers.front().output);
        },
        deliver, {});
    toWrite.clear();
    if (i < files.size() && !state.tools.isCancelled()) {
      refuse(i);
    }
  }
  return results;
}

void MetadataWriter::cancel() { state_->tools.cancel(); }

}  // namespace lorvane
