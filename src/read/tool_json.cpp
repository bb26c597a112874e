#include "read/tool_json.hpp"

#include <string>

namespace lorvane::detail {
namespace {

using Json = nlohmann::ordered_json;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The length of the number token of JSON's grammar at the front of `text`; 0 when none starts
// there. A token cut short ("1.", "-") or followed by more digits ("01") is left to the parser
// to refuse.
std::size_t numberLength(std::string_view text) {
  std::size_t at = 0;
  const auto digits = [&] {
    const std::size_t start = at;
    while (at < text.size() && isDigit(text[at])) {
      ++at;
    }
    return at > start;
  };
  if (at < text.size() && text[at] == '-') {
    ++at;
  }
  if (at < text.size() && text[at] == '0') {
    ++at;
  } else if (!digits()) {
    return 0;
  }
  if (at < text.size() && text[at] == '.') {
    ++at;
    if (!digits()) {
      return 0;
    }
  }
  if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
    ++at;
    if (at < text.size() && (text[at] == '+' || text[at] == '-')) {
      ++at;
    }
    if (!digits()) {
      return 0;
    }
  }
  return at;
}

}  // namespace

std::string withQuotedNumbers(std::string_view text) {
  std::string result;
  result.reserve(text.size() + text.size() / 8);
  std::size_t copied = 0;  // text before this is in `result`
  std::size_t i = 0;
  while (i < text.size()) {
    const char c = text[i];
    if (c == '"') {
      // To the closing quote: the next quote that no backslash escapes.
      std::size_t end = i + 1;
      for (;;) {
        const std::size_t quote = text.find('"', end);
        const std::size_t escape = text.substr(0, quote).find('\\', end);
        if (escape == std::string_view::npos) {
          end = quote;
          break;
        }
        end = escape + 2;
      }
      i = end == std::string_view::npos ? text.size() : end + 1;
    } else if (c == '-' || isDigit(c)) {
      const std::size_t length = numberLength(text.substr(i));
      if (length == 0) {
        ++i;
        continue;
      }
      result.append(text.substr(copied, i - copied)).append("\"");
      result.append(text.substr(i, length)).append("\"");
      i += length;
      copied = i;
    } else {
      ++i;
    }
  }
  result.append(text.substr(std::min(copied, text.size())));
  return result;
}

std::string scalarText(const Json& value) {
  if (value.is_string()) {
    return value.get<std::string>();
  }
  return value.dump();
}

}  // namespace lorvane::detail
