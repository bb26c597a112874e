// The message parser fed with chunks of our choosing, which a real pipe can't guarantee.
#include "et_parser_pipe.hpp"

#include <gtest/gtest.h>

#include "test_support.hpp"

using lorvane::AtomicQueue;
using lorvane::ETOutput;
using lorvane::ETParserPipe;
using lorvane::RunState;

namespace {

// A parser on its own, with a run state but no run: chunks, end of stream, flush.
class ParserTest : public ::testing::Test {
protected:
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
  int progressCalls = 0;
  RunState run{atomic, nonAtomicOutput, [this] { ++progressCalls; }};
  ETParserPipe parser{run};
};

using Lines = std::vector<std::string>;

}  // namespace

TEST_F(ParserTest, RecognisesTheToolsMessages) {
  feed(
      "Nothing changed in /a b/one.jpg\n"
      "Error: Nothing to write - /a/new.xmp\n"
      "'/a/old name.jpg' --> '/a/new name.jpg'\n"
      "Error: No ICC information to write - /a/three.jpg\n"
      "Warning: ICC_Profile deleted. Image colors may be affected - /a/four.jpg\n"
      "Error: File not found - /a/missing.jpg\n"
      "Nothing changed in /a/trailing.jpg  \n"
      "'/a --> b' --> '/c'\n");
  const auto logs = finish().processLogs;
  ASSERT_EQ(logs.size(), 8u);
  EXPECT_EQ(std::get<ETOutput::NoChanges>(logs[0]).path, "/a b/one.jpg");
  EXPECT_EQ(std::get<ETOutput::NothingToWrite>(logs[1]).path, "/a/new.xmp");
  EXPECT_EQ(std::get<ETOutput::FileMoved>(logs[2]).from, "/a/old name.jpg");
  EXPECT_EQ(std::get<ETOutput::FileMoved>(logs[2]).to, "/a/new name.jpg");
  EXPECT_EQ(std::get<ETOutput::IccNoInformationToWrite>(logs[3]).path, "/a/three.jpg");
  EXPECT_EQ(std::get<ETOutput::IccDeletedMayAffectColor>(logs[4]).path, "/a/four.jpg");
  // An "Error:" line of another form is unknown, and so an error.
  EXPECT_EQ(std::get<ETOutput::UnknownLog>(logs[5]).line,
            "Error: File not found - /a/missing.jpg\n");
  // The greedy capture takes trailing blanks into the path.
  EXPECT_EQ(std::get<ETOutput::NoChanges>(logs[6]).path, "/a/trailing.jpg  ");
  // A move with two arrows splits at the last one.
  EXPECT_EQ(std::get<ETOutput::FileMoved>(logs[7]).from, "/a --> b");
  EXPECT_EQ(std::get<ETOutput::FileMoved>(logs[7]).to, "/c");
}

TEST_F(ParserTest, ProgressLinesMoveProgressAndAreNotLogged) {
  feed("======== /path with blanks/file.jpg [3/10]\n");
  EXPECT_DOUBLE_EQ(output().progress, 0.3);
  EXPECT_EQ(progressCalls, 1);
  feed("======== /x.jpg [0/0]\n");
  EXPECT_EQ(output().progress, 0);
  feed("======== /x.jpg [12/10]\n");
  EXPECT_DOUBLE_EQ(output().progress, 1.2);  // not clamped
  EXPECT_TRUE(output().processLogs.empty());

  // Seven equal signs, and digits of another script, are no progress lines.
  feed(
      "======= /x.jpg [1/2]\n"
      "======== /x.jpg [\xD9\xA1/\xD9\xA2]\n");
  EXPECT_DOUBLE_EQ(output().progress, 1.2);
  EXPECT_EQ(unknownLines(), (Lines{"======= /x.jpg [1/2]\n", "======== /x.jpg [١/٢]\n"}));
}

TEST_F(ParserTest, LinesSplitAcrossChunksAreDecodedOnceAsAWhole) {
  feed("Nothing chan");
  feed("ged in /a.jpg");
  EXPECT_TRUE(output().processLogs.empty());  // no line end yet
  feed("\nfirst\nsec");
  feed("ond\n");
  feed("\n\n\n");  // only line feeds: nothing
  feed("third without line end");
  const auto output = finish();
  ASSERT_EQ(output.processLogs.size(), 4u);
  EXPECT_EQ(std::get<ETOutput::NoChanges>(output.processLogs[0]).path, "/a.jpg");
  EXPECT_EQ(unknownLines(), (Lines{"first\n", "second\n", "third without line end"}));
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
