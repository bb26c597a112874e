#include "read/tool_json.hpp"

#include <string>
#include <vector>

#include "text/utf8.hpp"

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

bool isBlank(char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }

int hexDigit(char c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  if (c >= 'a' && c <= 'f') {
    return c - 'a' + 10;
  }
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// The code unit of the four hex digits at `at`; negative when they aren't four hex digits.
long hexUnit(std::string_view text, std::size_t at) {
  if (at + 4 > text.size()) {
    return -1;
  }
  long unit = 0;
  for (std::size_t i = at; i < at + 4; ++i) {
    const int digit = hexDigit(text[i]);
    if (digit < 0) {
      return -1;
    }
    unit = unit * 16 + digit;
  }
  return unit;
}

void appendUTF8(std::string& out, long point) {
  const auto byte = [&](long value) { out += static_cast<char>(value); };
  if (point < 0x80) {
    byte(point);
  } else if (point < 0x800) {
    byte(0xC0 | (point >> 6));
    byte(0x80 | (point & 0x3F));
  } else if (point < 0x10000) {
    byte(0xE0 | (point >> 12));
    byte(0x80 | ((point >> 6) & 0x3F));
    byte(0x80 | (point & 0x3F));
  } else {
    byte(0xF0 | (point >> 18));
    byte(0x80 | ((point >> 12) & 0x3F));
    byte(0x80 | ((point >> 6) & 0x3F));
    byte(0x80 | (point & 0x3F));
  }
}

// The JSON string whose opening quote is just before `at`, into `out`; gives the position
// behind its closing quote, or npos where the string is cut short or holds what only
// nlohmann's parser should judge.
std::size_t readString(std::string_view text, std::size_t at, std::string& out) {
  out.clear();
  for (;;) {
    std::size_t end = at;
    while (end < text.size() && text[end] != '"' && text[end] != '\\' &&
           static_cast<unsigned char>(text[end]) >= 0x20) {
      ++end;
    }
    out.append(text, at, end - at);
    if (end + 1 >= text.size() || text[end] != '\\') {
      return end < text.size() && text[end] == '"' ? end + 1 : std::string_view::npos;
    }
    at = end + 2;
    switch (text[end + 1]) {
      case '"': out += '"'; break;
      case '\\': out += '\\'; break;
      case '/': out += '/'; break;
      case 'b': out += '\b'; break;
      case 'f': out += '\f'; break;
      case 'n': out += '\n'; break;
      case 'r': out += '\r'; break;
      case 't': out += '\t'; break;
      case 'u': {
        long point = hexUnit(text, at);
        at += 4;
        if (point >= 0xDC00 && point <= 0xDFFF) {
          return std::string_view::npos;
        }
        if (point >= 0xD800 && point <= 0xDBFF) {
          const long low = text.substr(at, 2) == "\\u" ? hexUnit(text, at + 2) : -1;
          if (low < 0xDC00 || low > 0xDFFF) {
            return std::string_view::npos;
          }
          point = 0x10000 + ((point - 0xD800) << 10) + (low - 0xDC00);
          at += 6;
        }
        if (point < 0) {
          return std::string_view::npos;
        }
        appendUTF8(out, point);
        break;
      }
      default: return std::string_view::npos;
    }
  }
}

}  // namespace

bool readToolJson(std::string_view text, nlohmann::json_sax<Json>& sax) {
  if (!isValidUTF8(text)) {
    return false;
  }
  // What is expected next: a value, a value or the end of an empty list, a key, a key or the
  // end of an empty object, or what may follow a value.
  enum class Next { value, valueOrEnd, key, keyOrEnd, afterValue };
  std::vector<bool> inObject;  // the open containers, innermost last
  std::string buffer;
  Next next = Next::value;
  std::size_t at = 0;
  for (;;) {
    while (at < text.size() && isBlank(text[at])) {
      ++at;
    }
    if (next == Next::afterValue && inObject.empty()) {
      return at == text.size();
    }
    if (at == text.size()) {
      return false;
    }
    const char c = text[at];
    if (next == Next::afterValue) {
      if (c == ',') {
        next = inObject.back() ? Next::key : Next::value;
      } else if (c == (inObject.back() ? '}' : ']')) {
        inObject.back() ? sax.end_object() : sax.end_array();
        inObject.pop_back();
      } else {
        return false;
      }
      ++at;
    } else if ((next == Next::valueOrEnd && c == ']') || (next == Next::keyOrEnd && c == '}')) {
      c == ']' ? sax.end_array() : sax.end_object();
      inObject.pop_back();
      next = Next::afterValue;
      ++at;
    } else if (next == Next::key || next == Next::keyOrEnd) {
      if (c != '"') {
        return false;
      }
      at = readString(text, at + 1, buffer);
      while (at < text.size() && isBlank(text[at])) {
        ++at;
      }
      if (at >= text.size() || text[at] != ':') {
        return false;
      }
      sax.key(buffer);
      next = Next::value;
      ++at;
    } else if (c == '{' || c == '[') {
      c == '{' ? sax.start_object(std::size_t(-1)) : sax.start_array(std::size_t(-1));
      inObject.push_back(c == '{');
      next = c == '{' ? Next::keyOrEnd : Next::valueOrEnd;
      ++at;
    } else {
      if (c == '"') {
        at = readString(text, at + 1, buffer);
        if (at == std::string_view::npos) {
          return false;
        }
        sax.string(buffer);
      } else if (const std::size_t length = numberLength(text.substr(at))) {
        buffer.assign(text, at, length);
        sax.string(buffer);
        at += length;
      } else if (text.substr(at, 4) == "true" || text.substr(at, 5) == "false") {
        sax.boolean(c == 't');
        at += c == 't' ? 4 : 5;
      } else if (text.substr(at, 4) == "null") {
        sax.null();
        at += 4;
      } else {
        return false;
      }
      next = Next::afterValue;
    }
  }
}

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
