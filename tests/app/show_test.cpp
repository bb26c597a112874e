// The program's table and its lookups, driven through the program's own pieces with input of our
// choosing. The whole program, with its refusals, lookups and JSON form, runs in
// program_test.cpp.

#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <sstream>

#include "tag_table.hpp"
#include "tags_command.hpp"
#include "read/tool_answer.hpp"

namespace {

using namespace lorvane;
using namespace lorvane::app;

// The catalogue reads its language once per process: this program's is English.
const bool englishCatalogue = [] { return ::setenv("LC_ALL", "C", 1) == 0; }();

FileTags fileOf(const std::string& json) {
  return detail::makeFileTags("a.jpg", "a.jpg", {json, {}},
                              detail::CatalogueTexts(ETLanguage::english))
      .at(0);
}

TEST(TagTable, ColumnsAlignByDisplayWidthAndValuesStayInTheirRows) {
  EXPECT_EQ(displayWidth("abc"), 3u);
  EXPECT_EQ(displayWidth("日本語"), 6u);
  EXPECT_EQ(displayWidth("e\u0301"), 1u);  // a combining accent takes no column
  EXPECT_EQ(escapeControls("a\tb\x1b\r\u0085"), "a\\tb\\x1B\\r\\u0085");

  const auto file = fileOf(R"json([{"SourceFile": "a.jpg",
      "EXIF:IFD0:XResolution": {"desc": "X", "val": 72},
      "EXIF:IFD1:XResolution": {"desc": "X", "val": 180},
      "EXIF:IFD0:Make": {"desc": "Make", "val": "日本語"},
      "EXIF:IFD0:Artist": {"desc": "Artist", "val": "one\ntwo"},
      "EXIF:IFD0:Copyright": {"desc": "Copyright", "val": "bell\u0007"},
      "EXIF:IFD1:ThumbnailImage": {"desc": "T", "val": "(Binary data 5120 bytes, use -b option to extract)"}}])json");
  std::ostringstream out;
  printTagTable(out, file, TableStyle{});
  const std::string table = out.str();
  EXPECT_NE(table.find("  X Resolution (IFD0)  72\n"), std::string::npos) << table;
  EXPECT_NE(table.find("  X Resolution (IFD1)  180\n"), std::string::npos) << table;
  // Every value starts in the same column, wide characters counted twice.
  EXPECT_NE(table.find("  Make                 日本語\n"), std::string::npos) << table;
  EXPECT_NE(table.find("  Artist               one\n                       two\n"),
            std::string::npos)
      << table;
  EXPECT_NE(table.find("bell\\x07\n"), std::string::npos) << table;
  EXPECT_NE(table.find("  (Binary data 5120 bytes)\n"), std::string::npos) << table;

  // A line feed in a file's name stays inside the header's one line.
  FileTags named = file;
  named.file = "line\nbreak.jpg";
  std::ostringstream header;
  printTagTable(header, named, TableStyle{});
  EXPECT_TRUE(header.str().starts_with("== line\\nbreak.jpg\n")) << header.str();
}

// Names, wildcards and titles in another language are looked up through the program.
TEST(TagLookup, WildcardsMatchOnlyTheirTagsAndBareWordsFindKeysOrTitles) {
  ASSERT_TRUE(englishCatalogue);
  for (const TagItem* item : findTags("Canon:*Lens*")) {
    EXPECT_EQ(item->stream().rawValue(), "Canon");
    EXPECT_NE(item->key().rawValue().find("Lens"), std::string::npos);
  }
  EXPECT_GT(findTags("Orientation").size(), 5u);  // the key stands in many streams
  const auto byTitle = findTags("camera model name");
  EXPECT_NE(std::find(byTitle.begin(), byTitle.end(), &TagItem::itemEXIFModel()), byTitle.end());
  EXPECT_TRUE(findTags("nothing titled like this").empty());
}

// However long a pattern, runs of stars and repeated words find what their short form finds.
TEST(TagLookup, LongPatternsFindWhatTheirShortFormsFind) {
  const std::string stars(100000, '*');
  EXPECT_EQ(findTags("Canon:" + stars + "Lens" + stars), findTags("Canon:*Lens*"));
  EXPECT_EQ(findTags(stars + "Orientation"), findTags("*Orientation"));
  std::string words;
  for (int i = 0; i < 20000; ++i) {
    words += "model camera ";
  }
  EXPECT_EQ(findTags(words + "name"), findTags("camera model name"));
  EXPECT_TRUE(findTags(std::string(131000, 'a')).empty());
}

}  // namespace
