#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using lorvane::ETPathFilter;
using Paths = std::vector<std::filesystem::path>;
using Strings = std::vector<std::string>;

TEST(ETPathFilter, ArgumentsPassEverySuffixOnAsWritten) {
  EXPECT_EQ(ETPathFilter::suffix({"jpg", "JPG", ".png", "jpg"}).arguments(),
            (Strings{"-ext", "jpg", "-ext", "JPG", "-ext", ".png", "-ext", "jpg"}));
  EXPECT_TRUE(ETPathFilter::suffix({}).arguments().empty());
}

TEST(ETPathFilter, FilterComparesExtensionsIgnoringLetterCaseAndKeepsOrderAndRepeats) {
  const Paths paths{"/x/a.JPG", "/x/b.jpg", "/x/c.png", "/x/jpg", "/x/b.jpg"};
  EXPECT_EQ(ETPathFilter::suffix({}).filter(paths), paths);  // an empty list lets all through
  EXPECT_EQ(ETPathFilter::suffix({"jpg"}).filter(paths),
            (Paths{"/x/a.JPG", "/x/b.jpg", "/x/b.jpg"}));
  EXPECT_EQ(ETPathFilter::suffix({"png", "jpg", "JPG"}).filter(paths),
            (Paths{"/x/a.JPG", "/x/b.jpg", "/x/c.png", "/x/b.jpg"}));
}

TEST(ETPathFilter, OnlyTheTextBehindTheLastDotCounts) {
  const Paths paths{"/d/a.tar.gz", "/d/.bashrc", "/d/noext", "/d/trailing.", "/d.dir/file"};
  EXPECT_EQ(ETPathFilter::suffix({"gz", "tar.gz"}).filter(paths), (Paths{"/d/a.tar.gz"}));
  EXPECT_EQ(ETPathFilter::suffix({"bashrc"}).filter(paths), Paths{});
  EXPECT_EQ(ETPathFilter::suffix({""}).filter(paths),
            (Paths{"/d/.bashrc", "/d/noext", "/d/trailing.", "/d.dir/file"}));
  EXPECT_EQ(ETPathFilter::suffix({".gz"}).filter(paths), Paths{});
}

TEST(ETPathFilter, FilterUsesFullUnicodeUpperCasing) {
  // "ß" upper-cases to "SS"; "é" written decomposed equals the composed one.
  const Paths paths{"/m/a.maß", "/m/b.MASS", "/m/c.caf\u00e9", "/m/d.CAFE\u0301", "/m/e.\xff"};
  EXPECT_EQ(ETPathFilter::suffix({"mass"}).filter(paths), (Paths{"/m/a.maß", "/m/b.MASS"}));
  EXPECT_EQ(ETPathFilter::suffix({"cafe\u0301"}).filter(paths),
            (Paths{"/m/c.caf\u00e9", "/m/d.CAFE\u0301"}));
  // Bytes that are no UTF-8 match only themselves.
  EXPECT_EQ(ETPathFilter::suffix({"\xff"}).filter(paths), (Paths{"/m/e.\xff"}));
  EXPECT_EQ(ETPathFilter::suffix({"\xfe"}).filter(paths), Paths{});
}

TEST(ETPathFilter, EqualityIsByPositionAndLetterCase) {
  EXPECT_NE(ETPathFilter::suffix({"jpg", "png"}), ETPathFilter::suffix({"png", "jpg"}));
  EXPECT_NE(ETPathFilter::suffix({"jpg", "png"}), ETPathFilter::suffix({"JPG", "PNG"}));
  EXPECT_NE(ETPathFilter::suffix({"jpg"}), ETPathFilter::suffix({"jpg", "jpg"}));
  EXPECT_EQ(ETPathFilter::suffix({"caf\u00e9"}), ETPathFilter::suffix({"cafe\u0301"}));
}
