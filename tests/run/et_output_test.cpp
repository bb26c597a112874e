#include <lorvane/et_error.hpp>
#include <lorvane/et_output.hpp>

#include <gtest/gtest.h>

#include <span>

using lorvane::ETError;
using lorvane::ETOutput;

namespace {

std::vector<std::byte> bytes(std::string_view text) {
  const auto view = std::as_bytes(std::span(text));
  return {view.begin(), view.end()};
}

}  // namespace

TEST(ETOutput, RecognisedMessagesAndBlankLinesAreNoErrors) {
  ETOutput output;
  EXPECT_FALSE(output.joinUnknownErrors());
  EXPECT_NO_THROW(output.throwIfErrors());

  output.processLogs = {ETOutput::NoChanges{"/a.jpg"}, ETOutput::NothingToWrite{"/b.jpg"},
                        ETOutput::FileMoved{"/c.jpg", "/d.jpg"}, ETOutput::UnknownLog{"   \n"}};
  EXPECT_FALSE(output.joinUnknownErrors());
  EXPECT_NO_THROW(output.throwIfErrors());
}

TEST(ETOutput, UnknownLinesAreJoinedUntrimmedAndThrown) {
  ETOutput output;
  output.processLogs = {ETOutput::UnknownLog{" A\n"}, ETOutput::NoChanges{"/x.jpg"},
                        ETOutput::UnknownLog{"B\n"}, ETOutput::UnknownLog{"C"}};
  EXPECT_EQ(output.joinUnknownErrors(), " A\n\nB\n\nC\n");
  try {
    output.throwIfErrors();
    FAIL() << "no error thrown";
  } catch (const ETError& error) {
    EXPECT_EQ(error.rawValue(), " A\n\nB\n\nC\n");
    EXPECT_STREQ(error.what(), " A\n\nB\n\nC\n");
  }
}

TEST(ETOutput, DecodesItsBytesOnlyWhenTheyAreUTF8) {
  ETOutput output;
  EXPECT_EQ(output.decodeOutData(), "");  // no bytes: empty text, not nothing

  output.binaryData = bytes(
      "Gr\xC3\xBC\xC3\x9F"
      "e \xE2\x82\xAC \xF0\x9F\x98\x80");
  EXPECT_EQ(output.decodeOutData(), "Grüße € 😀");

  // A cut character, a lone continuation byte, an overlong form and a surrogate.
  for (std::string_view invalid : {"ab\xC3", "\x80", "\xC0\xAF", "\xED\xA0\x80"}) {
    output.binaryData = bytes(invalid);
    EXPECT_FALSE(output.decodeOutData()) << invalid;
    EXPECT_EQ(output.binaryData.size(), invalid.size());
  }
}
