#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace lorvane {

// The result of a run: whether it still runs, how far it is, the tool's decoded messages and
// the bytes of its output. A plain value: the copy a caller holds never changes.
struct ETOutput {
  // The tool left the file unchanged.
  struct NoChanges {
    std::string path;
  };
  // The tool had nothing to write to the file.
  struct NothingToWrite {
    std::string path;
  };
  // The file got another name or place.
  struct FileMoved {
    std::string from;
    std::string to;
  };
  // An ICC profile was deleted; the image's colours may change.
  struct IccDeletedMayAffectColor {
    std::string path;
  };
  // The file has no ICC information to write.
  struct IccNoInformationToWrite {
    std::string path;
  };
  // A line that nothing recognised, whole (with its line feed when it had one).
  struct UnknownLog {
    std::string line;
  };
  // One decoded message of the tool, its text as the tool printed it.
  using ProcessLog = std::variant<NoChanges, NothingToWrite, FileMoved, IccDeletedMayAffectColor,
                                  IccNoInformationToWrite, UnknownLog>;

  // True from the start of a run until just before its end handler.
  bool isRunning = false;
  // The share of the batch done, normally 0 to 1; a run ends with 1.
  double progress = 0;
  // Decoded messages in the order they arrived (in order within each stream).
  std::vector<ProcessLog> processLogs;
  // The bytes of the stream read as bytes, set once at the end of a run.
  std::vector<std::byte> binaryData;

  // `binaryData` as UTF-8 text; nothing when it isn't valid UTF-8. No bytes give "".
  std::optional<std::string> decodeOutData() const;
  // Every unknown line followed by a line feed, in order; nothing when that text is blank.
  std::optional<std::string> joinUnknownErrors() const;
  // Throws ETError holding `joinUnknownErrors()` when there is such a text.
  void throwIfErrors() const;
};

}  // namespace lorvane
