#include "version_command.hpp"

#include <ostream>
#include <string>
#include <variant>

#include <lorvane/et_input.hpp>
#include <lorvane/et_output.hpp>
#include <lorvane/et_process.hpp>
#include <lorvane/et_settings.hpp>
#include <lorvane/version.hpp>

namespace lorvane::app {

int runVersion(std::ostream& out, std::ostream& err) {
  out << "lorvane " << LORVANE_VERSION_STRING << "\n";
  ETInput input;
  input.arguments = {"-ver"};
  const ETOutput output = ETProcess::run(input);
  std::string version = output.decodeOutData().value_or("");
  while (!version.empty() && (version.back() == '\n' || version.back() == '\r')) {
    version.pop_back();
  }
  if (version.empty() || version.find('\n') != std::string::npos) {
    err << "lorvane: ExifTool gave no version\n";
    for (const auto& log : output.processLogs) {
      if (const auto* unknown = std::get_if<ETOutput::UnknownLog>(&log)) {
        err << "  " << unknown->line << (unknown->line.ends_with('\n') ? "" : "\n");
      }
    }
    return 1;
  }
  out << "ExifTool " << version << " (" << ETSettings::shared().binariesFolderURL().string()
      << ")\n";
  return 0;
}

}  // namespace lorvane::app
