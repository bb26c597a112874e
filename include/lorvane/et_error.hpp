#pragma once

#include <stdexcept>
#include <string>

namespace lorvane {

// What ETOutput::throwIfErrors() throws: the tool's unrecognised lines, as it printed them.
class ETError : public std::runtime_error {
public:
  explicit ETError(const std::string& rawValue) : std::runtime_error(rawValue) {}

  // The text of the error, the same as what().
  std::string rawValue() const { return what(); }
};

}  // namespace lorvane
