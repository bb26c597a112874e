#include "catalogue_support.hpp"

#include <array>
#include <filesystem>
#include <fstream>

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

}  // namespace lorvane::test
