#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

namespace lorvane {

// A bound of a numeric TagType's range: a value that remembers the kind of number it is, so
// that 255 as an unsigned 8-bit bound differs from 255 as a 32-bit one.
class TagNumber {
public:
  enum class Kind : std::uint8_t { int8, uint8, int16, uint16, int32, uint32, int64, uint64, float32, float64 };
  // Signed kinds hold an int64_t, unsigned kinds a uint64_t, float kinds a double.
  using Value = std::variant<std::int64_t, std::uint64_t, double>;

  // The kind follows the argument's type: TagNumber::make(std::uint8_t{255}) is uint8.
  template <class Number>
  static constexpr TagNumber make(Number value) {
    if constexpr (std::is_same_v<Number, float>) {
      return {Kind::float32, static_cast<double>(value)};
    } else if constexpr (std::is_same_v<Number, double>) {
      return {Kind::float64, value};
    } else {
      static_assert(std::is_integral_v<Number> && sizeof(Number) <= 8);
      constexpr auto size = sizeof(Number);
      if constexpr (std::is_signed_v<Number>) {
        constexpr Kind kind = size == 1 ? Kind::int8 : size == 2 ? Kind::int16 : size == 4 ? Kind::int32 : Kind::int64;
        return {kind, static_cast<std::int64_t>(value)};
      } else {
        constexpr Kind kind = size == 1 ? Kind::uint8 : size == 2 ? Kind::uint16 : size == 4 ? Kind::uint32 : Kind::uint64;
        return {kind, static_cast<std::uint64_t>(value)};
      }
    }
  }

  constexpr Kind kind() const { return kind_; }
  constexpr const Value& value() const { return value_; }
  constexpr bool isFloatingPoint() const { return kind_ == Kind::float32 || kind_ == Kind::float64; }
  // The value as a double, rounded where a 64-bit integer does not fit.
  constexpr double doubleValue() const {
    return std::visit([](auto number) { return static_cast<double>(number); }, value_);
  }
  // The shortest text that reads back as the same number of its kind ("255", "3.4028235e+38").
  std::string description() const;

  friend constexpr bool operator==(const TagNumber&, const TagNumber&) = default;

private:
  constexpr TagNumber(Kind kind, Value value) : kind_(kind), value_(value) {}

  Kind kind_;
  Value value_;
};

inline std::ostream& operator<<(std::ostream& out, const TagNumber& number) {
  return out << number.description();
}

// One of ExifTool's 56 value formats, with its raw value as the tool writes it ("int16u",
// "lang-alt", "struct") and its classification for applications: text or number, integer or
// fraction, date or time, and the range of each numeric format. Equality and hash go by the
// raw value; there is no order.
class TagType {
public:
  enum class Case : std::uint8_t {
    unknown,
    string,
    pstring,
    longstring,
    note,
    date,
    datetime,
    datetimez,
    imagedata,
    int8u,
    int8s,
    int16u,
    int16urev,
    int16s,
    int32u,
    int32urev,
    int32s,
    int64u,
    int64s,
    integer,
    float_,
    double_,
    fixed16s,
    fixed32u,
    fixed32s,
    var_ue7,
    var_int16u,
    var_string,
    var_ustr32,
    var_pstr32,
    real,
    rational,
    rational32u,
    rational32s,
    rational64u,
    rational64s,
    speed,
    digits,
    boolean,
    lang_alt,
    country3166a3,
    partialdate,
    partialtime,
    digitstime,
    digitsdate,
    extended,
    binary,
    structure,
    vt_filetime,
    utf8,
    unsigned_,
    signed_,
    unicode,
    guid,
    resize,
    image_b64
  };

  static const TagType unknown;
  static const TagType string;
  static const TagType pstring;
  static const TagType longstring;
  static const TagType note;
  static const TagType date;
  static const TagType datetime;
  static const TagType datetimez;
  static const TagType imagedata;
  static const TagType int8u;
  static const TagType int8s;
  static const TagType int16u;
  static const TagType int16urev;
  static const TagType int16s;
  static const TagType int32u;
  static const TagType int32urev;
  static const TagType int32s;
  static const TagType int64u;
  static const TagType int64s;
  static const TagType integer;
  static const TagType float_;
  static const TagType double_;
  static const TagType fixed16s;
  static const TagType fixed32u;
  static const TagType fixed32s;
  static const TagType var_ue7;
  static const TagType var_int16u;
  static const TagType var_string;
  static const TagType var_ustr32;
  static const TagType var_pstr32;
  static const TagType real;
  static const TagType rational;
  static const TagType rational32u;
  static const TagType rational32s;
  static const TagType rational64u;
  static const TagType rational64s;
  static const TagType speed;
  static const TagType digits;
  static const TagType boolean;
  static const TagType lang_alt;
  static const TagType country3166a3;
  static const TagType partialdate;
  static const TagType partialtime;
  static const TagType digitstime;
  static const TagType digitsdate;
  static const TagType extended;
  static const TagType binary;
  static const TagType structure;
  static const TagType vt_filetime;
  static const TagType utf8;
  static const TagType unsigned_;
  static const TagType signed_;
  static const TagType unicode;
  static const TagType guid;
  static const TagType resize;
  static const TagType image_b64;

