#include "run/et_parser_pipe.hpp"

#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <charconv>
#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

#include <lorvane/text.hpp>

#include "text/utf8.hpp"

namespace lorvane {
namespace {

// A pattern of the tool's messages, compiled once, in ICU's dialect with no options.
class MessagePattern {
public:
  explicit MessagePattern(const char16_t* pattern) {
    UParseError where{};
    UErrorCode status = U_ZERO_ERROR;
    pattern_.reset(icu::RegexPattern::compile(icu::UnicodeString(pattern), 0, where, status));
    if (U_FAILURE(status)) {
      std::printf("invalid regex: %s\n", u_errorName(status));
      pattern_.reset();
    }
  }

  // Whether the pattern matches somewhere in `line`.
  bool matches(std::string_view line) const { return findIn(utf16(line)) != nullptr; }

  // The capture groups (from group 1 on) of the first match in `line`; a group that took no
  // part in the match is left out. Nothing when there is no match or it captured nothing.
  std::optional<std::vector<std::string>> firstMatchCaptures(std::string_view line) const {
    const auto text = utf16(line);
    const auto matcher = findIn(text);
    if (!matcher) {
      return std::nullopt;
    }
    UErrorCode status = U_ZERO_ERROR;
    std::vector<std::string> captures;
    for (std::int32_t group = 1; group <= matcher->groupCount(); ++group) {
      const std::int32_t start = matcher->start(group, status);
      const std::int32_t end = matcher->end(group, status);
      if (U_FAILURE(status) || start < 0) {
        status = U_ZERO_ERROR;
        continue;
      }
      std::string capture;
      text.tempSubStringBetween(start, end).toUTF8String(capture);
      captures.push_back(std::move(capture));
    }
    if (captures.empty()) {
      return std::nullopt;
    }
    return captures;
  }

private:
  static icu::UnicodeString utf16(std::string_view line) {
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(line.data(), static_cast<std::int32_t>(line.size())));
  }

  // A matcher that stands on the first match in `text`, which must outlive it; none when
  // nothing matches.
  std::unique_ptr<icu::RegexMatcher> findIn(const icu::UnicodeString& text) const {
    if (!pattern_) {
      return nullptr;
    }
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> matcher(pattern_->matcher(text, status));
    if (U_FAILURE(status) || !matcher->find(status) || U_FAILURE(status)) {
      return nullptr;
    }
    return matcher;
  }

  std::unique_ptr<icu::RegexPattern> pattern_;
};

// Captures of `pattern` in `line`, tried only when the line starts with `gate`, which keeps
// the expressions away from ordinary lines.
std::optional<std::vector<std::string>> capturesIfGated(std::string_view line, char gate,
                                                        const MessagePattern& pattern) {
  if (line.empty() || line.front() != gate) {
    return std::nullopt;
  }
  return pattern.firstMatchCaptures(line);
}

// The ending of a progress line, " [n/m]".
bool endsLikeProgress(std::string_view line) {
  static const MessagePattern pattern(uR"(\s\[\d+\/\d+\]$)");
  return pattern.matches(line);
}

// The start of a progress line: eight equal signs and white space.
bool startsLikeProgress(std::string_view line) {
  static const MessagePattern pattern(uR"(^={8}\s)");
  return line.starts_with("========") && pattern.matches(line);
}

// Holding stops here, so that a line that only looks cut can't keep the lines behind it back
// for long: a path has at most 4096 bytes, and the frame of a progress line fits in the rest.
constexpr std::size_t longestCutProgressLine = 4096 + 64;

// A line that can't belong to a file's name that came before it: the progress line of
// another file, or a message of the tool.
bool isOwnLine(std::string_view line) {
  return startsLikeProgress(line) || line.starts_with("Warning:") || line.starts_with("Error:");
}

// A decimal number of ASCII digits as a whole, independent of any locale.
std::optional<double> parseDecimal(std::string_view digits) {
  double value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error != std::errc() || end != digits.data() + digits.size()) {
    return std::nullopt;
  }
  return value;
}

}  // namespace

