#include <lorvane/et_error.hpp>
#include <lorvane/et_output.hpp>
#include <lorvane/text.hpp>

#include "text/utf8.hpp"

namespace lorvane {

std::optional<std::string> ETOutput::decodeOutData() const {
  if (auto text = decodeUTF8(binaryData)) {
    return std::string(*text);
  }
  return std::nullopt;
}

std::optional<std::string> ETOutput::joinUnknownErrors() const {
  std::string joined;
  for (const auto& log : processLogs) {
    if (const auto* unknown = std::get_if<UnknownLog>(&log)) {
      joined += unknown->line;
      joined += '\n';
    }
  }
  return nonBlank(joined);
}

void ETOutput::throwIfErrors() const {
  if (auto errors = joinUnknownErrors()) {
    throw ETError(*errors);
  }
}

}  // namespace lorvane
