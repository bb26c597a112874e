#include "test_support.hpp"

#include <stdlib.h>

#include <stdexcept>
#include <string>
#include <system_error>

#include <lorvane/et_settings.hpp>

#include <fstream>
#include <iterator>

namespace lorvane::test {

std::filesystem::path dataFolder() { return LORVANE_TEST_DATA_DIR; }

TemporaryFolder::TemporaryFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "lorvane-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::runtime_error("cannot make a temporary folder from " + pattern);
  }
  path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

SettingsGuard::SettingsGuard() {
  const auto& settings = ETSettings::shared();
  binariesFolder_ = settings.binariesFolderURL();
  backupFolder_ = settings.backupFolderURL();
  itemListLevel_ = settings.quickTimeItemListLevel();
  userDataLevel_ = settings.quickTimeUserDataLevel();
  keysLevel_ = settings.quickTimeKeysLevel();
  extraArguments_ = settings.extraArguments();
}

SettingsGuard::~SettingsGuard() {
  auto& settings = ETSettings::shared();
  settings.setBinariesFolderURL(binariesFolder_);
  settings.setBackupFolderURL(backupFolder_);
  settings.setQuickTimeItemListLevel(itemListLevel_);
  settings.setQuickTimeUserDataLevel(userDataLevel_);
  settings.setQuickTimeKeysLevel(keysLevel_);
  settings.setExtraArguments(extraArguments_);
}

std::string fileContents(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<std::string> unknownLines(const ETOutput& output) {
  std::vector<std::string> lines;
  for (const auto& log : output.processLogs) {
    if (const auto* unknown = std::get_if<ETOutput::UnknownLog>(&log)) {
      lines.push_back(unknown->line);
    }
  }
  return lines;
}

std::filesystem::path copyOfPlainJpeg(const std::filesystem::path& folder,
                                      const std::string& name) {
  const auto path = folder / name;
  std::filesystem::copy_file(dataFolder() / "plain.jpg", path);
  return path;
}

std::string script(std::string_view body) {
  constexpr std::string_view readBatch = R"(
  $| = 1;
  my $batch = '';
  while ($batch !~ /-stay_open\n0\n-execute\z/) {
    sysread(STDIN, $batch, 65536, length $batch) or last;
  }
  my @arguments = split /\n/, $batch;
)";
  return std::string(readBatch) + std::string(body);
}

FakeTool::FakeTool(std::string_view perlScript, Interpreter interpreter)
    : folder_(root_.path() / "bin \"folder\"") {
  std::filesystem::create_directory(folder_);
  const auto& realBinaries = settings_.binariesFolder();
  if (interpreter == Interpreter::present) {
    std::filesystem::create_symlink(std::filesystem::canonical(realBinaries / "perl"),
                                    folder() / "perl");
  }
  std::filesystem::create_directory_symlink(std::filesystem::canonical(realBinaries / "perllib"),
                                            folder() / "perllib");
  std::ofstream(folder() / "exiftool") << perlScript;
  ETSettings::shared().setBinariesFolderURL(folder());
}

}  // namespace lorvane::test
