#pragma once

// `lorvane --version`: Lorvane's version and that of the ExifTool its runs start.

#include <iosfwd>

namespace lorvane::app {

// Asks the tool of the binaries folder for its version. 0 when it gave one; 1, and the tool's
// complaint on `err`, when it did not.
int runVersion(std::ostream& out, std::ostream& err);

}  // namespace lorvane::app
