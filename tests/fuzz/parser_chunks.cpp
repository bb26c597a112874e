// The tool's message stream, cut into chunks at points of the fuzzer's choosing. A pipe hands
// the reader whatever the kernel had, so the decoded messages must not depend on where the
// cuts fall: the stream fed whole, one piece at a time and in random pieces gives the same
// messages and the same progress. The one documented exception is a carriage return and line
// feed torn apart, which ends a line; cuts there are skipped.
//
// A reader that drops invalid chunks is cut between characters only, and invalid UTF-8 only has
// to pass it without harm. A reader that keeps invalid text is cut between any two bytes, and
// must read the stream as the other reader reads it with each invalid byte made U+FFFD.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <lorvane/atomic_queue.hpp>
#include <lorvane/et_output.hpp>
#include <lorvane/text.hpp>

#include "run/et_parser_pipe.hpp"
#include "fuzz_check.hpp"
#include "run/run_state.hpp"
#include "text/utf8.hpp"

namespace {

using lorvane::ETOutput;

// What a reader made of a stream: each message as one text, each progress value as the
// handler saw it.
struct Decoded {
  std::vector<std::string> messages;
  std::vector<double> progress;
  double finalProgress = 0;
  friend bool operator==(const Decoded&, const Decoded&) = default;
};

std::string describe(const ETOutput::ProcessLog& log) {
  return std::visit(
      [](const auto& entry) -> std::string {
        using Entry = std::decay_t<decltype(entry)>;
        if constexpr (std::is_same_v<Entry, ETOutput::FileMoved>) {
          return "moved:" + entry.from + "\x01" + entry.to;
        } else if constexpr (std::is_same_v<Entry, ETOutput::UnknownLog>) {
          return "unknown:" + entry.line;
        } else {
          return std::to_string(ETOutput::ProcessLog(entry).index()) + ":" + entry.path;
        }
      },
      log);
}

Decoded decode(std::string_view text, const std::vector<std::size_t>& cuts,
               bool keepsInvalidText = false) {
  lorvane::AtomicQueue atomic;
  ETOutput output;
  Decoded decoded;
  lorvane::RunState run(atomic, output, [&] {
    decoded.progress.push_back(atomic.read([&] { return output.progress; }));
  });
  {
    lorvane::ETParserPipe parser(run, keepsInvalidText);
    std::size_t start = 0;
    for (const std::size_t cut : cuts) {
      parser.readAvailableData(std::as_bytes(std::span(text.substr(start, cut - start))));
      start = cut;
    }
    parser.readAvailableData(std::as_bytes(std::span(text.substr(start))));
    parser.waitForEndOfStream();
    parser.flushPendingData();
  }
  for (const auto& log : output.processLogs) {
    decoded.messages.push_back(describe(log));
  }
  decoded.finalProgress = output.progress;
  return decoded;
}

// The places a cut may fall: between characters (or, when not `betweenCharacters` or for
// invalid UTF-8, between any two bytes), but not inside a carriage return and line feed.
std::vector<std::size_t> cutPoints(std::string_view text, bool betweenCharacters) {
  std::vector<std::size_t> points;
  const bool valid = betweenCharacters && lorvane::isValidUTF8(text);
  std::size_t offset = 0;
  while (offset < text.size()) {
    if (valid) {
      lorvane::nextCodePoint(text, offset);
    } else {
      ++offset;
    }
    if (offset < text.size() && !(text[offset - 1] == '\r' && text[offset] == '\n')) {
      points.push_back(offset);
    }
  }
  return points;
}

// Some of the points, as the seed picks them.
std::vector<std::size_t> someOf(const std::vector<std::size_t>& points, std::uint32_t seed) {
  std::vector<std::size_t> some;
  std::minstd_rand random(seed);
  for (const std::size_t point : points) {
    if (random() % 4 == 0) {
      some.push_back(point);
    }
  }
  return some;
}

bool allValid(const Decoded& decoded) {
  return std::all_of(decoded.messages.begin(), decoded.messages.end(),
                     [](const std::string& message) { return lorvane::isValidUTF8(message); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider provider(data, size);
  const auto seed = provider.ConsumeIntegral<std::uint32_t>();
  const std::string text = provider.ConsumeRemainingBytesAsString();
  using lorvane::fuzz::require;

  const auto characters = cutPoints(text, true);
  const Decoded pieces = decode(text, someOf(characters, seed));
  const bool valid = lorvane::isValidUTF8(text);
  const std::string mended = valid ? text : lorvane::mendUTF8(text);
  const Decoded whole = decode(mended, {});
  if (valid) {
    require(pieces == whole, "random cuts decode as the whole stream");
    require(decode(text, characters) == whole, "a character at a time decodes as the whole stream");
  }
  require(allValid(pieces) && allValid(whole), "every message is UTF-8");

  const auto bytes = cutPoints(text, false);
  require(decode(text, {}, true) == whole,
          "kept invalid bytes read as U+FFFD, valid text as without the option");
  require(decode(text, someOf(bytes, seed), true) == whole,
          "random cuts between bytes lose nothing when invalid text is kept");
  require(decode(text, bytes, true) == whole,
          "a byte at a time loses nothing when invalid text is kept");
  return 0;
}
