#pragma once

// `lorvane set`: writes checked assignments to files and tells per file what became of it.

#include <chrono>
#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include <lorvane/et_language.hpp>
#include <lorvane/metadata_writer.hpp>
#include <lorvane/tag_assignment.hpp>

namespace lorvane::app {

struct SetRequest {
  std::vector<std::string> assignments;  // "NAME=VALUE", as given
  std::optional<std::string> captureTime;  // "2026-11-01T10:30:00+02:00", as given
  std::optional<std::string> location;     // "48.8584,2.2945[,35]", as given
  std::vector<std::string> files;
  ETLanguage language = ETLanguage::english;  // of the labels a VALUE may be given as
  bool overwritesOriginal = false;            // no FILE_original beside a written file
  BackupPolicy backups = BackupPolicy::besideFile;
  std::filesystem::path backupFolder;  // with BackupPolicy::folder
  WriteTarget target = WriteTarget::file;
  std::chrono::milliseconds timeout{60'000};  // per file
};

// Why the assignment was refused, in a sentence for the user (the tag's first values and
// labels, in the user's language, where the value is none of them).
std::string refusalSentence(const AssignmentRefusal& refusal);

// 0 when every file was written as asked (or already was as asked), 1 otherwise; a refused
// assignment writes nothing at all and gives 1.
int runSet(const SetRequest& request, std::ostream& out, std::ostream& err);

}  // namespace lorvane::app
