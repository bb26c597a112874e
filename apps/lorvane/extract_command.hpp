#pragma once

// `lorvane extract`: writes a binary tag of each file, or its largest preview, to a file of
// its own.

#include <chrono>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace lorvane::app {

struct ExtractRequest {
  std::optional<std::string> tag;  // the binary tag; none: the largest preview
  std::string folder = ".";        // where NAME_TAG.EXT goes
  std::vector<std::string> files;
  std::chrono::milliseconds timeout{60'000};  // per file
};

// 0 when every file had what was asked, 1 when one hadn't or couldn't be written (the others
// are still done).
int runExtract(const ExtractRequest& request, std::ostream& out, std::ostream& err);

}  // namespace lorvane::app
