#include "processes.hpp"

#include <cstdio>
#include <fstream>
#include <iterator>

namespace lorvane::test {

namespace fs = std::filesystem;

std::string procFile(const fs::path& file) {
  try {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  } catch (const std::ios_base::failure&) {
    return {};
  }
}

std::optional<ProcessStatus> processStatus(int pid) {
  const std::string stat = procFile(fs::path("/proc") / std::to_string(pid) / "stat");
  // The name may hold blanks and parentheses: the state follows its last ')'.
  const auto nameEnd = stat.rfind(')');
  ProcessStatus status{pid};
  if (nameEnd == std::string::npos ||
      std::sscanf(stat.c_str() + nameEnd + 1, " %c %d %d", &status.state, &status.parent,
                  &status.group) != 3) {
    return std::nullopt;
  }
  return status;
}

std::vector<ProcessStatus> allProcesses() {
  std::vector<ProcessStatus> found;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator("/proc", error)) {
    const std::string id = entry.path().filename().string();
    if (id.find_first_not_of("0123456789") == std::string::npos) {
      if (const auto status = processStatus(std::stoi(id))) {
        found.push_back(*status);
      }
    }
  }
  return found;
}

std::size_t entriesIn(const fs::path& folder) {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
}

}  // namespace lorvane::test
