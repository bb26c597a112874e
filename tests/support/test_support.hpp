#pragma once

#include <filesystem>

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
