#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
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
  enum class Kind : std::uint8_t {
    int8,
    uint8,
    int16,
    uint16,
    int32,
    uint32,
    int64,
    uint64,
    float32,
    float64
  };
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
        constexpr Kind kind = size == 1   ? Kind::int8
                              : size == 2 ? Kind::int16
                              : size == 4 ? Kind::int32
                                          : Kind::int64;
        return {kind, static_cast<std::int64_t>(value)};
      } else {
        constexpr Kind kind = size == 1   ? Kind::uint8
                              : size == 2 ? Kind::uint16
                              : size == 4 ? Kind::uint32
                                          : Kind::uint64;
        return {kind, static_cast<std::uint64_t>(value)};
      }
    }
  }

  constexpr Kind kind() const { return kind_; }
  constexpr const Value& value() const { return value_; }
  constexpr bool isFloatingPoint() const {
    return kind_ == Kind::float32 || kind_ == Kind::float64;
  }
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

namespace detail {

// The number kinds of a range's bounds: a type whose lowest and highest values they are,
// ZeroBound for the 64-bit float 0.0, NoBound for a format without a range.
struct ZeroBound {};
struct NoBound {};

template <class Kind>
constexpr std::optional<TagNumber> lowest() {
  if constexpr (std::is_same_v<Kind, NoBound>) {
    return std::nullopt;
  } else if constexpr (std::is_same_v<Kind, ZeroBound>) {
    return TagNumber::make(0.0);
  } else {
    return TagNumber::make(std::numeric_limits<Kind>::lowest());
  }
}

template <class Kind>
constexpr std::optional<TagNumber> highest() {
  if constexpr (std::is_same_v<Kind, NoBound>) {
    return std::nullopt;
  } else {
    return TagNumber::make(std::numeric_limits<Kind>::max());
  }
}

}  // namespace detail

// One of ExifTool's 56 value formats, with its raw value as the tool writes it ("int16u",
// "lang-alt", "struct") and its classification for applications: text or number, integer or
// fraction, date or time, and the range of each numeric format. Equality and hash go by the
// raw value; there is no order.
class TagType {
private:
  // At most one group for each format.
  enum class Group : std::uint8_t {
    none,
    shortString,
    longString,
    integer,
    float_,
    rational,
    dateTime,
    dateOnly,
    timeOnly,
    forced,
    imageData
  };
  using Zero = detail::ZeroBound;
  using NoRange = detail::NoBound;
  static constexpr bool yes = true;
  static constexpr bool no = false;

// Every format once, in declared order: case, raw value, group, isSupported, allowsFloats,
// isSigned, and the kinds of its minimum and maximum. The cases, the constants and the rows
// below are all made from this one list.
#define LORVANE_TAG_TYPES(X)                                                       \
  X(unknown, "unknown", none, no, yes, no, NoRange, NoRange)                       \
  X(string, "string", shortString, yes, yes, no, NoRange, NoRange)                 \
  X(pstring, "pstring", shortString, yes, yes, no, NoRange, NoRange)               \
  X(longstring, "longstring", longString, yes, yes, no, NoRange, NoRange)          \
  X(note, "note", none, no, yes, no, NoRange, NoRange)                             \
  X(date, "date", dateTime, yes, yes, no, NoRange, NoRange)                        \
  X(datetime, "datetime", dateTime, yes, yes, no, NoRange, NoRange)                \
  X(datetimez, "datetimez", dateTime, yes, yes, no, NoRange, NoRange)              \
  X(imagedata, "imagedata", forced, no, yes, no, NoRange, NoRange)                 \
  X(int8u, "int8u", integer, yes, no, no, std::uint8_t, std::uint8_t)              \
  X(int8s, "int8s", integer, yes, no, yes, std::int8_t, std::int8_t)               \
  X(int16u, "int16u", integer, yes, no, no, std::uint16_t, std::uint16_t)          \
  X(int16urev, "int16urev", integer, yes, no, no, std::uint16_t, std::uint16_t)    \
  X(int16s, "int16s", integer, yes, no, yes, std::int16_t, std::int16_t)           \
  X(int32u, "int32u", integer, yes, no, no, std::uint32_t, std::uint32_t)          \
  X(int32urev, "int32urev", integer, yes, yes, no, std::uint32_t, std::uint32_t)   \
  X(int32s, "int32s", integer, yes, no, yes, std::int32_t, std::int32_t)           \
  X(int64u, "int64u", integer, yes, no, no, std::uint64_t, std::uint64_t)          \
  X(int64s, "int64s", integer, yes, no, yes, std::int64_t, std::int64_t)           \
  X(integer, "integer", integer, yes, no, yes, std::int64_t, std::int32_t)         \
  X(float_, "float", float_, yes, yes, yes, float, float)                          \
  X(double_, "double", float_, yes, yes, yes, double, double)                      \
  X(fixed16s, "fixed16s", integer, yes, yes, yes, std::int16_t, std::int16_t)      \
  X(fixed32u, "fixed32u", integer, yes, yes, no, std::uint32_t, std::uint32_t)     \
  X(fixed32s, "fixed32s", integer, yes, yes, yes, std::int32_t, std::int32_t)      \
  X(var_ue7, "var_ue7", none, no, yes, no, NoRange, NoRange)                       \
  X(var_int16u, "var_int16u", integer, yes, yes, no, std::uint16_t, std::uint16_t) \
  X(var_string, "var_string", shortString, yes, yes, no, NoRange, NoRange)         \
  X(var_ustr32, "var_ustr32", shortString, yes, yes, no, NoRange, NoRange)         \
  X(var_pstr32, "var_pstr32", shortString, yes, yes, no, NoRange, NoRange)         \
  X(real, "real", float_, yes, yes, yes, float, float)                             \
  X(rational, "rational", rational, yes, yes, yes, float, float)                   \
  X(rational32u, "rational32u", rational, yes, yes, no, Zero, float)               \
  X(rational32s, "rational32s", rational, yes, yes, yes, float, float)             \
  X(rational64u, "rational64u", rational, yes, yes, no, Zero, double)              \
  X(rational64s, "rational64s", rational, yes, yes, yes, double, double)           \
  X(speed, "speed", rational, yes, yes, no, Zero, double)                          \
  X(digits, "digits", shortString, yes, yes, no, NoRange, NoRange)                 \
  X(boolean, "boolean", none, yes, yes, no, NoRange, NoRange)                      \
  X(lang_alt, "lang-alt", shortString, yes, yes, no, NoRange, NoRange)             \
  X(country3166a3, "country3166a3", none, yes, yes, no, NoRange, NoRange)          \
  X(partialdate, "partialdate", dateOnly, yes, yes, no, NoRange, NoRange)          \
  X(partialtime, "partialtime", timeOnly, yes, yes, no, NoRange, NoRange)          \
  X(digitstime, "digitstime", timeOnly, yes, yes, no, NoRange, NoRange)            \
  X(digitsdate, "digitsdate", dateOnly, yes, yes, no, NoRange, NoRange)            \
  X(extended, "extended", none, no, yes, no, NoRange, NoRange)                     \
  X(binary, "binary", forced, no, yes, no, NoRange, NoRange)                       \
  X(structure, "struct", none, no, yes, no, NoRange, NoRange)                      \
  X(vt_filetime, "vt_filetime", none, no, yes, no, NoRange, NoRange)               \
  X(utf8, "utf8", none, no, yes, no, NoRange, NoRange)                             \
  X(unsigned_, "unsigned", none, no, yes, no, NoRange, NoRange)                    \
  X(signed_, "signed", none, no, yes, no, NoRange, NoRange)                        \
  X(unicode, "unicode", none, no, yes, no, NoRange, NoRange)                       \
  X(guid, "guid", none, no, yes, no, NoRange, NoRange)                             \
  X(resize, "resize", none, no, yes, no, NoRange, NoRange)                         \
  X(image_b64, "image_b64", imageData, yes, yes, no, NoRange, NoRange)

public:
  enum class Case : std::uint8_t {
#define LORVANE_TAG_TYPE_CASE(name, ...) name,
    LORVANE_TAG_TYPES(LORVANE_TAG_TYPE_CASE)
#undef LORVANE_TAG_TYPE_CASE
  };

#define LORVANE_TAG_TYPE_CONSTANT(name, ...) static const TagType name;
  LORVANE_TAG_TYPES(LORVANE_TAG_TYPE_CONSTANT)
#undef LORVANE_TAG_TYPE_CONSTANT

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
  constexpr bool isDateTimeOrPartial() const {
    return isDateTime() || isDateOnly() || isTimeOnly();
  }
  // Only image_b64; imagedata is forced instead.
  constexpr bool isImageData() const { return row().group == Group::imageData; }
  // imagedata and binary.
  constexpr bool isForced() const { return row().group == Group::forced; }
  constexpr bool isSupported() const { return row().isSupported; }
  constexpr bool allowsFloats() const { return row().allowsFloats; }
  constexpr bool isSigned() const { return row().isSigned; }

