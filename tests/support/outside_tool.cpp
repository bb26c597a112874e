#include "outside_tool.hpp"

#include <stdexcept>

#include <lorvane/et_settings.hpp>

#include "platform/child_process.hpp"
#include "platform/pipe.hpp"

namespace lorvane::test {

std::string outsideToolOutput(const std::string& name, const std::vector<std::string>& arguments) {
  platform::Pipe output = platform::makePipe();
  platform::ChildProcess child({
      .executable = ETSettings::shared().binariesFolderURL() / name,
      .arguments = arguments,
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

std::string exifToolValue(const std::filesystem::path& file, const std::string& tag) {
  std::string value = outsideToolOutput("exiftool", {"-s3", "-" + tag, file.string()});
  while (!value.empty() && (value.back() == '\n' || value.back() == '\r')) {
    value.pop_back();
  }
  return value;
}

}  // namespace lorvane::test
