#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace lorvane::test {

// The folder of sample files kept with the tests (plain.jpg, sample.mp4).
std::filesystem::path dataFolder();

// A fresh, empty folder below the system's temporary folder, removed when this object dies.
class TemporaryFolder {
public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

private:
  std::filesystem::path path_;
};

}  // namespace lorvane::test

namespace lorvane::test {

// Remembers every value of ETSettings::shared() and puts them back when dropped, so a test
// can change the process-wide settings without touching the tests after it.
class SettingsGuard {
public:
  SettingsGuard();
  ~SettingsGuard();
  SettingsGuard(const SettingsGuard&) = delete;
  SettingsGuard& operator=(const SettingsGuard&) = delete;

private:
  std::filesystem::path binariesFolder_;
  std::filesystem::path backupFolder_;
  int itemListLevel_;
  int userDataLevel_;
  int keysLevel_;
  std::vector<std::string> extraArguments_;
};

}  // namespace lorvane::test