  // The range of the integer, float and rational formats, each bound with its number kind
  // (the two bounds may differ in kind, as for integer); nothing for every other format.
  constexpr std::optional<TagNumber> minimumNumberValue() const { return row().minimum; }
  constexpr std::optional<TagNumber> maximumNumberValue() const { return row().maximum; }

  friend constexpr bool operator==(TagType a, TagType b) { return a.value_ == b.value_; }

private:
  struct Row {
    std::string_view rawValue;
    Group group;
    bool isSupported;
    bool allowsFloats;
    bool isSigned;
    std::optional<TagNumber> minimum;
    std::optional<TagNumber> maximum;
  };
  static constexpr std::array<Row, 56> rows_{{
#define LORVANE_TAG_TYPE_ROW(name, raw, group, supported, floats, isSigned, minimum, maximum) \
  {raw,                                                                                       \
   Group::group,                                                                              \
   supported,                                                                                 \
   floats,                                                                                    \
   isSigned,                                                                                  \
   detail::lowest<minimum>(),                                                                 \
   detail::highest<maximum>()},
      LORVANE_TAG_TYPES(LORVANE_TAG_TYPE_ROW)
#undef LORVANE_TAG_TYPE_ROW
  }};

  constexpr const Row& row() const { return rows_[static_cast<std::size_t>(value_)]; }

  Case value_;
};

#define LORVANE_TAG_TYPE_DEFINITION(name, ...) inline constexpr TagType TagType::name{Case::name};
LORVANE_TAG_TYPES(LORVANE_TAG_TYPE_DEFINITION)
#undef LORVANE_TAG_TYPE_DEFINITION
#undef LORVANE_TAG_TYPES

inline std::ostream& operator<<(std::ostream& out, TagType type) { return out << type.rawValue(); }

}  // namespace lorvane

template <>
struct std::hash<lorvane::TagType> {
  std::size_t operator()(lorvane::TagType type) const noexcept {
    return std::hash<std::string_view>{}(type.rawValue());
  }
};
