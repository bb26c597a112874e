#pragma once

// The one place where `lorvane show` runs the tool: files in, the tool's JSON object per file
// and its messages out.

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <lorvane/et_input.hpp>
#include <lorvane/et_language.hpp>

#include "file_tags.hpp"

namespace lorvane::app {

// Reads the files with `jobs` tools side by side (0: one per hardware thread; 1: one run),
// the files spread over them by size: long JSON with family 0 and 1 groups, values printed in
// `language`. `onProgress` (may be empty) gets the share of the whole job done, one call at a
// time. The objects come run by run; makeFileTags puts them back in the files' order. Throws
// nlohmann::json::exception when the tool's output is not the JSON expected.
ToolReading readWithTool(const std::vector<std::string>& files, ETLanguage language,
                         std::size_t jobs, const std::function<void(double)>& onProgress);

// The single run that reads all files, as readWithTool makes it with one job.
ETInput makeReadingInput(const std::vector<std::string>& files, ETLanguage language);

}  // namespace lorvane::app
