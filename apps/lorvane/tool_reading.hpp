#pragma once

// The one place where `lorvane show` runs the tool: files in, the files' tags (or the tool's
// own JSON) and its messages out.

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <lorvane/et_input.hpp>
#include <lorvane/et_language.hpp>

#include "file_tags.hpp"

namespace lorvane::app {

// What the tool made of the files given to `readFileTags`.
struct FilesRead {
  std::vector<FileTags> files;        // as makeFileTags gives them, in the files' order
  std::vector<std::string> messages;  // the tool's messages that name none of the files
};

// Reads the files with `jobs` tools side by side (0: one per hardware thread; 1: one run),
// the files spread over them by size: long JSON with family 0 and 1 groups, values printed in
// `language`. Each run's JSON becomes tags on the thread that ran it as soon as that run ends,
// so this work overlaps the runs still going. `onProgress` (may be empty) gets the share of
// the whole job done, one call at a time. Throws nlohmann::json::exception when the tool's
// output is not the JSON expected.
FilesRead readFileTags(const std::vector<std::string>& files, ETLanguage language, std::size_t jobs,
                       const std::function<void(double)>& onProgress);

// The tool's JSON of all files as it came, from one run (several runs would print several
// arrays); `onProgress` as for readFileTags.
ToolReading readWithTool(const std::vector<std::string>& files, ETLanguage language,
                         const std::function<void(double)>& onProgress);

// The single run that reads all files, as readFileTags makes it with one job.
ETInput makeReadingInput(const std::vector<std::string>& files, ETLanguage language);

}  // namespace lorvane::app
