#include "run/tool_batch.hpp"

#include <string_view>

namespace lorvane {
namespace {

// Perl's \s and \w as the tool matches them: on the line's bytes, with neither a locale nor
// Unicode rules, so no byte above ASCII is either. Taking such bytes for one or the other would
// refuse arguments with "$" or "@" that go through as they are.
bool isPerlSpace(unsigned char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool isPerlWord(unsigned char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

// Whether the tool's reading of "-TAG = VALUE" would take out blanks: white space before
// "=", "+=", "-=" or "<=", or one blank after it.
bool losesBlanksAroundAssignment(std::string_view argument) {
  if (argument.size() < 2 || argument[0] != '-') {
    return false;
  }
  std::size_t at = 1;
  while (at < argument.size() && (argument[at] == '-' || argument[at] == ':' ||
                                  isPerlWord(static_cast<unsigned char>(argument[at])))) {
    ++at;
  }
  if (at == 1) {
    return false;
  }
  if (at < argument.size() && argument[at] == '#') {
    ++at;
  }
  const std::size_t spaceStart = at;
  while (at < argument.size() && isPerlSpace(static_cast<unsigned char>(argument[at]))) {
    ++at;
  }
  const bool spaceBefore = at > spaceStart;
  if (at < argument.size() && (argument[at] == '-' || argument[at] == '+' || argument[at] == '<')) {
    ++at;
  }
  if (at >= argument.size() || argument[at] != '=') {
    return false;
  }
  return spaceBefore || (at + 1 < argument.size() && argument[at + 1] == ' ');
}

bool needsCString(std::string_view argument) {
  return argument.empty() || argument.front() == '#' ||
         isPerlSpace(static_cast<unsigned char>(argument.front())) ||
         argument.find('\n') != std::string_view::npos || argument.back() == '\r' ||
         losesBlanksAroundAssignment(argument);
}

// The argument as the C-string line's escapes give it back; "$" and "@" have none.
std::string escaped(std::string_view argument) {
  std::string text;
  for (const char c : argument) {
    switch (c) {
      case '\\': text += "\\\\"; break;
      case '\n': text += "\\n"; break;
      case '\r': text += "\\r"; break;
      default: text += c;
    }
  }
  return text;
}

}  // namespace

ToolBatch encodeArguments(const std::vector<std::string>& arguments) {
  ToolBatch batch;
  for (const auto& argument : arguments) {
    if (!needsCString(argument)) {
      batch.text += argument;
    } else if (argument.find_first_of("$@") == std::string::npos) {
      batch.text += "#[CSTR]" + escaped(argument);
    } else {
      batch.refusal = "the argument \"" + escaped(argument) +
                      "\" can't reach ExifTool unchanged: it needs the tool's C-string form, "
                      "which reads \"$\" and \"@\" with a backslash in front";
      batch.text.clear();
      return batch;
    }
    batch.text += '\n';
  }
  return batch;
}

ToolBatch makeToolBatch(const std::vector<std::string>& arguments) {
  ToolBatch batch = encodeArguments(arguments);
  if (batch.refusal.empty()) {
    batch.text += "-stay_open\n0\n-execute";
  }
  return batch;
}

}  // namespace lorvane
