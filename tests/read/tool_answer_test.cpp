// The reading of ExifTool's long JSON and the catalogue checks of a write, with input of our
// choosing: numbers kept as the tool wrote them, titles and labels where the tool gave none.

#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <stdexcept>

#include "tool_answer.hpp"
#include "tool_json.hpp"

namespace {

using namespace lorvane;
using namespace lorvane::detail;

const CatalogueTexts english(ETLanguage::english);

FileTags fileOf(const std::string& json) {
  return makeFileTags("a.jpg", "a.jpg", {json, {}}, english).at(0);
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
      R"([{"a": 0.02414, "b": 5.00000, "c": -0, "d": [1e5, -0.0, 12345678901234, 1e400],)"
      R"( "e": -1E-400, "f": true}])")[0];
  for (const auto& [value, text] : std::vector<std::pair<nlohmann::ordered_json, std::string>>{
           {object["a"], "0.02414"},
           {object["b"], "5.00000"},
           {object["c"], "-0"},
           {object["d"][0], "1e5"},
           {object["d"][1], "-0.0"},
           {object["d"][2], "12345678901234"},
           {object["d"][3], "1e400"},  // beyond a double, as the tool prints a text tag "1e400"
           {object["e"], "-1E-400"},
           {object["f"], "true"}}) {
    EXPECT_EQ(scalarText(value), text);
  }
  for (const char* broken : {"[{\"a\": 1", "[01]", "[1.]", "[-]", "[1.2.3]", "[1e]"}) {
    EXPECT_THROW(parseToolJson(broken), nlohmann::json::exception) << broken;
  }
  // A whole answer that is no JSON is that file's error, never a throw.
  const auto broken = makeFileTags("a.jpg", "a.jpg", {"[{\"a\": 1", {}}, english);
  ASSERT_EQ(broken.size(), 1u);
  EXPECT_TRUE(broken[0].error);
}

TEST(FileTags, ValuesTitlesAndLabelsFollowTheToolWhereItSpoke) {
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
  EXPECT_EQ(file.file, "a.jpg");

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

// The refusals are checked with a write in metadata_reader_test.cpp, the sentences through the
// program.
TEST(Assignments, AlternativeLabelsAndNumbersBecomeRawValues) {
  const std::vector<std::string> texts = {"EXIF:SensingMethod=Not defined", "EXIF:FNumber=2.8",
                                          "EXIF:ExposureTime=1/250"};
  const auto accepted = checkAssignments(texts, ETLanguage::english);
  ASSERT_TRUE(std::holds_alternative<std::vector<TagAssignment>>(accepted));
  std::vector<std::string> arguments;
  for (const auto& assignment : std::get<std::vector<TagAssignment>>(accepted)) {
    for (const auto& argument : assignment.toolArguments()) {
      arguments.push_back(argument);
    }
  }
  // "Not defined" is one of the catalogue's alternative labels of the value 1.
  EXPECT_EQ(arguments, (std::vector<std::string>{"-EXIF:SensingMethod#=1", "-EXIF:FNumber#=2.8",
                                                 "-EXIF:ExposureTime#=1/250"}));
}

}  // namespace
