#pragma once

// ExifTool's JSON read without losing a digit: the tool prints numbers bare ("val": 0.02414,
// "val": 5.00000), and a double would give them back as "0.024140000000000002" or "5.0". Here
// every number arrives as a JSON string holding exactly the text the tool wrote.

#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace lorvane::detail {

// The text with every number token outside the strings made a string of its own text, so a
// parser never reads one as a number: a double would lose digits, the sign of "-0" and any
// value past its range, which the tool prints bare all the same ("1e400" of a text tag).
std::string withQuotedNumbers(std::string_view text);

// Reads `text` into `sax` as nlohmann's sax_parse reads withQuotedNumbers(text), each number a
// string of its own text, for a fraction of the cost: nothing is copied first, and a string's
// plain bytes are taken in runs rather than one at a time. Gives false, after some of the
// events, for anything but well-formed JSON in valid UTF-8 (a raw control character in a
// string, half a surrogate pair, text behind the end): nlohmann's parser then says what is
// wrong with it, with a fresh `sax`.
bool readToolJson(std::string_view text, nlohmann::json_sax<nlohmann::ordered_json>& sax);

// A scalar as the tool meant it: strings as they stand, numbers in the tool's own notation
// (after withQuotedNumbers), "true"/"false"; anything else in JSON notation.
std::string scalarText(const nlohmann::ordered_json& value);

}  // namespace lorvane::detail
