// The batch we write to the tool's standard input, read back by a model of how the tool reads
// it (exiftool's ReadStayOpen and FilterArgfileLine, on bytes, as Perl 5.36 runs them): the
// text is cut at each line feed; a line that starts with "#" is dropped unless it starts with
// "#[CSTR]", whose rest loses its line end and then has its C escapes undone (after the tool
// has put a backslash in front of each unescaped '"', "$" and "@", and of a lone backslash at
// the end); any other line loses its leading white space and its line end, the blanks around
// the "=" of "-TAG=VALUE" go, and a line left empty is dropped. Every argument must come back
// byte for byte, or the batch must be refused, and only when neither line form can carry it.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz_check.hpp"
#include "run/tool_batch.hpp"

namespace {

using lorvane::fuzz::require;

// Perl's \s and \w on a byte string without a locale or Unicode rules: ASCII only.
bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool isWord(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

// s/[\x0d\x0a]+$//s
void dropLineEnd(std::string& line) {
  while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) {
    line.pop_back();
  }
}

// s/^(-[-:\w]+#?)\s*([-+<]?=) ?/$1$2/ with Perl's backtracking: the name part gives back
// characters from its end until the rest matches.
void dropBlanksAroundAssignment(std::string& line) {
  if (line.size() < 2 || line[0] != '-') {
    return;
  }
  std::size_t nameEnd = 1;
  while (nameEnd < line.size() &&
         (line[nameEnd] == '-' || line[nameEnd] == ':' || isWord(line[nameEnd]))) {
    ++nameEnd;
  }
  for (; nameEnd > 1; --nameEnd) {
    for (const bool takesHash : {true, false}) {
      std::size_t at = nameEnd;
      if (takesHash) {
        if (at >= line.size() || line[at] != '#') {
          continue;
        }
        ++at;
      }
      const std::size_t groupEnd = at;
      while (at < line.size() && isSpace(line[at])) {
        ++at;
      }
      // \s* is greedy too, but giving back white space never lets "=" match where it didn't.
      std::size_t operatorStart = at;
      if (at < line.size() && (line[at] == '-' || line[at] == '+' || line[at] == '<') &&
          at + 1 < line.size() && line[at + 1] == '=') {
        at += 2;
      } else if (at < line.size() && line[at] == '=') {
        at += 1;
      } else {
        continue;
      }
      const std::string op = line.substr(operatorStart, at - operatorStart);
      if (at < line.size() && line[at] == ' ') {
        ++at;
      }
      line = line.substr(0, groupEnd) + op + line.substr(at);
      return;
    }
  }
}

// The C-string line's rest, after "#[CSTR]" and the line end are gone.
std::string unescapeCString(std::string_view text) {
  // s{\\(.)|(["\$\@]|\\$)}{'\\'.($2 || $1)}sge
  std::string marked;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '\\' && at + 1 < text.size()) {
      marked += '\\';
      marked += text[++at];
    } else if (text[at] == '"' || text[at] == '$' || text[at] == '@' || text[at] == '\\') {
      marked += '\\';
      marked += text[at];
    } else {
      marked += text[at];
    }
  }
  // s/\\(.)/$esc{$1}||'\\'.$1/egs
  std::string result;
  for (std::size_t at = 0; at < marked.size(); ++at) {
    if (marked[at] != '\\' || at + 1 >= marked.size()) {
      result += marked[at];
      continue;
    }
    const char c = marked[++at];
    switch (c) {
      case 'a': result += '\a'; break;
      case 'b': result += '\b'; break;
      case 'f': result += '\f'; break;
      case 'n': result += '\n'; break;
      case 'r': result += '\r'; break;
      case 't': result += '\t'; break;
      case '"': result += '"'; break;
      case '\\': result += '\\'; break;
      default: result += '\\'; result += c;
    }
  }
  return result;
}

// One line, with its line feed, as the tool takes it: an argument or nothing.
std::optional<std::string> readLine(std::string line) {
  if (line.starts_with('#')) {
    if (!line.starts_with("#[CSTR]")) {
      return std::nullopt;
    }
    line.erase(0, 7);
    dropLineEnd(line);
    return unescapeCString(line);
  }
  std::size_t start = 0;
  while (start < line.size() && isSpace(line[start])) {
    ++start;
  }
  line.erase(0, start);
  dropLineEnd(line);
  dropBlanksAroundAssignment(line);
  if (line.empty()) {
    return std::nullopt;
  }
  return line;
}

// The arguments in the text's finished lines, and what is left behind the last line feed.
std::pair<std::vector<std::string>, std::string> readBatch(std::string_view text) {
  std::vector<std::string> arguments;
  std::size_t start = 0;
  for (std::size_t end = text.find('\n'); end != std::string_view::npos;
       end = text.find('\n', start)) {
    if (auto argument = readLine(std::string(text.substr(start, end + 1 - start)))) {
      arguments.push_back(std::move(*argument));
    }
    start = end + 1;
  }
  return {arguments, std::string(text.substr(start))};
}

// Whether the argument would come back from either line form, escaped as the writer does.
bool hasSomeForm(const std::string& argument) {
  std::string escaped = "#[CSTR]";
  for (const char c : argument) {
    escaped += c == '\\' ? "\\\\" : c == '\n' ? "\\n" : c == '\r' ? "\\r" : std::string(1, c);
  }
  for (const std::string& line : {argument, escaped}) {
    if (line.find('\n') == std::string::npos && readLine(line + "\n") == argument) {
      return true;
    }
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider provider(data, size);
  std::vector<std::string> arguments;
  while (provider.remaining_bytes() > 0) {
    arguments.push_back(provider.ConsumeRandomLengthString());
  }
  const auto batch = lorvane::makeToolBatch(arguments);
  if (!batch.refusal.empty()) {
    require(batch.text.empty(), "a refused batch has no text");
    bool someArgumentHasNoForm = false;
    for (const auto& argument : arguments) {
      someArgumentHasNoForm = someArgumentHasNoForm || !hasSomeForm(argument);
    }
    require(someArgumentHasNoForm, "a batch is refused only for an argument with no exact form");
    return 0;
  }
  auto [read, rest] = readBatch(batch.text);
  require(rest == "-execute", "the batch ends with -execute and no line end");
  require(read.size() == arguments.size() + 2 && read[read.size() - 2] == "-stay_open" &&
              read.back() == "0",
          "the arguments come with the end of the stay-open mode behind them");
  read.resize(arguments.size());
  require(read == arguments, "each argument comes back byte for byte");
  return 0;
}
