#include "set_command.hpp"

#include <map>
#include <ostream>
#include <variant>

#include <lorvane/et_input.hpp>
#include <lorvane/et_output.hpp>
#include <lorvane/et_process.hpp>
#include <lorvane/text.hpp>

#include "assignment.hpp"

namespace lorvane::app {
namespace {

// What the tool said about one file.
struct FileReport {
  std::vector<std::string> errors;
  std::vector<std::string> notes;
  bool isUnchanged = false;
  bool hasNothingToWrite = false;
  std::string movedTo;
};

// A file name that starts with "-" would be read as an option.
std::string toolPath(const std::string& file) { return file.starts_with('-') ? "./" + file : file; }

ETInput makeWritingInput(const SetRequest& request, const std::vector<Assignment>& assignments) {
  std::vector<std::string> arguments;
  for (const auto& assignment : assignments) {
    for (auto& argument : assignment.toolArguments()) {
      arguments.push_back(std::move(argument));
    }
  }
  if (request.overwritesOriginal) {
    arguments.emplace_back("-overwrite_original");
  }
  ETInput input;
  input.parsesOutPipe = true;  // "Nothing changed in ..." comes on standard output
  bool isFirst = true;
  // One command: the assignments once, then every file.
  input.addArguments(request.files, [&](const std::string& file, ETInput::ArgumentsMaker& maker) {
    if (isFirst) {
      maker.additional = arguments;
      isFirst = false;
    }
    maker.enableSeparator = false;  // a value with a comma stays one value
    maker.extractsBinaries = false;
    maker.extractsEmbedded = false;
    maker.sourcePath = toolPath(file);
  });
  return input;
}

// "Error: Writing of TXT files is not yet supported - t.txt" names its file at the end.
bool splitFileMessage(const std::string& line, std::string& text, std::string& path,
                      const std::map<std::string, std::string>& givenOfPath) {
  for (auto at = line.rfind(" - "); at != std::string::npos && at > 0;
       at = line.rfind(" - ", at - 1)) {
    if (givenOfPath.contains(line.substr(at + 3))) {
      text = line.substr(0, at);
      path = line.substr(at + 3);
      return true;
    }
  }
  return false;
}

std::string withoutPrefix(std::string text) {
  for (std::string_view prefix : {"Error: ", "Warning: "}) {
    if (text.starts_with(prefix)) {
      return text.substr(prefix.size());
    }
  }
  return text;
}

}  // namespace

int runSet(const SetRequest& request, std::ostream& out, std::ostream& err) {
  const auto checked = checkAssignments(request.assignments);
  if (const auto* refusals = std::get_if<std::vector<Refusal>>(&checked)) {
    for (const auto& refusal : *refusals) {
      err << "lorvane: " << refusal.message << "\n";
    }
    err << "lorvane: nothing was written\n";
    return 1;
  }
  const auto& assignments = std::get<std::vector<Assignment>>(checked);
  const ETOutput output = ETProcess::run(makeWritingInput(request, assignments));

  std::map<std::string, std::string> givenOfPath;
  for (const auto& file : request.files) {
    givenOfPath[toolPath(file)] = file;
  }
  std::map<std::string, FileReport> reports;
  std::vector<std::string> generalMessages;
  const auto reportOf = [&](const std::string& path) -> FileReport& {
    const auto given = givenOfPath.find(path);
    return reports[given != givenOfPath.end() ? given->second : path];
  };
  for (const auto& log : output.processLogs) {
    if (const auto* same = std::get_if<ETOutput::NoChanges>(&log)) {
      reportOf(same->path).isUnchanged = true;
    } else if (const auto* nothing = std::get_if<ETOutput::NothingToWrite>(&log)) {
      reportOf(nothing->path).hasNothingToWrite = true;
    } else if (const auto* moved = std::get_if<ETOutput::FileMoved>(&log)) {
      reportOf(moved->from).movedTo = moved->to;
    } else if (const auto* deleted = std::get_if<ETOutput::IccDeletedMayAffectColor>(&log)) {
      reportOf(deleted->path)
          .notes.emplace_back("its ICC profile was deleted: the image's colours may change");
    } else if (const auto* noIcc = std::get_if<ETOutput::IccNoInformationToWrite>(&log)) {
      reportOf(noIcc->path).notes.emplace_back("it has no ICC information to write");
    } else if (const auto* unknown = std::get_if<ETOutput::UnknownLog>(&log)) {
      const auto line = nonBlank(unknown->line);
      if (!line) {
        continue;
      }
      const std::string text = line->substr(0, line->find_last_not_of("\r\n") + 1);
      std::string message;
      std::string path;
      if (splitFileMessage(text, message, path, givenOfPath)) {
        reportOf(path).errors.push_back(withoutPrefix(message));
      } else {
        generalMessages.push_back(text);
      }
    }
  }

  int status = generalMessages.empty() ? 0 : 1;
  for (const auto& message : generalMessages) {
    err << "lorvane: " << message << "\n";
  }
  for (const auto& file : request.files) {
    const FileReport& report = reports[file];
    for (const auto& note : report.notes) {
      out << file << ": " << note << "\n";
    }
    if (!report.errors.empty()) {
      for (const auto& error : report.errors) {
        err << file << ": not written: " << error << "\n";
      }
      status = 1;
    } else if (report.hasNothingToWrite) {
      err << file << ": not written: there is nothing to write to it\n";
      status = 1;
    } else if (report.isUnchanged) {
      out << file << ": unchanged, it already was as asked\n";
    } else {
      out << file << ": updated";
      if (!report.movedTo.empty()) {
        out << ", moved to " << report.movedTo;
      }
      if (!request.overwritesOriginal) {
        out << " (the original is kept as " << file << "_original)";
      }
      out << "\n";
    }
  }
  return status;
}

}  // namespace lorvane::app
