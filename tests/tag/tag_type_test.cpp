#include <lorvane/json.hpp>
#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <limits>

using namespace lorvane;
using nlohmann::json;
using Kind = TagNumber::Kind;

TEST(TagType, RawValuesMatchExactlyOrAfterLowercasing) {
  EXPECT_EQ(TagType::fromRawValue("int16u"), TagType::int16u);
  EXPECT_FALSE(TagType::fromRawValue("INT16U"));
  EXPECT_EQ(TagType::parse("INT16U"), TagType::int16u);
  EXPECT_EQ(TagType::parse("Float"), TagType::float_);
  EXPECT_EQ(TagType::fromRawValue("lang-alt"), TagType::lang_alt);
  EXPECT_FALSE(TagType::parse("lang_alt"));
  // Unicode lower-casing: the Kelvin sign becomes "k".
  EXPECT_EQ(TagType::parse("UN\u212ANOWN"), TagType::unknown);

  EXPECT_EQ(TagType::lang_alt.swiftName(), "lang_alt");
}

TEST(TagType, ClassesOfTheFormats) {
  // The cases where a format's name suggests another class than it has.
  EXPECT_TRUE(TagType::digits.isShortString() && !TagType::digits.isNumber());
  EXPECT_TRUE(TagType::partialdate.isDateOnly() && !TagType::partialdate.isDateTime());
  EXPECT_TRUE(TagType::imagedata.isForced() && !TagType::imagedata.isImageData());
  EXPECT_TRUE(TagType::image_b64.isImageData() && !TagType::image_b64.isForced());
  EXPECT_TRUE(TagType::fixed32s.isInteger() && TagType::fixed32s.allowsFloats());
  EXPECT_TRUE(TagType::speed.isRational() && !TagType::speed.isSigned());
  EXPECT_FALSE(TagType::int16urev.allowsFloats());

  for (const TagType type : {TagType::boolean, TagType::country3166a3, TagType::signed_}) {
    EXPECT_FALSE(type.isString() || type.isNumber() || type.isDateTimeOrPartial() ||
                 type.isForced() || type.isImageData() || type.isSigned());
  }
  EXPECT_TRUE(TagType::boolean.isSupported());
  EXPECT_FALSE(TagType::signed_.isSupported());
}

TEST(TagType, RangesKeepTheirNumberKinds) {
  for (int raw = 0; raw < 56; ++raw) {
    const TagType type(static_cast<TagType::Case>(raw));
    EXPECT_EQ(TagType::fromRawValue(type.rawValue()), type);
    // Every number has a range, and nothing else has one.
    EXPECT_EQ(type.isNumber(), type.minimumNumberValue().has_value()) << type;
    EXPECT_EQ(type.isNumber(), type.maximumNumberValue().has_value()) << type;
  }
  EXPECT_EQ(TagType::int8u.maximumNumberValue(), TagNumber::make(std::uint8_t{255}));
  EXPECT_NE(TagType::int8u.maximumNumberValue(), TagNumber::make(std::uint32_t{255}));
  EXPECT_EQ(TagType::fixed32s.minimumNumberValue(), TagType::int32s.minimumNumberValue());
  EXPECT_EQ(TagType::int64u.maximumNumberValue()->description(), "18446744073709551615");

  // integer reaches 64-bit values downwards but stops at the 32-bit maximum.
  EXPECT_EQ(TagType::integer.minimumNumberValue(),
            TagNumber::make(std::numeric_limits<std::int64_t>::min()));
  EXPECT_EQ(TagType::integer.maximumNumberValue()->kind(), Kind::int32);
  EXPECT_EQ(TagType::integer.maximumNumberValue()->description(), "2147483647");

  const TagNumber rationalMaximum = TagType::rational.maximumNumberValue().value();
  EXPECT_EQ(rationalMaximum.kind(), Kind::float32);
  EXPECT_EQ(rationalMaximum.doubleValue(), std::numeric_limits<float>::max());
  EXPECT_EQ(rationalMaximum.description(), "3.4028235e+38");
  // Unsigned fractions start at a 64-bit zero, whatever kind their maximum has.
  EXPECT_EQ(TagType::rational32u.minimumNumberValue(), TagNumber::make(0.0));
  EXPECT_EQ(TagType::rational32u.maximumNumberValue()->kind(), Kind::float32);
  EXPECT_EQ(TagType::rational64s.minimumNumberValue()->description(), "-1.7976931348623157e+308");
}

TEST(TagTypeJson, WritesTheRawValueAndReadsLowercased) {
  EXPECT_EQ(json(TagType::lang_alt), json("lang-alt"));
  EXPECT_EQ(json("LANG-ALT").get<TagType>(), TagType::lang_alt);
  EXPECT_EQ(json("struct").get<TagType>(), TagType::structure);
  // Text that names no format reads as unknown; a value that is no string is an error.
  EXPECT_EQ(json("lang_alt").get<TagType>(), TagType::unknown);
  EXPECT_EQ(json("structure").get<TagType>(), TagType::unknown);
  EXPECT_THROW((void)json(nullptr).get<TagType>(), json::type_error);
}
