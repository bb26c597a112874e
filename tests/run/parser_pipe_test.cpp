// The message parser fed with chunks of our choosing, which a real pipe can't guarantee.
#include "run/et_parser_pipe.hpp"

#include <gtest/gtest.h>

#include "test_support.hpp"

using lorvane::AtomicQueue;
using lorvane::ETOutput;
using lorvane::ETParserPipe;
using lorvane::RunState;

namespace {

// A parser on its own, with a run state but no run: chunks, end of stream, flush.
struct Parser {
  explicit Parser(bool keepsInvalidText = false) : parser{run, keepsInvalidText} {}
  void feed(std::string_view chunk) { parser.readAvailableData(std::as_bytes(std::span(chunk))); }
  ETOutput output() const {
    return atomic.read([&] { return nonAtomicOutput; });
  }
  ETOutput finish() {
    parser.waitForEndOfStream();
    parser.flushPendingData();
    return output();
  }
  std::vector<std::string> unknownLines() const { return lorvane::test::unknownLines(output()); }

  mutable AtomicQueue atomic;
  ETOutput nonAtomicOutput;
  std::vector<double> progress;  // at each call of the handler
  RunState run{atomic, nonAtomicOutput, [this] { progress.push_back(output().progress); }};
  ETParserPipe parser;
};

class ParserTest : public ::testing::Test, public Parser {};

using Lines = std::vector<std::string>;

// The progress values and the log entries, known ones by kind and path, of a stream fed in
// these chunks.
std::pair<std::vector<double>, Lines> parsed(const std::vector<std::string_view>& chunks,
                                             bool keepsInvalidText = false) {
  Parser test(keepsInvalidText);
  for (const auto chunk : chunks) {
    test.feed(chunk);
  }
  Lines logs;
  for (const auto& log : test.finish().processLogs) {
    if (const auto* unknown = std::get_if<ETOutput::UnknownLog>(&log)) {
      logs.push_back(unknown->line);
    } else if (const auto* nothing = std::get_if<ETOutput::NothingToWrite>(&log)) {
      logs.push_back("nothing to write: " + nothing->path);
    } else if (const auto* moved = std::get_if<ETOutput::FileMoved>(&log)) {
      logs.push_back("moved: " + moved->from + " to " + moved->to);
    } else if (const auto* icc = std::get_if<ETOutput::IccNoInformationToWrite>(&log)) {
      logs.push_back("no ICC information: " + icc->path);
    } else if (const auto* icc = std::get_if<ETOutput::IccDeletedMayAffectColor>(&log)) {
      logs.push_back("ICC deleted: " + icc->path);
    } else {
      logs.push_back("no changes: " + std::get<ETOutput::NoChanges>(log).path);
    }
  }
  return {test.progress, logs};
}

// The stream whole, cut once at `border`, and (when `border` is 0) one byte per chunk.
std::vector<std::string_view> cut(std::string_view stream, std::size_t border) {
  if (border > 0) {
    return {stream.substr(0, border), stream.substr(border)};
  }
  std::vector<std::string_view> bytes;
  for (std::size_t i = 0; i < stream.size(); ++i) {
    bytes.push_back(stream.substr(i, 1));
  }
  return bytes;
}

bool isInsideCharacter(std::string_view text, std::size_t border) {
  return border < text.size() && (text[border] & 0xC0) == 0x80;
}

}  // namespace

TEST(ParserMessages, RecognisesTheToolsMessagesAndProgressLines) {
  const auto logs =
      parsed({"Nothing changed in /a b/one.jpg\n"
              "Error: Nothing to write - /a/new.xmp\n"
              "'/a/old name.jpg' --> '/a/new name.jpg'\n"
              "======== /path with blanks/file.jpg [3/10]\n"
              "Error: No ICC information to write - /a/three.jpg\n"
              "Warning: ICC_Profile deleted. Image colors may be affected - /a/four.jpg\n"
              "======== /x.jpg [0/0]\n"
              "Error: File not found - /a/missing.jpg\n"
              "Nothing changed in /a/trailing.jpg  \n"
              "'/a --> b' --> '/c'\n"
              "======== /x.jpg [12/10]\n"
              // Seven equal signs, and digits of another script, are no progress lines.
              "======= /x.jpg [1/2]\n"
              "======== /x.jpg [\xD9\xA1/\xD9\xA2]\n"});
  EXPECT_EQ(logs.first, (std::vector<double>{0.3, 0, 1.2}));  // not clamped
  EXPECT_EQ(logs.second,
            (Lines{"no changes: /a b/one.jpg", "nothing to write: /a/new.xmp",
                   "moved: /a/old name.jpg to /a/new name.jpg", "no ICC information: /a/three.jpg",
                   "ICC deleted: /a/four.jpg",
                   // An "Error:" line of another form is unknown, and so an error.
                   "Error: File not found - /a/missing.jpg\n",
                   // The greedy capture takes trailing blanks into the path.
                   "no changes: /a/trailing.jpg  ",
                   // A move with two arrows splits at the last one.
                   "moved: /a --> b to /c", "======= /x.jpg [1/2]\n", "======== /x.jpg [١/٢]\n"}));
}

TEST_F(ParserTest, ACarriageReturnBeforeALineFeedKeepsTheLineOpenWithinAChunk) {
  feed("one\r\ntwo\nthree\r");
  feed("\nfour\n");
  finish();
  // Across a chunk border the pair no longer holds together, and the return stays in the line.
  EXPECT_EQ(unknownLines(), (Lines{"one\r\ntwo\n", "three\r\n", "four\n"}));
}