void ETParserPipe::readAvailableData(std::span<const std::byte> data) {
  if (data.empty()) {
    return;
  }
  if (!keepsInvalidText_) {
    if (const auto text = decodeUTF8(data)) {
      takeText(*text);
    }
    return;
  }
  std::string_view bytes(reinterpret_cast<const char*>(data.data()), data.size());
  std::string joined;
  if (!cutCharacter_.empty()) {
    joined.assign(cutCharacter_).append(bytes);
    bytes = joined;
  }
  const std::size_t cut = cutCharacterLength(bytes);
  cutCharacter_.assign(bytes.substr(bytes.size() - cut));
  bytes.remove_suffix(cut);
  if (isValidUTF8(bytes)) {
    takeText(bytes);
  } else {
    takeText(mendUTF8(bytes));
  }
}

void ETParserPipe::takeText(std::string_view text) {
  bool isFirstLine = true;
  std::size_t lineStart = 0;
  for (std::size_t end = text.find('\n'); end != std::string_view::npos;
       end = text.find('\n', end + 1)) {
    // A carriage return and a line feed make one character that is no line end.
    if (end > 0 && text[end - 1] == '\r') {
      continue;
    }
    std::string_view line = text.substr(lineStart, end - lineStart);
    lineStart = end + 1;
    if (isFirstLine) {
      isFirstLine = false;
      if (!pendingLine_.empty()) {
        pendingLine_ += line;
        const std::string joined = std::move(pendingLine_);
        pendingLine_.clear();
        takeLine(joined, true);
        continue;
      }
    }
    takeLine(line, true);
  }
  const auto remaining = text.substr(lineStart);
  if (isFirstLine) {
    pendingLine_ += remaining;
  } else {
    pendingLine_.assign(remaining);
  }
}

void ETParserPipe::finishData() {
  if (!cutCharacter_.empty()) {
    // The rest of the character never came: its bytes are invalid.
    takeText(mendUTF8(cutCharacter_));
    cutCharacter_.clear();
  }
  if (!pendingLine_.empty()) {
    const std::string line = std::move(pendingLine_);
    pendingLine_.clear();
    takeLine(line, false);
  }
  releaseHeldLines();
}

void ETParserPipe::takeLine(std::string_view line, bool append) {
  if (!heldLines_.empty()) {
    if (isOwnLine(line) || decodeMessage(line)) {
      releaseHeldLines();
    } else if (endsLikeProgress(line)) {
      std::string joined;
      for (const auto& held : heldLines_) {
        joined.append(held).append("\n");
      }
      joined.append(line);
      if (decodeFileProgress(joined)) {
        heldLines_.clear();
        return;
      }
      releaseHeldLines();
    } else if (append && heldSize() + line.size() < longestCutProgressLine) {
      heldLines_.emplace_back(line);  // more of the name, even an empty line
      return;
    } else {
      releaseHeldLines();
    }
  }
  // A whole progress line is taken at once; only a line that only starts like one costs more.
  if (append && line.starts_with("========")) {
    if (decodeFileProgress(line)) {
      return;
    }
    if (startsLikeProgress(line) && !endsLikeProgress(line)) {
      heldLines_.emplace_back(line);
      return;
    }
  }
  decodeData(line, append);
}

std::size_t ETParserPipe::heldSize() const {
  std::size_t size = 0;
  for (const auto& line : heldLines_) {
    size += line.size() + 1;
  }
  return size;
}

void ETParserPipe::releaseHeldLines() {
  const auto held = std::move(heldLines_);
  heldLines_.clear();
  for (const auto& line : held) {
    decodeData(line, true);
  }
}

void ETParserPipe::decodeData(std::string_view line, bool append) {
  if (line.empty()) {
    return;
  }
  if (decodeFileProgress(line)) {
    return;
  }
  if (auto log = decodeMessage(line)) {
    appendProcessLog(std::move(*log));
    return;
  }
  std::string whole(line);
  if (append) {
    whole += '\n';
  }
  appendProcessLog(ETOutput::UnknownLog{std::move(whole)});
}

