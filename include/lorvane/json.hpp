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
