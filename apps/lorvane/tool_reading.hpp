#pragma once

// The one place where `lorvane show` runs the tool: files in, the tool's JSON object per file
// and its messages out.

#include <string>
#include <vector>

#include <lorvane/et_input.hpp>
#include <lorvane/et_language.hpp>

#include "file_tags.hpp"

namespace lorvane::app {

// Reads the files in one command of one run: long JSON with family 0 and 1 groups, values
// printed in `language`. `onProgress` (may be empty) follows the run. Throws
// nlohmann::json::exception when the tool's output is not the JSON expected.
ToolReading readWithTool(const std::vector<std::string>& files, ETLanguage language,
                         const ETInput::Handler& onProgress);

// The run readWithTool makes, for those who want to time or inspect it.
ETInput makeReadingInput(const std::vector<std::string>& files, ETLanguage language);

}  // namespace lorvane::app
