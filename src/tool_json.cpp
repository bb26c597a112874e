#include "tool_json.hpp"

#include <string>
#include <utility>
#include <vector>

namespace lorvane::detail {
namespace {

using Json = nlohmann::ordered_json;

// Builds the document as nlohmann's own DOM reader does, on its public SAX interface, but hands
// every number over as the text the parser read (floats) or as the exact decimal form of the
// integer it read.
class NumbersAsText : public nlohmann::json_sax<Json> {
public:
  explicit NumbersAsText(Json& root) : root_(root) {}

  bool null() override { return add(nullptr); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(number_integer_t value) override { return add(std::to_string(value)); }
  bool number_unsigned(number_unsigned_t value) override { return add(std::to_string(value)); }
  bool number_float(number_float_t, const string_t& lexeme) override { return add(lexeme); }
  bool string(string_t& value) override { return add(std::move(value)); }
  bool binary(binary_t& value) override { return add(Json::binary(std::move(value))); }
  bool start_object(std::size_t) override { return open(Json::object()); }
  bool key(string_t& value) override {
    key_ = std::move(value);
    return true;
  }
  bool end_object() override { return close(); }
  bool start_array(std::size_t) override { return open(Json::array()); }
  bool end_array() override { return close(); }
  bool parse_error(std::size_t, const std::string&,
                   const nlohmann::json::exception& error) override {
    throw error;
  }

private:
  // Containers are only appended to while they are open, so the open ones stay in place.
  Json* place(Json value) {
    if (open_.empty()) {
      root_ = std::move(value);
      return &root_;
    }
    Json& container = *open_.back();
    if (container.is_array()) {
      container.push_back(std::move(value));
      return &container.back();
    }
    Json& slot = container[key_];
    slot = std::move(value);
    return &slot;
  }
  bool add(Json value) {
    place(std::move(value));
    return true;
  }
  bool open(Json container) {
    open_.push_back(place(std::move(container)));
    return true;
  }
  bool close() {
    open_.pop_back();
    return true;
  }

  Json& root_;
  std::vector<Json*> open_;
  std::string key_;
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

}  // namespace lorvane::detail
