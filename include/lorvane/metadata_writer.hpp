#pragma once

// Writes checked assignments (<lorvane/tag_assignment.hpp>) to files, one tool command per
// file on a kept tool, and says per file what became of it, from what the tool said of that
// very file: never "updated" for a file the tool didn't say it wrote.
//
//   MetadataWriter writer;
//   for (const FileWriteResult& result : writer.write(assignments, files)) { ... }

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <lorvane/tag_assignment.hpp>

namespace lorvane {

// Where a write keeps a file as it was before.
enum class BackupPolicy {
  besideFile,  // FILE_original beside the file, the tool's own way
  none,        // no backup: the tool writes a new file and renames it over the old one
  folder,      // a copy in Options::backupFolder named after the file, never over an older one
};

// What a write changes: the file, its XMP sidecar (FILE.xmp or the one beside it already), or
// both.
enum class WriteTarget { file, sidecar, both };

struct FileWriteResult {
  enum class Outcome {
    updated,    // the tool wrote the file
    unchanged,  // the tool found the file already as asked
    refused,    // the tool, or the writer before it, declined to write it (see messages)
    failed,     // no answer about the file: the tool died, hung or was cancelled
  };
  std::string file;  // as given
  Outcome outcome = Outcome::failed;
  // Why it was refused or failed; notes of the tool beside an update ("Warning: ...").
  std::vector<std::string> messages;
  std::string movedTo;  // where the tool moved the file, if it did
  // Where this write kept the file as it was before: FILE_original, or its copy in the
  // backup folder; nothing without a backup, or when an older FILE_original was already there
  // (the tool leaves that one as it is).
  std::optional<std::string> original;

  // What became of the file's XMP sidecar, with WriteTarget::sidecar or both. With sidecar,
  // `outcome` and `messages` above are the sidecar's too: the file itself is never written.
  struct Sidecar {
    std::string path;
    Outcome outcome = Outcome::failed;
    bool created = false;  // made by this write, from the file's own metadata
    std::vector<std::string> messages;
    std::optional<std::string> original;  // the sidecar as it was, as for the file
  };
  std::optional<Sidecar> sidecar;
};

// "updated", "unchanged", "refused", "failed".
std::string_view to_string(FileWriteResult::Outcome outcome);
std::ostream& operator<<(std::ostream& out, FileWriteResult::Outcome outcome);

class MetadataWriter {
public:
  struct Options {
    // No FILE_original beside a written file: with the default backups, the same as
    // BackupPolicy::none; with a backup folder, the backup still goes there.
    bool overwritesOriginal = false;
    BackupPolicy backups = BackupPolicy::besideFile;
    std::filesystem::path backupFolder = {};  // with BackupPolicy::folder; must be a folder
    // With sidecar, the file's bytes are never changed: XMP assignments go to the sidecar as
    // they are, EXIF and IPTC ones to the catalogue's XMP counterpart (a file is refused when
    // one has none); a missing sidecar is first made from the file's own metadata.
    WriteTarget target = WriteTarget::file;
    // Tools side by side; 0: one per hardware thread. Writes to sidecars take one tool.
    std::size_t jobs = 1;
    // Longest time the tool may take over one file; zero: no limit.
    std::chrono::milliseconds timeout{60'000};
  };

  MetadataWriter();
  explicit MetadataWriter(Options options);
  ~MetadataWriter();
  MetadataWriter(const MetadataWriter&) = delete;
  MetadataWriter& operator=(const MetadataWriter&) = delete;

  // Writes every assignment to each file (or its sidecar); onFile (if any) gets each result in the
  // files' order as soon as it and those before it are known, on the caller's thread. A folder is
  // refused (name its files). After cancel() the files not yet written are left out of the result.
  std::vector<FileWriteResult> write(
      std::span<const TagAssignment> assignments, std::span<const std::string> files,
      const std::function<void(const FileWriteResult&)>& onFile = {});

  // From any thread: ends the tools at work; write returns soon after.
  void cancel();

private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace lorvane
