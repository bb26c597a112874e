#pragma once

// `lorvane show`: the tags of files as a table per file, or as JSON, each file printed as soon
// as it and all before it are read.

#include <chrono>
#include <cstddef>
#include <optional>
#include <iosfwd>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <lorvane/et_language.hpp>
#include <lorvane/file_tags.hpp>

namespace lorvane::app {

struct ShowRequest {
  std::vector<std::string> files;
  ETLanguage language = ETLanguage::english;  // of the tool's values and descriptions
  std::size_t jobs = 0;                       // tools side by side; 0: one per hardware thread
  std::chrono::milliseconds timeout{60'000};  // per file
  bool printsToolJson = false;                // the tool's JSON as it came (always one run)
  bool printsJson = false;                    // one array, element by element
  bool printsJsonLines = false;               // one object per line
  bool drawsProgress = false;                 // a bar on standard error while the tool reads
  bool dimsRawValues = false;                 // standard output is a terminal
  bool readsSidecars = false;                 // the files' XMP sidecars with them
  // The bytes read instead of files ("-"), with the name that stands for them.
  std::optional<std::vector<std::byte>> standardInput;
  std::string nameHint = "-";
};

// The object `--json` and `--json-lines` print for the file.
nlohmann::ordered_json fileObject(const FileTags& file);
// That object as one line of `--json-lines`, without its line end.
std::string fileLine(const FileTags& file);

// 0 when every file was read, 1 when the tool failed on one (the others are still shown).
int runShow(const ShowRequest& request, std::ostream& out, std::ostream& err);

}  // namespace lorvane::app