  constexpr explicit TagType(Case value) : value_(value) {}

  constexpr Case value() const { return value_; }
  constexpr std::string_view rawValue() const { return row().rawValue; }

  // Exact, case-sensitive match against the 56 raw values.
  static std::optional<TagType> fromRawValue(std::string_view rawValue);
  // Lowercases the text first: "INT16U" gives int16u.
  static std::optional<TagType> parse(std::string_view text);

  // The raw value with "-" made "_": the case name for all cases but structure ("struct").
  std::string swiftName() const;

  constexpr bool isShortString() const { return row().group == Group::shortString; }
  constexpr bool isLongString() const { return row().group == Group::longString; }
  constexpr bool isString() const { return isShortString() || isLongString(); }
  constexpr bool isInteger() const { return row().group == Group::integer; }
  constexpr bool isRational() const { return row().group == Group::rational; }
  // Floating point, rationals included.
  constexpr bool isFloat() const { return row().group == Group::float_ || isRational(); }
  constexpr bool isNumber() const { return isInteger() || isFloat(); }
  constexpr bool isDateTime() const { return row().group == Group::dateTime; }
  constexpr bool isDateOnly() const { return row().group == Group::dateOnly; }
  constexpr bool isTimeOnly() const { return row().group == Group::timeOnly; }
  constexpr bool isDateTimeOrPartial() const { return isDateTime() || isDateOnly() || isTimeOnly(); }
  // Only image_b64; imagedata is forced instead.
  constexpr bool isImageData() const { return row().group == Group::imageData; }
  // imagedata and binary.
  constexpr bool isForced() const { return row().group == Group::forced; }
  constexpr bool isSupported() const { return row().isSupported; }
  constexpr bool allowsFloats() const { return row().allowsFloats; }
  constexpr bool isSigned() const { return row().isSigned; }

  // The range of the integer, float and rational formats, each bound with its number kind
  // (the two bounds may differ in kind, as for integer); nothing for every other format.
  std::optional<TagNumber> minimumNumberValue() const;
  std::optional<TagNumber> maximumNumberValue() const;

  friend constexpr bool operator==(TagType a, TagType b) { return a.value_ == b.value_; }

private:
  // At most one group for each format.
  enum class Group : std::uint8_t {
    none, shortString, longString, integer, float_, rational, dateTime, dateOnly, timeOnly, forced, imageData
  };
  struct Row {
    std::string_view rawValue;
    Group group;
    bool isSupported;
    bool allowsFloats;
    bool isSigned;
  };
  // In the order of Case.
  static constexpr std::array<Row, 56> rows_{{
      {"unknown", Group::none, false, true, false},
      {"string", Group::shortString, true, true, false},
      {"pstring", Group::shortString, true, true, false},
      {"longstring", Group::longString, true, true, false},
      {"note", Group::none, false, true, false},
      {"date", Group::dateTime, true, true, false},
      {"datetime", Group::dateTime, true, true, false},
      {"datetimez", Group::dateTime, true, true, false},
      {"imagedata", Group::forced, false, true, false},
      {"int8u", Group::integer, true, false, false},
      {"int8s", Group::integer, true, false, true},
      {"int16u", Group::integer, true, false, false},
      {"int16urev", Group::integer, true, false, false},
      {"int16s", Group::integer, true, false, true},
      {"int32u", Group::integer, true, false, false},
      {"int32urev", Group::integer, true, true, false},
      {"int32s", Group::integer, true, false, true},
      {"int64u", Group::integer, true, false, false},
      {"int64s", Group::integer, true, false, true},
      {"integer", Group::integer, true, false, true},
      {"float", Group::float_, true, true, true},
      {"double", Group::float_, true, true, true},
      {"fixed16s", Group::integer, true, true, true},
      {"fixed32u", Group::integer, true, true, false},
      {"fixed32s", Group::integer, true, true, true},
      {"var_ue7", Group::none, false, true, false},
      {"var_int16u", Group::integer, true, true, false},
      {"var_string", Group::shortString, true, true, false},
      {"var_ustr32", Group::shortString, true, true, false},
      {"var_pstr32", Group::shortString, true, true, false},
      {"real", Group::float_, true, true, true},
      {"rational", Group::rational, true, true, true},
      {"rational32u", Group::rational, true, true, false},
      {"rational32s", Group::rational, true, true, true},
      {"rational64u", Group::rational, true, true, false},
      {"rational64s", Group::rational, true, true, true},
      {"speed", Group::rational, true, true, false},
      {"digits", Group::shortString, true, true, false},
      {"boolean", Group::none, true, true, false},
      {"lang-alt", Group::shortString, true, true, false},
      {"country3166a3", Group::none, true, true, false},
      {"partialdate", Group::dateOnly, true, true, false},
      {"partialtime", Group::timeOnly, true, true, false},
      {"digitstime", Group::timeOnly, true, true, false},
      {"digitsdate", Group::dateOnly, true, true, false},
      {"extended", Group::none, false, true, false},
      {"binary", Group::forced, false, true, false},
      {"struct", Group::none, false, true, false},
      {"vt_filetime", Group::none, false, true, false},
      {"utf8", Group::none, false, true, false},
      {"unsigned", Group::none, false, true, false},
      {"signed", Group::none, false, true, false},
      {"unicode", Group::none, false, true, false},
      {"guid", Group::none, false, true, false},
      {"resize", Group::none, false, true, false},
      {"image_b64", Group::imageData, true, true, false},
  }};

