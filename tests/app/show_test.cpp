// The program's reading of ExifTool's long JSON, its table and its catalogue checks, driven
// through the program's own pieces with input of our choosing. The whole program, with its
// refusals, lookups and JSON form, runs in program_test.cpp.

#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

#include "assignment.hpp"
#include "file_tags.hpp"
#include "tag_table.hpp"
#include "tags_command.hpp"
#include "tool_json.hpp"
#include "tool_reading.hpp"
#include "test_support.hpp"

namespace {

using namespace lorvane;
using namespace lorvane::app;

// The catalogue reads its language once per process: this program's is English.
const bool englishCatalogue = [] { return ::setenv("LC_ALL", "C", 1) == 0; }();

FileTags fileOf(const std::string& json) {
  ToolReading reading;
  reading.objects.push_back(parseToolJson(json)[0]);
  return makeFileTags({"a.jpg"}, reading)[0];
}

const FileTag& tagNamed(const FileTags& file, std::string_view group, std::string_view name) {
  for (const auto& tag : file.tags) {
    if (tag.group == group && tag.name == name) {
      return tag;
    }
  }
  throw std::runtime_error("no tag " + std::string(group) + ":" + std::string(name));
}

TEST(ToolJson, NumbersKeepTheToolsText) {
  const auto object = parseToolJson(
      R"([{"a": 0.02414, "b": 5.00000, "c": -0, "d": [1e5, -0.0, 12345678901234], "f": true}])")[0];
  for (const auto& [value, text] : std::vector<std::pair<nlohmann::ordered_json, std::string>>{
           {object["a"], "0.02414"},
           {object["b"], "5.00000"},
           {object["c"], "-0"},
           {object["d"][0], "1e5"},
           {object["d"][1], "-0.0"},
           {object["d"][2], "12345678901234"},
           {object["f"], "true"}}) {
    EXPECT_EQ(scalarText(value), text);
  }
  EXPECT_THROW(parseToolJson("[{\"a\": 1"), nlohmann::json::exception);
}

TEST(FileTags, ValuesTitlesAndLabelsFollowTheToolWhereItSpoke) {
  ASSERT_TRUE(englishCatalogue);
  const auto file = fileOf(R"([{"SourceFile": "a.jpg",
      "EXIF:IFD0:Orientation": {"desc": "Orientierung", "num": 8, "val": "Rotate 270 CW"},
      "EXIF:IFD1:Orientation": {"desc": "Orientierung", "val": 6},
      "EXIF:ExifIFD:CFAPattern": {"desc": "CFA", "num": "2 2 0 1 1 2", "val": "[Red,Green][Green,Blue]"},
      "EXIF:SubIFD:CFAPattern": {"desc": "CFA", "val": "2 2 0 1"},
      "XMP:XMP-dc:Subject": {"desc": "Subject", "val": ["a, b", "c"]},
      "MakerNotes:Nikon:Model": {"desc": "Camera Model Name", "val": "D700"},
      "ExifTool:ExifToolVersion": {"desc": "ExifTool Version Number", "val": 12.57},
      "ExifTool:Error": {"desc": "Error", "val": "File format error"}}])");
  EXPECT_EQ(file.error, "File format error");

  // The tool's label stands; the catalogue's only where the tool printed the raw value.
  const auto& printed = tagNamed(file, "EXIF:IFD0", "Orientation");
  EXPECT_EQ(printed.value.joined(), "Rotate 270 CW");
  EXPECT_EQ(printed.raw.joined(), "8");
  EXPECT_EQ(printed.label, "");
  EXPECT_EQ(printed.title, "Orientation");  // the catalogue's title wins over the tool's
  EXPECT_EQ(tagNamed(file, "EXIF:IFD1", "Orientation").label, "Rotate 90 CW");
  // A value of several parts gets no label from its first part.
  EXPECT_EQ(tagNamed(file, "EXIF:ExifIFD", "CFAPattern").value.joined(), "[Red,Green][Green,Blue]");
  EXPECT_EQ(tagNamed(file, "EXIF:SubIFD", "CFAPattern").label, "");

  const auto& subject = tagNamed(file, "XMP:XMP-dc", "Subject");
  EXPECT_TRUE(subject.value.isList);
  EXPECT_EQ(subject.value.texts, (std::vector<std::string>{"a, b", "c"}));
  EXPECT_EQ(subject.raw, subject.value);

  // Where the catalogue's title joins the alternatives of several tables, the tool knows the one.
  EXPECT_EQ(tagNamed(file, "MakerNotes:Nikon", "Model").title, "Camera Model Name");
  // A tag the catalogue lacks keeps the tool's description as its title.
  const auto& version = tagNamed(file, "ExifTool", "ExifToolVersion");
  EXPECT_EQ(version.item, nullptr);
  EXPECT_EQ(version.title, "ExifTool Version Number");
  EXPECT_EQ(version.section, "ExifTool");
}

TEST(FileTags, EveryFileGetsOneEntryInCommandLineOrder) {
  ToolReading reading;
  reading.objects = {parseToolJson(R"([{"SourceFile": "a.jpg"}])")[0],
                     parseToolJson(R"([{"SourceFile": "dir/b.jpg"}])")[0],
                     parseToolJson(R"([{"SourceFile": "a.jpg"}])")[0],
                     parseToolJson(R"([{"SourceFile": "b\ufffd.jpg"}])")[0]};
  reading.messages = {"Error: File not found - missing.jpg"};
  const auto files = makeFileTags({"a.jpg", "missing.jpg", "dir", "a.jpg", "b\xff.jpg"}, reading);
  ASSERT_EQ(files.size(), 5u);
  EXPECT_EQ(files[0].file, "a.jpg");
  EXPECT_EQ(files[1].error, "File not found");
  EXPECT_EQ(files[2].file, "dir/b.jpg");  // a folder's files come under their own names
  EXPECT_EQ(files[3].file, "a.jpg");
  EXPECT_FALSE(files[3].error);
  // A name that isn't UTF-8 comes back mended, and still finds its file.
  EXPECT_EQ(files[4].file, "b\xff.jpg");
  EXPECT_FALSE(files[4].error);
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

// The refusals, and labels in another language, are checked through the program.
TEST(Assignments, AlternativeLabelsAndNumbersBecomeRawValues) {
  const auto accepted = checkAssignments(
      {"EXIF:SensingMethod=Not defined", "EXIF:FNumber=2.8", "EXIF:ExposureTime=1/250"});
  ASSERT_TRUE(std::holds_alternative<std::vector<Assignment>>(accepted));
  std::vector<std::string> arguments;
  for (const auto& assignment : std::get<std::vector<Assignment>>(accepted)) {
    for (const auto& argument : assignment.toolArguments()) {
      arguments.push_back(argument);
    }
  }
  // "Not defined" is one of the catalogue's alternative labels of the value 1.
  EXPECT_EQ(arguments, (std::vector<std::string>{"-EXIF:SensingMethod#=1", "-EXIF:FNumber#=2.8",
                                                 "-EXIF:ExposureTime#=1/250"}));
}

// Names, wildcards and titles in another language are looked up through the program.
TEST(TagLookup, WildcardsMatchOnlyTheirTagsAndBareWordsFindKeysOrTitles) {
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
