// The reading of ExifTool's long JSON, with input of our choosing: numbers kept as the tool
// wrote them, titles and labels where the tool gave none.

#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>
#include <stdexcept>

#include "read/tool_answer.hpp"
#include "read/tool_json.hpp"

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
  const auto file = fileOf(
      R"([{"X:A": {"val": 0.02414}, "X:B": {"val": 5.00000}, "X:C": {"val": -0},)"
      R"( "X:D": {"val": [1e5, -0.0, 12345678901234, 1e400]}, "X:E": {"val": -1E-400, "num": true},)"
      R"( "X:F": {"val": {"k": "v"}}, "X:G": {"val": null}}])");
  const std::vector<std::pair<std::string, TagValue>> expected = {
      {"A", {{"0.02414"}, false}},
      {"B", {{"5.00000"}, false}},
      {"C", {{"-0"}, false}},
      // 1e400 lies beyond a double, as the tool prints a text tag "1e400".
      {"D", {{"1e5", "-0.0", "12345678901234", "1e400"}, true}},
      {"E", {{"-1E-400"}, false}},
      {"F", {{R"({"k":"v"})"}, false}},  // a value with members stays JSON
      {"G", {{"null"}, false}}};
  for (const auto& [name, value] : expected) {
    EXPECT_EQ(tagNamed(file, "X", name).value, value) << name;
  }
  EXPECT_EQ(tagNamed(file, "X", "E").raw.joined(), "true");

  // A whole answer that is no JSON is that file's error, never a throw.
  for (const char* broken : {"[{\"a\": 1", "[01]", "[1.]", "[-]", "[1.2.3]", "[1e]"}) {
    const auto read = makeFileTags("a.jpg", "a.jpg", {broken, {}}, english);
    ASSERT_EQ(read.size(), 1u) << broken;
    EXPECT_TRUE(read[0].error && read[0].error->starts_with("ExifTool's output is not the JSON"))
        << broken;
  }
}

// What isn't shaped as the tool's answer is passed over, never taken for a tag.
TEST(ToolJson, OtherShapesAreNoTags) {
  const auto read =
      makeFileTags("folder", "folder",
                   {R"([{"SourceFile": "folder/a.jpg", "X:Bare": "text", "NoGroup": {"val": "x"},)"
                    R"( "X:List": [1], "X:Kept": {"val": "y", "other": {"deep": [1, {"a": 2}]}}},)"
                    R"( "text", [1, 2], {"SourceFile": "elsewhere/b.jpg"}])",
                    {}},
                   english);
  ASSERT_EQ(read.size(), 4u);
  EXPECT_EQ(read[0].file, "folder/a.jpg");
  ASSERT_EQ(read[0].tags.size(), 1u);
  EXPECT_EQ(read[0].tags[0].value.joined(), "y");
  for (std::size_t i = 1; i < read.size(); ++i) {
    EXPECT_EQ(read[i].file, "folder");  // no path within the folder given: the folder's name
    EXPECT_TRUE(read[i].tags.empty());
  }
  for (const char* other : {"{}", "\"text\"", "[]", "  "}) {
    const auto none = makeFileTags("a.jpg", "a.jpg", {other, {}}, english);
    ASSERT_EQ(none.size(), 1u);
    EXPECT_EQ(none[0].error, "not read") << other;
  }
}

// The events a parser gives, as one text.
class Recorder : public nlohmann::json_sax<nlohmann::ordered_json> {
public:
  std::string events;
  bool null() override { return add("null"); }
  bool boolean(bool value) override { return add(value ? "true" : "false"); }
  bool number_integer(number_integer_t) override { return add("integer"); }
  bool number_unsigned(number_unsigned_t) override { return add("unsigned"); }
  bool number_float(number_float_t, const string_t&) override { return add("float"); }
  bool string(string_t& text) override { return add("s:" + text); }
  bool binary(binary_t&) override { return add("binary"); }
  bool start_object(std::size_t) override { return add("{"); }
  bool key(string_t& name) override { return add("k:" + name); }
  bool end_object() override { return add("}"); }
  bool start_array(std::size_t) override { return add("["); }
  bool end_array() override { return add("]"); }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
    return add("error");
  }
  bool add(const std::string& event) { return !(events += event + "|").empty(); }
};

// The quick reading gives what nlohmann's parser gives of the text with its numbers quoted, and
// leaves to it whatever isn't well-formed.
TEST(ToolJson, TheQuickReadingAgreesWithTheFullParser) {
  const struct {
    std::string json;
    bool wellFormed;
  } cases[] = {
      {R"([{"SourceFile": "a.jpg", "X:A": {"val": [1, -0, 2.50, 1e400, true, false, null]}}])",
       true},
      {R"( [ {} , [] , { "k" : { "n" : [ [ ] ] } } ] )", true},
      {R"(["q\"b\\s\/\b\f\n\r\t", "\u00e9\u20ac\ud83d\ude00\u0000", "\u00C9", "ü€😀"])", true},
      {R"("top")", true},
      {"-12.5e-3", true},
      {R"(["a" "b"])", false},
      {R"([1,])", false},
      {R"({"a" 1})", false},
      {R"([01])", false},
      {R"([1.])", false},
      {R"([-])", false},
      {R"(["\ud83d"])", false},
      {R"(["\ude00"])", false},
      {R"(["\x"])", false},
      {"[\"a\tb\"]", false},
      {R"(["\u12"])", false},
      {R"([tru])", false},
      {R"([] [])", false},
      {R"([{"a": 1])", false},
      {R"(["cut)", false},
      {"[\"\xff\"]", false},
      {"\xef\xbb\xbf[1]", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.json);
    Recorder quick;
    Recorder full;
    nlohmann::ordered_json::sax_parse(withQuotedNumbers(c.json), &full);
    ASSERT_EQ(readToolJson(c.json, quick), c.wellFormed);
    if (c.wellFormed) {
      EXPECT_EQ(quick.events, full.events);
      EXPECT_EQ(full.events.find("error"), std::string::npos);
    }
  }
}

// An answer to several files stands for them only when it names each, in order, as sent.
TEST(ToolJson, AnAnswerToSeveralFilesNamesEachAsSent) {
  // Each file with a value that reads as the start of a file once unescaped.
  const auto answer = [](std::initializer_list<std::string_view> names) {
    std::string json = "[";
    for (const auto name : names) {
      json.append(json.size() > 1 ? ",\n" : "").append("{\n  \"SourceFile\": \"").append(name);
      json.append(R"(",
  "X:A": {
    "val": "{\n  \"SourceFile\": \""
  }
})");
    }
    return json + "]";
  };
  const std::vector<std::string> sent = {"a.jpg", "./-b \"q\".jpg", "c\nd.jpg"};
  const struct {
    std::string json;
    bool stands;
  } cases[] = {
      {answer({"a.jpg", R"(./-b \"q\".jpg)", R"(c\nd.jpg)"}), true},
      {answer({"a.jpg", R"(./-b \"q\".jpg)", R"(c\u000ad.jpg)"}), true},
      {answer({"a.jpg", R"(./-b \"q\".jpg)"}), false},
      {answer({"a.jpg", R"(./-b \"q\".jpg)", R"(c\nd.jpg)", "a.jpg"}), false},
      {answer({R"(./-b \"q\".jpg)", "a.jpg", R"(c\nd.jpg)"}), false},
      {answer({"a.jpg", R"(./-b \"q\".jpg)", "c?d.jpg"}), false},
      {"", false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(namesFilesInOrder(c.json, sent), c.stands) << c.json;
  }
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

}  // namespace