bool ETParserPipe::decodeFileProgress(std::string_view line) {
  static const MessagePattern pattern(uR"(^={8}\s+(.+)\s+\[(\d+)\/(\d+)\]$)");
  // A line that holds a line feed is a joined one, or one whose carriage return and line feed
  // came in one chunk: its file name may hold line feeds, alone or behind a carriage return.
  static const MessagePattern withLineFeeds(uR"(^={8}\s+((?:.|\r?\n)+)\s+\[(\d+)\/(\d+)\]$)");
  const auto captures = capturesIfGated(
      line, '=', line.find('\n') == std::string_view::npos ? pattern : withLineFeeds);
  // The file name, then file n of m.
  if (!captures || captures->size() != 3) {
    return false;
  }
  const auto n = parseDecimal((*captures)[1]);
  const auto m = parseDecimal((*captures)[2]);
  if (!n || !m) {
    return false;
  }
  setProgessChange(*m == 0 ? 0 : *n / *m);
  return true;
}

std::optional<ETOutput::ProcessLog> ETParserPipe::decodeMessage(std::string_view line) {
  for (const auto decode : {decodeNoChangesInFile, decodeNothingToWrite, decodeFileMovedChange,
                            decodeICCNoInformationToWrite, decodeICCDeletedMayAffectColor}) {
    if (auto log = decode(line)) {
      return log;
    }
  }
  return std::nullopt;
}

std::optional<ETOutput::ProcessLog> ETParserPipe::decodeNoChangesInFile(std::string_view line) {
  static const MessagePattern pattern(uR"(^Nothing\schanged\sin\s+(.+)\s*$)");
  const auto captures = capturesIfGated(line, 'N', pattern);
  if (!captures) {
    return std::nullopt;
  }
  return ETOutput::NoChanges{captures->front()};
}

std::optional<ETOutput::ProcessLog> ETParserPipe::decodeNothingToWrite(std::string_view line) {
  static const MessagePattern pattern(uR"(^Error:\sNothing\sto\swrite\s-\s(.+)\s*$)");
  const auto captures = capturesIfGated(line, 'E', pattern);
  if (!captures) {
    return std::nullopt;
  }
  return ETOutput::NothingToWrite{captures->front()};
}

std::optional<ETOutput::ProcessLog> ETParserPipe::decodeFileMovedChange(std::string_view line) {
  static const MessagePattern pattern(uR"(^\'(.*)\'\s+-->\s+\'(.*)\'\s*$)");
  const auto captures = capturesIfGated(line, '\'', pattern);
  if (!captures) {
    return std::nullopt;
  }
  return ETOutput::FileMoved{captures->front(), captures->back()};
}

std::optional<ETOutput::ProcessLog> ETParserPipe::decodeICCNoInformationToWrite(
    std::string_view line) {
  static const MessagePattern pattern(uR"(^Error:\sNo\sICC\sinformation\sto\swrite\s-\s(.+)\s*$)");
  const auto captures = capturesIfGated(line, 'E', pattern);
  if (!captures) {
    return std::nullopt;
  }
  return ETOutput::IccNoInformationToWrite{captures->front()};
}

std::optional<ETOutput::ProcessLog> ETParserPipe::decodeICCDeletedMayAffectColor(
    std::string_view line) {
  static const MessagePattern pattern(
      uR"(^Warning:\sICC_Profile\sdeleted\.\sImage\scolors\smay\sbe\saffected\s-\s(.+)\s*$)");
  const auto captures = capturesIfGated(line, 'W', pattern);
  if (!captures) {
    return std::nullopt;
  }
  return ETOutput::IccDeletedMayAffectColor{captures->front()};
}

void ETParserPipe::setProgessChange(double progress) { run().setProgress(progress); }

void ETParserPipe::appendProcessLog(ETOutput::ProcessLog log) {
  run().change([&](ETOutput& output) { output.processLogs.push_back(std::move(log)); });
}

}  // namespace lorvane
