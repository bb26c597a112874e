#include "tool_json.hpp"

#include <string>

namespace lorvane::app {
namespace {

using Json = nlohmann::ordered_json;

// Builds the document as nlohmann's own DOM reader does, but hands every number over as the
// text the parser read (floats) or as the exact decimal form of the integer it read.
class NumbersAsText {
public:
  explicit NumbersAsText(Json& root) : dom_(root) {}

  bool null() { return dom_.null(); }
  bool boolean(bool value) { return dom_.boolean(value); }
  bool number_integer(Json::number_integer_t value) { return text(std::to_string(value)); }
  bool number_unsigned(Json::number_unsigned_t value) { return text(std::to_string(value)); }
  bool number_float(Json::number_float_t, const Json::string_t& lexeme) { return text(lexeme); }
  bool string(Json::string_t& value) { return dom_.string(value); }
  bool binary(Json::binary_t& value) { return dom_.binary(value); }
  bool start_object(std::size_t size) { return dom_.start_object(size); }
  bool key(Json::string_t& value) { return dom_.key(value); }
  bool end_object() { return dom_.end_object(); }
  bool start_array(std::size_t size) { return dom_.start_array(size); }
  bool end_array() { return dom_.end_array(); }
  template <class Exception>
  bool parse_error(std::size_t position, const std::string& token, const Exception& error) {
    return dom_.parse_error(position, token, error);
  }

private:
  bool text(Json::string_t value) { return dom_.string(value); }

  nlohmann::detail::json_sax_dom_parser<Json> dom_;
};

// An integer comes to the reader as its value, which loses the sign of "-0" (the tool prints
// it bare, as "%.0f" makes it of a small negative number): such tokens become strings first.
std::string quoteNegativeZeros(std::string_view text) {
  std::string result;
  result.reserve(text.size() + 16);
  bool inString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (inString) {
      result += c;
      if (c == '\\' && i + 1 < text.size()) {
        result += text[++i];
      } else if (c == '"') {
        inString = false;
      }
      continue;
    }
    if (c == '"') {
      inString = true;
    } else if (c == '-' && text.substr(i, 2) == "-0" &&
               (i + 2 == text.size() ||
                std::string_view(",]} \t\r\n").find(text[i + 2]) != std::string_view::npos)) {
      result += "\"-0\"";
      ++i;
      continue;
    }
    result += c;
  }
  return result;
}

}  // namespace

Json parseToolJson(std::string_view text) {
  Json root;
  NumbersAsText reader(root);
  if (text.find("-0") != std::string_view::npos) {
    const std::string quoted = quoteNegativeZeros(text);
    nlohmann::json::sax_parse(quoted, &reader);
  } else {
    nlohmann::json::sax_parse(text, &reader);
  }
  return root;
}

std::string scalarText(const Json& value) {
  if (value.is_string()) {
    return value.get<std::string>();
  }
  return value.dump();
}

}  // namespace lorvane::app
