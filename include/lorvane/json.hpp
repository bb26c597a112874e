#pragma once

// The serialised forms of Lorvane's string-backed values, for nlohmann/json: each is one bare
// JSON string. Kept apart from the core headers so that they don't pull in nlohmann/json.

#include <nlohmann/json.hpp>

#include <lorvane/lorvane.hpp>

// ---- Run input: ETCharset ---------------------------------------------------------------

// Stored as its raw value. Reading is lenient about letter case and turns any unknown text
// into utf8; a value that is not a string at all is nlohmann's own type_error.
template <>
struct nlohmann::adl_serializer<lorvane::ETCharset> {
  static void to_json(json& stored, lorvane::ETCharset charset) {
    stored = std::string(charset.rawValue());
  }
  static lorvane::ETCharset from_json(const json& stored) {
    return lorvane::ETCharset::fromStoredValue(stored.get<std::string>());
  }
};

// ---- Tag model: TagStream, TagKey, TagName, TagType -------------------------------------

// A TagStream, a TagKey, a TagName or a TagType is written as its raw value. Reading a TagName
// parses it like TagName::parse and throws TagName::CodingError for text without ":"; reading
// a TagType lowercases the text and gives TagType::unknown for text that names no format.
// Anything but a string is nlohmann's own type_error.

template <>
struct nlohmann::adl_serializer<lorvane::TagStream> {
  static lorvane::TagStream from_json(const json& value) {
    return lorvane::TagStream(value.get<std::string>());
  }
  static void to_json(json& value, const lorvane::TagStream& stream) { value = stream.rawValue(); }
};

template <>
struct nlohmann::adl_serializer<lorvane::TagKey> {
  static lorvane::TagKey from_json(const json& value) {
    return lorvane::TagKey(value.get<std::string>());
  }
  static void to_json(json& value, const lorvane::TagKey& key) { value = key.rawValue(); }
};

template <>
struct nlohmann::adl_serializer<lorvane::TagName> {
  static lorvane::TagName from_json(const json& value) {
    auto name = lorvane::TagName::parse(value.get<std::string>());
    if (!name) {
      throw lorvane::TagName::CodingError(lorvane::TagName::CodingError::Case::notParsableRawValue);
    }
    return *std::move(name);
  }
  static void to_json(json& value, const lorvane::TagName& name) { value = name.rawValue(); }
};

template <>
struct nlohmann::adl_serializer<lorvane::TagType> {
  static lorvane::TagType from_json(const json& value) {
    return lorvane::TagType::parse(value.get<std::string>()).value_or(lorvane::TagType::unknown);
  }
  static void to_json(json& value, lorvane::TagType type) { value = std::string(type.rawValue()); }
};
