#include <lorvane/json.hpp>
#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <limits>
#include <unordered_set>

using namespace lorvane;
using nlohmann::json;
using Kind = TagNumber::Kind;

TEST(TagType, RawValuesMatchExactlyOrAfterLowercasing) {
  EXPECT_EQ(TagType::fromRawValue("int16u"), TagType::int16u);
  EXPECT_FALSE(TagType::fromRawValue("INT16U"));
  EXPECT_EQ(TagType::parse("INT16U"), TagType::int16u);
  EXPECT_EQ(TagType::parse("Float"), TagType::float_);

  EXPECT_EQ(TagType::fromRawValue("lang-alt"), TagType::lang_alt);
  EXPECT_FALSE(TagType::fromRawValue("lang_alt"));
  EXPECT_FALSE(TagType::parse("lang_alt"));
  EXPECT_EQ(TagType::fromRawValue("struct"), TagType::structure);
  EXPECT_FALSE(TagType::parse("structure"));
  EXPECT_FALSE(TagType::parse(""));

  // Lower-casing is Unicode's, not just ASCII's: the Kelvin sign lower-cases to "k".
  EXPECT_EQ(TagType::parse("UN\u212ANOWN"), TagType::unknown);
}

TEST(TagType, RawValueAndSwiftName) {
  EXPECT_EQ(TagType::double_.rawValue(), "double");
  EXPECT_EQ(TagType::signed_.rawValue(), "signed");
  EXPECT_EQ(TagType::lang_alt.rawValue(), "lang-alt");
  EXPECT_EQ(TagType::lang_alt.swiftName(), "lang_alt");
  EXPECT_EQ(TagType::structure.swiftName(), "struct");
  EXPECT_EQ(TagType::var_int16u.swiftName(), "var_int16u");

  std::ostringstream out;
  out << TagType::image_b64;
  EXPECT_EQ(out.str(), "image_b64");
}

TEST(TagType, EqualityAndHashFollowTheRawValue) {
  EXPECT_EQ(TagType::parse("RATIONAL64U"), TagType::rational64u);
  EXPECT_NE(TagType::int16u, TagType::int16urev);
  EXPECT_EQ(std::hash<TagType>{}(TagType::int8u), std::hash<std::string_view>{}("int8u"));
  std::unordered_set<TagType> types{TagType::string, TagType::string, TagType::note};
  EXPECT_EQ(types.size(), 2u);
}

TEST(TagType, ClassesOfTextAndDates) {
  EXPECT_TRUE(TagType::digits.isShortString());
  EXPECT_FALSE(TagType::digits.isNumber());
  EXPECT_TRUE(TagType::longstring.isLongString());
  EXPECT_TRUE(TagType::longstring.isString());
  EXPECT_TRUE(TagType::var_ustr32.isString());
  EXPECT_FALSE(TagType::note.isString());

  EXPECT_TRUE(TagType::datetimez.isDateTime());
  EXPECT_FALSE(TagType::partialdate.isDateTime());
  EXPECT_TRUE(TagType::partialdate.isDateOnly());
  EXPECT_TRUE(TagType::partialdate.isDateTimeOrPartial());
  EXPECT_TRUE(TagType::digitstime.isTimeOnly());
  EXPECT_TRUE(TagType::digitstime.isDateTimeOrPartial());
  EXPECT_FALSE(TagType::string.isDateTimeOrPartial());

  EXPECT_FALSE(TagType::imagedata.isImageData());
  EXPECT_TRUE(TagType::imagedata.isForced());
  EXPECT_FALSE(TagType::imagedata.isSupported());
  EXPECT_TRUE(TagType::image_b64.isImageData());
  EXPECT_FALSE(TagType::image_b64.isForced());
  EXPECT_TRUE(TagType::image_b64.isSupported());
  EXPECT_TRUE(TagType::binary.isForced());

  for (const TagType type : {TagType::boolean, TagType::country3166a3}) {
    EXPECT_TRUE(type.isSupported());
    EXPECT_FALSE(type.isString() || type.isNumber() || type.isDateTimeOrPartial() ||
                 type.isForced() || type.isImageData());
    EXPECT_FALSE(type.minimumNumberValue());
  }
}

TEST(TagType, ClassesOfNumbers) {
  EXPECT_TRUE(TagType::fixed32s.isInteger());
  EXPECT_TRUE(TagType::fixed32s.isSigned());
  EXPECT_TRUE(TagType::fixed32s.allowsFloats());
  EXPECT_EQ(TagType::fixed32s.minimumNumberValue(), TagType::int32s.minimumNumberValue());
  EXPECT_EQ(TagType::fixed32s.maximumNumberValue(), TagType::int32s.maximumNumberValue());

  EXPECT_TRUE(TagType::speed.isRational());
  EXPECT_TRUE(TagType::speed.isFloat());
  EXPECT_TRUE(TagType::speed.isNumber());
  EXPECT_FALSE(TagType::speed.isSigned());
  EXPECT_TRUE(TagType::real.isFloat());
  EXPECT_FALSE(TagType::real.isRational());

  EXPECT_FALSE(TagType::int16urev.allowsFloats());
  EXPECT_TRUE(TagType::int32urev.allowsFloats());
  EXPECT_TRUE(TagType::var_int16u.allowsFloats());
  EXPECT_TRUE(TagType::string.allowsFloats());

  for (const TagType type : {TagType::signed_, TagType::unsigned_}) {
    EXPECT_FALSE(type.isNumber());
    EXPECT_FALSE(type.isSigned());
    EXPECT_FALSE(type.isSupported());
    EXPECT_FALSE(type.minimumNumberValue());
    EXPECT_FALSE(type.maximumNumberValue());
  }
}

