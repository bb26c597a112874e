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

// The text behind the last dot of the name, compared after full Unicode upper-casing ("ß" is
// "SS", a decomposed "é" the composed one); bytes that are no UTF-8 match only themselves.
// The paths keep their order and repeats.
TEST(ETPathFilter, FilterKeepsThePathsWhoseExtensionIsOneOfTheSuffixes) {
  const Paths paths{"/x/a.JPG",    "/x/b.jpg",       "/x/c.png",        "/x/jpg",      "/x/b.jpg",
                    "/d/a.tar.gz", "/d/.bashrc",     "/d/trailing.",    "/d.dir/file", "/m/a.maß",
                    "/m/b.MASS",   "/m/c.caf\u00e9", "/m/d.CAFE\u0301", "/m/e.\xff"};
  const std::vector<std::pair<Strings, Paths>> cases = {
      {{}, paths},  // an empty list lets all through
      {{"jpg"}, {"/x/a.JPG", "/x/b.jpg", "/x/b.jpg"}},
      {{"png", "jpg", "JPG"}, {"/x/a.JPG", "/x/b.jpg", "/x/c.png", "/x/b.jpg"}},
      {{"gz", "tar.gz"}, {"/d/a.tar.gz"}},
      {{".gz"}, {}},
      {{""}, {"/x/jpg", "/d/.bashrc", "/d/trailing.", "/d.dir/file"}},
      {{"mass"}, {"/m/a.maß", "/m/b.MASS"}},
      {{"cafe\u0301"}, {"/m/c.caf\u00e9", "/m/d.CAFE\u0301"}},
      {{"\xff"}, {"/m/e.\xff"}},
      {{"\xfe"}, {}},
  };
  for (const auto& [suffixes, kept] : cases) {
    SCOPED_TRACE(suffixes.empty() ? "(none)" : suffixes.front());
    EXPECT_EQ(ETPathFilter::suffix(suffixes).filter(paths), kept);
  }
}

TEST(ETPathFilter, EqualityIsByPositionAndLetterCase) {
  EXPECT_NE(ETPathFilter::suffix({"jpg", "png"}), ETPathFilter::suffix({"png", "jpg"}));
  EXPECT_NE(ETPathFilter::suffix({"jpg", "png"}), ETPathFilter::suffix({"JPG", "PNG"}));
  EXPECT_NE(ETPathFilter::suffix({"jpg"}), ETPathFilter::suffix({"jpg", "jpg"}));
  EXPECT_EQ(ETPathFilter::suffix({"caf\u00e9"}), ETPathFilter::suffix({"cafe\u0301"}));
}
