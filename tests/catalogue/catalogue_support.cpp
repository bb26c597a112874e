#include "catalogue_support.hpp"

#include <array>
#include <filesystem>
#include <fstream>

#include "platform/child_process.hpp"
#include "platform/pipe.hpp"

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

std::string programOutput(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                          const std::map<std::string, std::optional<std::string>>& changes) {
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
    return *child.failure();
  }
  const std::vector<std::byte> bytes = platform::readToEnd(output.readEnd.get());
  child.waitForExit();
  return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

std::filesystem::path testProgram() { return std::filesystem::read_symlink("/proc/self/exe"); }

}  // namespace lorvane::test
