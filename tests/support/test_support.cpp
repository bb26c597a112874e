#include "test_support.hpp"

#include <stdlib.h>

#include <stdexcept>
#include <string>
#include <system_error>

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

}  // namespace lorvane::test
