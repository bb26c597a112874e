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

StringTableGetter stringTableGetter(std::string_view stream) {
  static const std::map<std::string_view, StringTableGetter> getters{
      {"Canon", &TagStrings::stringTableCanon},
      {"Composite", &TagStrings::stringTableComposite},
      {"DICOM", &TagStrings::stringTableDICOM},
      {"EXIF", &TagStrings::stringTableEXIF},
      {"File", &TagStrings::stringTableFile},
      {"GoPro", &TagStrings::stringTableGoPro},
      {"ID3", &TagStrings::stringTableID3},
      {"IPTC", &TagStrings::stringTableIPTC},
      {"JFIF", &TagStrings::stringTableJFIF},
      {"Jpeg2000", &TagStrings::stringTableJpeg2000},
      {"Meta", &TagStrings::stringTableMeta},
      {"MIE", &TagStrings::stringTableMIE},
      {"MXF", &TagStrings::stringTableMXF},
      {"Nikon", &TagStrings::stringTableNikon},
      {"Olympus", &TagStrings::stringTableOlympus},
      {"Photoshop", &TagStrings::stringTablePhotoshop},
      {"QuickTime", &TagStrings::stringTableQuickTime},
      {"Sony", &TagStrings::stringTableSony},
      {"XMP", &TagStrings::stringTableXMP},
  };
  const auto found = getters.find(stream);
  return found != getters.end() ? found->second : nullptr;
}

std::string_view dataCode(ETLanguage language) {
  static constexpr std::array<std::string_view, 7> codes{"en", "zh", "fr", "de", "it", "ja", "es"};
  return codes[static_cast<std::size_t>(language.value())];
}

}  // namespace lorvane::test
