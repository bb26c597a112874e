#include "outside_tool.hpp"

#include <stdexcept>

#include <lorvane/et_settings.hpp>

#include "platform/child_process.hpp"
#include "platform/pipe.hpp"

extern char** environ;

namespace lorvane::test {

std::string programOutput(const std::filesystem::path& program,
                          const std::vector<std::string>& arguments,
                          const EnvironmentChanges& changes) {
  std::map<std::string, std::string> environment;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text(*entry);
    const auto equals = text.find('=');
    environment.emplace(text.substr(0, equals), equals == text.npos ? "" : text.substr(equals + 1));
  }
  for (const auto& [name, value] : changes) {
    if (value) {
      environment[name] = *value;
    } else {
      environment.erase(name);
    }
  }
  platform::Pipe output = platform::makePipe();
  platform::ChildProcess child({
      .executable = program,
      .arguments = arguments,
      .environment = environment,
      .standardOutput = output.writeEnd.get(),
  });
  output.writeEnd.close();
  if (!child.isStarted()) {
    throw std::runtime_error(*child.failure());
  }
  const std::vector<std::byte> bytes = platform::readToEnd(output.readEnd.get());
  child.waitForExit();
  return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

std::string outsideToolOutput(const std::string& name, const std::vector<std::string>& arguments) {
  return programOutput(ETSettings::shared().binariesFolderURL() / name, arguments);
}

std::string exifToolValue(const std::filesystem::path& file, const std::string& tag) {
  std::string value = outsideToolOutput("exiftool", {"-s3", "-" + tag, file.string()});
  while (!value.empty() && (value.back() == '\n' || value.back() == '\r')) {
    value.pop_back();
  }
  return value;
}

}  // namespace lorvane::test
