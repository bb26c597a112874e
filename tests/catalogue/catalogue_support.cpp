#include "catalogue_support.hpp"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>

extern char** environ;

namespace lorvane::test {
namespace {

nlohmann::json readData(const char* name) {
  std::ifstream file(std::filesystem::path(LORVANE_SOURCE_DIR) / "data" / "catalogue" / name);
  return nlohmann::json::parse(file);
}

}  // namespace

const nlohmann::json& statedTotals() {
  static const nlohmann::json totals = readData("stated-totals.json");
  return totals;
}

const nlohmann::json& catalogueRows() {
  static const nlohmann::json rows = readData("rows.json");
  return rows;
}

const std::map<std::string, const TagItem*, std::less<>>& itemsByName() {
  static const auto items = [] {
    std::map<std::string, const TagItem*, std::less<>> byName;
    for (const TagItem* item : TagItem::allCases()) {
      byName.emplace(item->name().rawValue(), item);
    }
    return byName;
  }();
  return items;
}

std::string_view dataCode(ETLanguage language) {
  static constexpr std::array<std::string_view, 7> codes{"en", "zh", "fr", "de", "it", "ja", "es"};
  return codes[static_cast<std::size_t>(language.value())];
}

ProgramResult runProgram(const std::vector<std::string>& arguments,
                         const std::map<std::string, std::optional<std::string>>& changes) {
  std::map<std::string, std::string> variables;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text(*entry);
    const auto equals = text.find('=');
    variables.emplace(text.substr(0, equals), equals == text.npos ? "" : text.substr(equals + 1));
  }
  for (const auto& [name, value] : changes) {
    if (value) {
      variables[name] = *value;
    } else {
      variables.erase(name);
    }
  }
  std::vector<std::string> environment;
  for (const auto& [name, value] : variables) {
    environment.push_back(name + "=" + value);
  }
  const auto pointers = [](std::vector<std::string>& strings) {
    std::vector<char*> made;
    for (std::string& text : strings) {
      made.push_back(text.data());
    }
    made.push_back(nullptr);
    return made;
  };
  std::vector<std::string> argumentCopy = arguments;
  const auto argv = pointers(argumentCopy);
  const auto envp = pointers(environment);

  ProgramResult result;
  int output[2];
  if (pipe(output) != 0) {
    return result;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&actions, output[0]);
  pid_t child = -1;
  const int failed = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  close(output[1]);
  std::array<char, 4096> buffer;
  for (ssize_t got; !failed && (got = read(output[0], buffer.data(), buffer.size())) > 0;) {
    result.output.append(buffer.data(), static_cast<std::size_t>(got));
  }
  close(output[0]);
  int status = 0;
  if (!failed && waitpid(child, &status, 0) == child && WIFEXITED(status)) {
    result.exitCode = WEXITSTATUS(status);
  }
  return result;
}

std::filesystem::path testProgram() { return std::filesystem::read_symlink("/proc/self/exe"); }

}  // namespace lorvane::test
