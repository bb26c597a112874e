#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string_view>
#include <vector>

namespace lorvane {

// A character set ExifTool understands, for its "-charset" option. The case names are the
// library's identifiers; only the raw values (the tool's words) reach the tool or storage.
// Note macBrew, whose raw value is "MacHebrew".
class ETCharset {
public:
  enum class Case : std::uint8_t {
    utf8,
    utf16,
    ucs2,
    ucs4,
    arabic,
    baltic,
    cyrillic,
    greek,
    hebrew,
    jis,
    latin,
    latin2,
    dosLatinUS,
    dosLatin1,
    dosCyrillic,
    macArabic,
    macChineseCN,
    macChineseTW,
    macCroatian,
    macCyrillic,
    macGreek,
    macBrew,
    macIceland,
    macJapanese,
    macKorean,
    macLatin2,
    macRSymbol,
    macRoman,
    macRomanian,
    macThai,
    macTurkish,
    pdfDoc,
    rSymbol,
    shiftJIS,
    symbol,
    thai,
    turkish,
    vietnam,
  };

  static const ETCharset utf8;
  static const ETCharset utf16;
  static const ETCharset ucs2;
  static const ETCharset ucs4;
  static const ETCharset arabic;
  static const ETCharset baltic;
  static const ETCharset cyrillic;
  static const ETCharset greek;
  static const ETCharset hebrew;
  static const ETCharset jis;
  static const ETCharset latin;
  static const ETCharset latin2;
  static const ETCharset dosLatinUS;
  static const ETCharset dosLatin1;
  static const ETCharset dosCyrillic;
  static const ETCharset macArabic;
  static const ETCharset macChineseCN;
  static const ETCharset macChineseTW;
  static const ETCharset macCroatian;
  static const ETCharset macCyrillic;
  static const ETCharset macGreek;
  static const ETCharset macBrew;
  static const ETCharset macIceland;
  static const ETCharset macJapanese;
  static const ETCharset macKorean;
  static const ETCharset macLatin2;
  static const ETCharset macRSymbol;
  static const ETCharset macRoman;
  static const ETCharset macRomanian;
  static const ETCharset macThai;
  static const ETCharset macTurkish;
  static const ETCharset pdfDoc;
  static const ETCharset rSymbol;
  static const ETCharset shiftJIS;
  static const ETCharset symbol;
  static const ETCharset thai;
  static const ETCharset turkish;
  static const ETCharset vietnam;

  constexpr explicit ETCharset(Case value) : value_(value) {}

  constexpr Case value() const { return value_; }
  constexpr std::string_view rawValue() const {
    return rawValues_[static_cast<std::size_t>(value_)];
  }

  // The case whose raw value is exactly this text, letter case included.
  static std::optional<ETCharset> fromRawValue(std::string_view rawValue);

  // The case a stored text stands for: matched without regard to letter case, and utf8 for
  // any text that names no charset. This is how the serialised form is read back.
  static ETCharset fromStoredValue(std::string_view text);

  // All 38 cases, utf8 first; a new list on each call.
  static std::vector<ETCharset> allCases();

  friend constexpr bool operator==(ETCharset a, ETCharset b) { return a.value_ == b.value_; }

private:
  static constexpr std::array<std::string_view, 38> rawValues_{{
      "UTF8",        "UTF16",       "UCS2",        "UCS4",      "Arabic",       "Baltic",
      "Cyrillic",    "Greek",       "Hebrew",      "JIS",       "Latin",        "Latin2",
      "DOSLatinUS",  "DOSLatin1",   "DOSCyrillic", "MacArabic", "MacChineseCN", "MacChineseTW",
      "MacCroatian", "MacCyrillic", "MacGreek",    "MacHebrew", "MacIceland",   "MacJapanese",
      "MacKorean",   "MacLatin2",   "MacRSymbol",  "MacRoman",  "MacRomanian",  "MacThai",
      "MacTurkish",  "PDFDoc",      "RSymbol",     "ShiftJIS",  "Symbol",       "Thai",
      "Turkish",     "Vietnam",
  }};

  Case value_;
};

inline constexpr ETCharset ETCharset::utf8{Case::utf8};
inline constexpr ETCharset ETCharset::utf16{Case::utf16};
inline constexpr ETCharset ETCharset::ucs2{Case::ucs2};
inline constexpr ETCharset ETCharset::ucs4{Case::ucs4};
inline constexpr ETCharset ETCharset::arabic{Case::arabic};
inline constexpr ETCharset ETCharset::baltic{Case::baltic};
inline constexpr ETCharset ETCharset::cyrillic{Case::cyrillic};
inline constexpr ETCharset ETCharset::greek{Case::greek};
inline constexpr ETCharset ETCharset::hebrew{Case::hebrew};
inline constexpr ETCharset ETCharset::jis{Case::jis};
inline constexpr ETCharset ETCharset::latin{Case::latin};
inline constexpr ETCharset ETCharset::latin2{Case::latin2};
inline constexpr ETCharset ETCharset::dosLatinUS{Case::dosLatinUS};
inline constexpr ETCharset ETCharset::dosLatin1{Case::dosLatin1};
inline constexpr ETCharset ETCharset::dosCyrillic{Case::dosCyrillic};
inline constexpr ETCharset ETCharset::macArabic{Case::macArabic};
inline constexpr ETCharset ETCharset::macChineseCN{Case::macChineseCN};
inline constexpr ETCharset ETCharset::macChineseTW{Case::macChineseTW};
inline constexpr ETCharset ETCharset::macCroatian{Case::macCroatian};
inline constexpr ETCharset ETCharset::macCyrillic{Case::macCyrillic};
inline constexpr ETCharset ETCharset::macGreek{Case::macGreek};
inline constexpr ETCharset ETCharset::macBrew{Case::macBrew};
inline constexpr ETCharset ETCharset::macIceland{Case::macIceland};
inline constexpr ETCharset ETCharset::macJapanese{Case::macJapanese};
inline constexpr ETCharset ETCharset::macKorean{Case::macKorean};
inline constexpr ETCharset ETCharset::macLatin2{Case::macLatin2};
inline constexpr ETCharset ETCharset::macRSymbol{Case::macRSymbol};
inline constexpr ETCharset ETCharset::macRoman{Case::macRoman};
inline constexpr ETCharset ETCharset::macRomanian{Case::macRomanian};
inline constexpr ETCharset ETCharset::macThai{Case::macThai};
inline constexpr ETCharset ETCharset::macTurkish{Case::macTurkish};
inline constexpr ETCharset ETCharset::pdfDoc{Case::pdfDoc};
inline constexpr ETCharset ETCharset::rSymbol{Case::rSymbol};
inline constexpr ETCharset ETCharset::shiftJIS{Case::shiftJIS};
inline constexpr ETCharset ETCharset::symbol{Case::symbol};
inline constexpr ETCharset ETCharset::thai{Case::thai};
inline constexpr ETCharset ETCharset::turkish{Case::turkish};
inline constexpr ETCharset ETCharset::vietnam{Case::vietnam};

inline std::ostream& operator<<(std::ostream& out, ETCharset charset) {
  return out << charset.rawValue();
}

}  // namespace lorvane

template <>
struct std::hash<lorvane::ETCharset> {
  std::size_t operator()(lorvane::ETCharset charset) const noexcept {
    return std::hash<std::string_view>{}(charset.rawValue());
  }
};
