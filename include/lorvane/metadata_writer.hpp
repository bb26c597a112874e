#pragma once

// Writes checked assignments (<lorvane/tag_assignment.hpp>) to files, one tool command per
// file on a kept tool, and says per file what became of it, from what the tool said of that
// very file: never "updated" for a file the tool didn't say it wrote.
//
//   MetadataWriter writer;
//   for (const FileWriteResult& result : writer.write(assignments, files)) { ... }

#include <chrono>
#include <cstddef>
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
  // Where this write kept the file as it was before; nothing with overwritesOriginal, or when
  // an older FILE_original was already there (the tool leaves that one as it is).
  std::optional<std::string> original;
};

// "updated", "unchanged", "refused", "failed".
std::string_view to_string(FileWriteResult::Outcome outcome);
std::ostream& operator<<(std::ostream& out, FileWriteResult::Outcome outcome);

class MetadataWriter {
public:
  struct Options {
    bool overwritesOriginal = false;  // no FILE_original beside a written file
    std::size_t jobs = 1;             // tools side by side; 0: one per hardware thread
    // Longest time the tool may take over one file; zero: no limit.
    std::chrono::milliseconds timeout{60'000};
  };

  MetadataWriter();
  explicit MetadataWriter(Options options);
  ~MetadataWriter();
  MetadataWriter(const MetadataWriter&) = delete;
  MetadataWriter& operator=(const MetadataWriter&) = delete;

  // Writes every assignment to each file; onFile (if any) gets each result in the files' order
  // as soon as it and those before it are known, on the caller's thread. A folder is refused
  // (name its files). After cancel() the files not yet written are left out of the result.
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
