#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <span>
#include <string_view>

namespace lorvane {

// One of the seven languages the tag catalogue is translated into. It ties together the
// library's own word for it (rawValue), its name in itself for showing to a user (name) and
// the code ExifTool selects it by with "-lang" (exifToolValue).
//
// Equality and order go by the raw value, so sorting gives chinese, english, french, ...
// while allCases() keeps english first.
class ETLanguage {
public:
  enum class Case : std::uint8_t { english, chinese, french, german, italian, japanese, spanish };

  static const ETLanguage english;
  static const ETLanguage chinese;
  static const ETLanguage french;
  static const ETLanguage german;
  static const ETLanguage italian;
  static const ETLanguage japanese;
  static const ETLanguage spanish;

  // The two other names of a language: `name` for people, `etName` for the tool.
  struct Names {
    std::string_view name;
    std::string_view etName;
    friend bool operator==(const Names&, const Names&) = default;
  };

  constexpr explicit ETLanguage(Case value) : value_(value) {}

  constexpr Case value() const { return value_; }
  constexpr std::string_view rawValue() const { return rows_[index()].rawValue; }
  constexpr std::string_view name() const { return rows_[index()].names.name; }
  constexpr std::string_view exifToolValue() const { return rows_[index()].names.etName; }

  // Exact matches only, letter case included.
  static std::optional<ETLanguage> fromRawValue(std::string_view rawValue);
  // Takes the tool's code ("zh_cn"), never the name or the raw value.
  static std::optional<ETLanguage> fromExifToolValue(std::string_view exifToolValue);

  // english first, then the order of Case.
  static std::span<const ETLanguage> allCases();

  // name and etName of every language, built once.
  static const std::map<ETLanguage, Names>& equivalenceTable();

  // The user's language: the localisation of the library's "Localizable" resources that
  // the user's language settings pick, worked out once per process. english when the
  // resources are missing or name no language.
  static ETLanguage local();

  friend constexpr bool operator==(ETLanguage a, ETLanguage b) { return a.value_ == b.value_; }
  friend constexpr std::strong_ordering operator<=>(ETLanguage a, ETLanguage b) {
    return a.rawValue() <=> b.rawValue();
  }

private:
  struct Row {
    std::string_view rawValue;
    Names names;
  };
  static constexpr std::array<Row, 7> rows_{{
      {"english", {"English", "en"}},
      {"chinese", {"简体中文", "zh_cn"}},
      {"french", {"Français", "fr"}},
      {"german", {"Deutsch", "de"}},
      {"italian", {"Italiano", "it"}},
      {"japanese", {"日本語", "ja"}},
      {"spanish", {"Español", "es"}},
  }};

  constexpr std::size_t index() const { return static_cast<std::size_t>(value_); }

  Case value_;
};

inline constexpr ETLanguage ETLanguage::english{Case::english};
inline constexpr ETLanguage ETLanguage::chinese{Case::chinese};
inline constexpr ETLanguage ETLanguage::french{Case::french};
inline constexpr ETLanguage ETLanguage::german{Case::german};
inline constexpr ETLanguage ETLanguage::italian{Case::italian};
inline constexpr ETLanguage ETLanguage::japanese{Case::japanese};
inline constexpr ETLanguage ETLanguage::spanish{Case::spanish};

inline std::ostream& operator<<(std::ostream& out, ETLanguage language) {
  return out << language.rawValue();
}

}  // namespace lorvane

template <>
struct std::hash<lorvane::ETLanguage> {
  std::size_t operator()(lorvane::ETLanguage language) const noexcept {
    return std::hash<std::string_view>{}(language.rawValue());
  }
};
