#pragma once

// The serialised forms of Lorvane's string-backed values, for nlohmann/json: each is one bare
// JSON string. Kept apart from the core headers so that they don't pull in nlohmann/json.

#include <nlohmann/json.hpp>

#include <lorvane/lorvane.hpp>

// ---- Run input: ETCharset ---------------------------------------------------------------


// ---- Tag model: TagStream, TagKey, TagName, TagType -------------------------------------