TEST_F(ParserTest, AChunkThatIsNotUTF8IsDroppedWhole) {
  feed("kept\npending ");
  feed("lost\n\xFF lost too\n");
  feed("part\n");
  // A character cut at a chunk border spoils both chunks.
  feed("caf\xC3");
  feed("\xA9 gone\n");
  feed("last\n");
  finish();
  EXPECT_EQ(unknownLines(), (Lines{"kept\n", "pending part\n", "last\n"}));
}

// The tool prints a file's name as it is, line feeds and all: the progress line comes cut.
TEST(ParserJoin, AProgressLineCutByLineFeedsInTheNameIsOneProgressLine) {
  struct Case {
    std::string_view stream;
    std::vector<double> progress;
    Lines logs;
  };
  const std::vector<Case> cases = {
      {"======== line\nbreak.jpg [1/2]\nnext\n", {0.5}, {"next\n"}},
      {"======== \n\ntwo.jpg [2/2]\n", {1}, {}},  // a name that starts with two line feeds
      {"======== crlf\r\nname.jpg [1/4]\n", {0.25}, {}},
      {"======== last\nline.jpg [1/1]", {1}, {}},  // no line end at the end of the stream
      // The ending never comes: the held lines are unknown, in their place.
      {"======== a\n======== b.jpg [1/2]\n", {0.5}, {"======== a\n"}},
      {"======== a\nWarning: w\nb.jpg [1/2]\n",
       {},
       {"======== a\n", "Warning: w\n", "b.jpg [1/2]\n"}},
      {"======== a\nError: e [1/2]\n", {}, {"======== a\n", "Error: e [1/2]\n"}},
      {"======== a\n\nNothing changed in /b.jpg\n", {}, {"======== a\n", "no changes: /b.jpg"}},
      {"======== a\nb\n\n", {}, {"======== a\n", "b\n"}},
      {"======== a\nb", {}, {"======== a\n", "b"}},
      {"======== a\nb.jpg [\u0661/2]\n", {}, {"======== a\n", "b.jpg [\u0661/2]\n"}},
      // A lone carriage return in a name keeps its line unknown, joined or not.
      {"======== a\rb\nc.jpg [1/2]\n", {}, {"======== a\rb\n", "c.jpg [1/2]\n"}},
  };
  for (const auto& [stream, progress, logs] : cases) {
    const auto expected = std::pair(progress, logs);
    EXPECT_EQ(parsed({stream}), expected) << stream;
    for (const bool keepsInvalidText : {false, true}) {
      for (std::size_t border = 1; border < stream.size(); ++border) {
        if (!keepsInvalidText && isInsideCharacter(stream, border)) {
          continue;  // spoils both chunks
        }
        EXPECT_EQ(parsed(cut(stream, border), keepsInvalidText), expected)
            << stream << " cut at " << border;
      }
    }
  }
}

TEST(ParserText, ACharacterCutByAChunkBorderIsJoinedOnlyWhenInvalidTextIsKept) {
  const std::string_view stream = "caf\xC3\xA9\n\xE2\x82\xAC \xF0\x9F\x93\xB7\n";
  const auto whole = std::pair(std::vector<double>{}, Lines{"café\n", "€ 📷\n"});
  for (std::size_t border = 0; border < stream.size(); ++border) {
    EXPECT_EQ(parsed(cut(stream, border), true), whole) << "cut at " << border;
    if (border > 0) {
      // By default a character cut in two loses both chunks, with their lines.
      const auto expected = isInsideCharacter(stream, border) ? decltype(whole){} : whole;
      EXPECT_EQ(parsed(cut(stream, border)), expected) << "cut at " << border;
    }
  }
}

TEST(ParserText, KeptInvalidBytesShowAsReplacementsAndTheirLinesAreDecoded) {
  const std::string_view stream =
      "bad \xFF byte \xC3(\n"
      "======== gone\xFF.jpg [1/2]\n"
      "Error: Nothing to write - n\xC3\xA9\xFF.xmp\n"
      "Error: File not found - \xE2\x82.jpg\n"
      "\xED\xA0\x80 is a surrogate, \xC0\xAF an overlong slash\n"
      "cut at the end \xF0\x9F\x93";
  const auto expected =
      std::pair(std::vector<double>{0.5},
                Lines{"bad \uFFFD byte \uFFFD(\n", "nothing to write: n\u00E9\uFFFD.xmp",
                      "Error: File not found - \uFFFD\uFFFD.jpg\n",
                      "\uFFFD\uFFFD\uFFFD is a surrogate, \uFFFD\uFFFD an overlong slash\n",
                      "cut at the end \uFFFD\uFFFD\uFFFD"});
  for (std::size_t border = 0; border < stream.size(); ++border) {
    EXPECT_EQ(parsed(cut(stream, border), true), expected) << "cut at " << border;
  }
  // By default no line survives: the stream is one chunk that isn't UTF-8.
  EXPECT_EQ(parsed({stream}), decltype(expected){});
}

TEST_F(ParserTest, HeldLinesLeaveAsSoonAsTheirEndingComesOrCannotCome) {
  feed("======== a\nb");
  EXPECT_TRUE(output().processLogs.empty());
  feed(".jpg [1/2]\n");
  EXPECT_EQ(progress, std::vector<double>{0.5});  // at once, not at the end
  feed("======== c\n");
  feed("Nothing changed in /d.jpg\n");
  EXPECT_EQ(unknownLines(), Lines{"======== c\n"});
  EXPECT_EQ(output().processLogs.size(), 2u);
  // No path is this long: the held line goes before the flush, and the long one behind it.
  const std::string longLine(5000, 'x');
  feed("======== e\n" + longLine + "\n");
  EXPECT_EQ(unknownLines(), (Lines{"======== c\n", "======== e\n", longLine + "\n"}));
}
