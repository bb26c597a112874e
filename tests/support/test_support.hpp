#pragma once

#include <lorvane/et_output.hpp>

#include <filesystem>
#include <string>
#include <string_view>
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

// Remembers every value of ETSettings::shared() and puts them back when dropped, so a test
// can change the process-wide settings without touching the tests after it.
class SettingsGuard {
public:
  SettingsGuard();
  ~SettingsGuard();
  SettingsGuard(const SettingsGuard&) = delete;
  SettingsGuard& operator=(const SettingsGuard&) = delete;

  // The binaries folder as it was when the guard was made.
  const std::filesystem::path& binariesFolder() const { return binariesFolder_; }

private:
  std::filesystem::path binariesFolder_;
  std::filesystem::path backupFolder_;
  std::int64_t itemListLevel_;
  std::int64_t userDataLevel_;
  std::int64_t keysLevel_;
  std::vector<std::string> extraArguments_;
};

// The whole content of a file, as bytes in a string.
std::string fileContents(const std::filesystem::path& file);

// The lines of a run's output that matched no known message, in order.
std::vector<std::string> unknownLines(const ETOutput& output);

// A copy of tests/data/plain.jpg (64x48, no tags) in `folder`, named `name`.
std::filesystem::path copyOfPlainJpeg(const std::filesystem::path& folder, const std::string& name);

// A fake tool's Perl script: `body` behind the lines that read the batch as the real tool must,
// up to its closing lines, which end without a line end while standard input stays open. The
// body finds the batch in `$batch` and its lines in `@arguments`.
std::string script(std::string_view body);

// A binaries folder whose "exiftool" is the given Perl script, started by the real "perl"
// with the run's real command line and environment; ETSettings::shared() points at it while
// this object lives. Without interpreter, the folder has no "perl" at all. Its path holds a
// blank and a double quote, as a user's folder may.
class FakeTool {
public:
  enum class Interpreter { present, missing };
  explicit FakeTool(std::string_view perlScript, Interpreter interpreter = Interpreter::present);

  const std::filesystem::path& folder() const { return folder_; }

private:
  SettingsGuard settings_;
  TemporaryFolder root_;
  std::filesystem::path folder_;
};

}  // namespace lorvane::test
