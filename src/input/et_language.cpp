#include <lorvane/et_language.hpp>

#include <algorithm>

namespace lorvane {
namespace {

constexpr std::array<ETLanguage, 7> allLanguages{
    ETLanguage::english, ETLanguage::chinese,  ETLanguage::french,  ETLanguage::german,
    ETLanguage::italian, ETLanguage::japanese, ETLanguage::spanish,
};

template <class Projection>
std::optional<ETLanguage> findLanguage(std::string_view text, Projection projection) {
  const auto* found = std::ranges::find(allLanguages, text, projection);
  if (found == allLanguages.end()) {
    return std::nullopt;
  }
  return *found;
}

}  // namespace

std::optional<ETLanguage> ETLanguage::fromRawValue(std::string_view rawValue) {
  return findLanguage(rawValue, &ETLanguage::rawValue);
}

std::optional<ETLanguage> ETLanguage::fromExifToolValue(std::string_view exifToolValue) {
  return findLanguage(exifToolValue, &ETLanguage::exifToolValue);
}

std::span<const ETLanguage> ETLanguage::allCases() { return allLanguages; }

const std::map<ETLanguage, ETLanguage::Names>& ETLanguage::equivalenceTable() {
  static const std::map<ETLanguage, Names> table = [] {
    std::map<ETLanguage, Names> rows;
    for (ETLanguage language : allLanguages) {
      rows.emplace(language, Names{language.name(), language.exifToolValue()});
    }
    return rows;
  }();
  return table;
}

}  // namespace lorvane