  constexpr const Row& row() const { return rows_[static_cast<std::size_t>(value_)]; }

  Case value_;
};

inline constexpr TagType TagType::unknown{Case::unknown};
inline constexpr TagType TagType::string{Case::string};
inline constexpr TagType TagType::pstring{Case::pstring};
inline constexpr TagType TagType::longstring{Case::longstring};
inline constexpr TagType TagType::note{Case::note};
inline constexpr TagType TagType::date{Case::date};
inline constexpr TagType TagType::datetime{Case::datetime};
inline constexpr TagType TagType::datetimez{Case::datetimez};
inline constexpr TagType TagType::imagedata{Case::imagedata};
inline constexpr TagType TagType::int8u{Case::int8u};
inline constexpr TagType TagType::int8s{Case::int8s};
inline constexpr TagType TagType::int16u{Case::int16u};
inline constexpr TagType TagType::int16urev{Case::int16urev};
inline constexpr TagType TagType::int16s{Case::int16s};
inline constexpr TagType TagType::int32u{Case::int32u};
inline constexpr TagType TagType::int32urev{Case::int32urev};
inline constexpr TagType TagType::int32s{Case::int32s};
inline constexpr TagType TagType::int64u{Case::int64u};
inline constexpr TagType TagType::int64s{Case::int64s};
inline constexpr TagType TagType::integer{Case::integer};
inline constexpr TagType TagType::float_{Case::float_};
inline constexpr TagType TagType::double_{Case::double_};
inline constexpr TagType TagType::fixed16s{Case::fixed16s};
inline constexpr TagType TagType::fixed32u{Case::fixed32u};
inline constexpr TagType TagType::fixed32s{Case::fixed32s};
inline constexpr TagType TagType::var_ue7{Case::var_ue7};
inline constexpr TagType TagType::var_int16u{Case::var_int16u};
inline constexpr TagType TagType::var_string{Case::var_string};
inline constexpr TagType TagType::var_ustr32{Case::var_ustr32};
inline constexpr TagType TagType::var_pstr32{Case::var_pstr32};
inline constexpr TagType TagType::real{Case::real};
inline constexpr TagType TagType::rational{Case::rational};
inline constexpr TagType TagType::rational32u{Case::rational32u};
inline constexpr TagType TagType::rational32s{Case::rational32s};
inline constexpr TagType TagType::rational64u{Case::rational64u};
inline constexpr TagType TagType::rational64s{Case::rational64s};
inline constexpr TagType TagType::speed{Case::speed};
inline constexpr TagType TagType::digits{Case::digits};
inline constexpr TagType TagType::boolean{Case::boolean};
inline constexpr TagType TagType::lang_alt{Case::lang_alt};
inline constexpr TagType TagType::country3166a3{Case::country3166a3};
inline constexpr TagType TagType::partialdate{Case::partialdate};
inline constexpr TagType TagType::partialtime{Case::partialtime};
inline constexpr TagType TagType::digitstime{Case::digitstime};
inline constexpr TagType TagType::digitsdate{Case::digitsdate};
inline constexpr TagType TagType::extended{Case::extended};
inline constexpr TagType TagType::binary{Case::binary};
inline constexpr TagType TagType::structure{Case::structure};
inline constexpr TagType TagType::vt_filetime{Case::vt_filetime};
inline constexpr TagType TagType::utf8{Case::utf8};
inline constexpr TagType TagType::unsigned_{Case::unsigned_};
inline constexpr TagType TagType::signed_{Case::signed_};
inline constexpr TagType TagType::unicode{Case::unicode};
inline constexpr TagType TagType::guid{Case::guid};
inline constexpr TagType TagType::resize{Case::resize};
inline constexpr TagType TagType::image_b64{Case::image_b64};

inline std::ostream& operator<<(std::ostream& out, TagType type) { return out << type.rawValue(); }

}  // namespace lorvane

template <>
struct std::hash<lorvane::TagType> {
  std::size_t operator()(lorvane::TagType type) const noexcept {
    return std::hash<std::string_view>{}(type.rawValue());
  }
};