TEST(TagType, RangesKeepTheirNumberKinds) {
  EXPECT_EQ(TagType::int8u.minimumNumberValue(), TagNumber::make(std::uint8_t{0}));
  EXPECT_EQ(TagType::int8u.maximumNumberValue(), TagNumber::make(std::uint8_t{255}));
  EXPECT_NE(TagType::int8u.maximumNumberValue(), TagNumber::make(std::uint32_t{255}));
  EXPECT_EQ(TagType::int8s.minimumNumberValue(), TagNumber::make(std::int8_t{-128}));
  EXPECT_EQ(TagType::var_int16u.maximumNumberValue(), TagNumber::make(std::uint16_t{65535}));
  EXPECT_EQ(TagType::fixed16s.minimumNumberValue(), TagNumber::make(std::int16_t{-32768}));
  EXPECT_EQ(TagType::int32urev.maximumNumberValue(), TagNumber::make(std::uint32_t{4294967295u}));

  const TagNumber int64uMaximum = TagType::int64u.maximumNumberValue().value();
  EXPECT_EQ(int64uMaximum.kind(), Kind::uint64);
  EXPECT_EQ(std::get<std::uint64_t>(int64uMaximum.value()), 18446744073709551615u);
  EXPECT_EQ(int64uMaximum.description(), "18446744073709551615");

  // integer reaches 64-bit values downwards but stops at the 32-bit maximum.
  const TagNumber integerMinimum = TagType::integer.minimumNumberValue().value();
  const TagNumber integerMaximum = TagType::integer.maximumNumberValue().value();
  EXPECT_EQ(integerMinimum.kind(), Kind::int64);
  EXPECT_EQ(integerMinimum.description(), "-9223372036854775808");
  EXPECT_EQ(integerMaximum.kind(), Kind::int32);
  EXPECT_EQ(integerMaximum.description(), "2147483647");

  const TagNumber rationalMaximum = TagType::rational.maximumNumberValue().value();
  EXPECT_EQ(rationalMaximum.kind(), Kind::float32);
  EXPECT_TRUE(rationalMaximum.isFloatingPoint());
  EXPECT_EQ(rationalMaximum.doubleValue(), std::numeric_limits<float>::max());
  EXPECT_EQ(rationalMaximum.description(), "3.4028235e+38");
  EXPECT_EQ(TagType::float_.minimumNumberValue()->doubleValue(), -std::numeric_limits<float>::max());

  // Unsigned fractions start at a 64-bit zero, whatever kind their maximum has.
  EXPECT_EQ(TagType::rational32u.minimumNumberValue(), TagNumber::make(0.0));
  EXPECT_EQ(TagType::rational32u.maximumNumberValue()->kind(), Kind::float32);
  EXPECT_EQ(TagType::speed.minimumNumberValue(), TagNumber::make(0.0));
  EXPECT_EQ(TagType::speed.maximumNumberValue(), TagNumber::make(std::numeric_limits<double>::max()));
  EXPECT_EQ(TagType::rational64s.minimumNumberValue()->description(), "-1.7976931348623157e+308");

  EXPECT_FALSE(TagType::string.maximumNumberValue());
  EXPECT_FALSE(TagType::datetime.minimumNumberValue());
}

TEST(TagType, EveryNumberHasARangeAndNothingElseHasOne) {
  int numbers = 0;
  int supported = 0;
  int signedTypes = 0;
  int integersWithoutFloats = 0;
  for (int raw = 0; raw < 56; ++raw) {
    const TagType type(static_cast<TagType::Case>(raw));
    EXPECT_EQ(TagType::fromRawValue(type.rawValue()), type);
    EXPECT_EQ(type.isNumber(), type.minimumNumberValue().has_value()) << type;
    EXPECT_EQ(type.isNumber(), type.maximumNumberValue().has_value()) << type;
    numbers += type.isNumber();
    supported += type.isSupported();
    signedTypes += type.isSigned();
    integersWithoutFloats += !type.allowsFloats();
  }
  EXPECT_EQ(numbers, 24);
  EXPECT_EQ(supported, 42);
  EXPECT_EQ(signedTypes, 13);
  EXPECT_EQ(integersWithoutFloats, 10);
}

TEST(TagTypeJson, WritesTheRawValueAndReadsLowercased) {
  EXPECT_EQ(json(TagType::lang_alt), json("lang-alt"));
  EXPECT_EQ(json("LANG-ALT").get<TagType>(), TagType::lang_alt);
  EXPECT_EQ(json(json("LANG-ALT").get<TagType>()), json("lang-alt"));
  EXPECT_EQ(json(TagType::unknown), json("unknown"));
  EXPECT_EQ(json("unknown").get<TagType>(), TagType::unknown);

  EXPECT_EQ(json("lang_alt").get<TagType>(), TagType::unknown);
  EXPECT_EQ(json("structure").get<TagType>(), TagType::unknown);
  EXPECT_EQ(json("struct").get<TagType>(), TagType::structure);
  EXPECT_THROW((void)json(nullptr).get<TagType>(), json::type_error);
}
