#include <lorvane/text.hpp>

#include <gtest/gtest.h>

using lorvane::nonBlank;

TEST(NonBlank, BlankTextsGiveNothingOthersComeBackUntrimmed) {
  EXPECT_FALSE(nonBlank(""));
  EXPECT_FALSE(nonBlank("   "));
  EXPECT_FALSE(nonBlank("\n\n"));
  EXPECT_FALSE(nonBlank(" \t\r\n\v\f"));
  EXPECT_FALSE(nonBlank("\u00A0\u2028\u2029\u0085\u3000"));  // Zs, Zl, Zp, NEL, ideographic space

  EXPECT_EQ(nonBlank("  word \n"), "  word \n");
  EXPECT_EQ(nonBlank("\u200B"), "\u200B");  // zero width space is a format character, not Zs
  EXPECT_EQ(nonBlank("\xff"), "\xff");      // bytes that are no text are not blank either
}
