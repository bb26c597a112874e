// Writing back what was read: names as the reader reports them, labels and numbers as raw
// values, dates checked and split as EXIF keeps them, and a capture time and a place written
// and read back with the real tool.

#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "test_support.hpp"

namespace {

namespace fs = std::filesystem;
using namespace lorvane;
using lorvane::test::copyOfPlainJpeg;
using lorvane::test::fileContents;
using lorvane::test::TemporaryFolder;
using Reason = AssignmentRefusal::Reason;

std::vector<std::string> argumentsOf(const std::vector<TagAssignment>& assignments) {
  std::vector<std::string> arguments;
  for (const auto& assignment : assignments) {
    for (const auto& argument : assignment.toolArguments()) {
      arguments.push_back(argument);
    }
  }
  return arguments;
}

TEST(CheckAssignments, TakesTheReadersNamesAndDatesInEveryFormOfTheTool) {
  struct Case {
    std::string text;
    std::vector<std::string> arguments;  // empty: refused for `reason`
    std::optional<Reason> reason;
  };
  const std::vector<Case> cases = {
      {"EXIF:ExifIFD:DateTimeOriginal=2026:11:01 10:30:00+02:00",
       {"-EXIF:ExifIFD:DateTimeOriginal=2026:11:01 10:30:00", "-EXIF:OffsetTimeOriginal=+02:00"},
       {}},
      {"DateTimeOriginal=2026-11-01T10:30:00", {"-DateTimeOriginal=2026:11:01 10:30:00"}, {}},
      {"Orientation=6", {"-Orientation#=6"}, {}},
      // "Not defined" is one of the catalogue's alternative labels of the value 1.
      {"EXIF:SensingMethod=Not defined", {"-EXIF:SensingMethod#=1"}, {}},
      {"EXIF:FNumber=2.8", {"-EXIF:FNumber#=2.8"}, {}},
      {"EXIF:ExposureTime=1/250", {"-EXIF:ExposureTime#=1/250"}, {}},
      {"EXIF:DateTimeOriginal=2026:11:01 10:30:00.25+02:00",
       {"-EXIF:DateTimeOriginal=2026:11:01 10:30:00", "-EXIF:SubSecTimeOriginal=25",
        "-EXIF:OffsetTimeOriginal=+02:00"},
       {}},
      {"EXIF:CreateDate=2026-11-01T10:30:00Z",
       {"-EXIF:CreateDate=2026:11:01 10:30:00", "-EXIF:OffsetTimeDigitized=+00:00"},
       {}},
      {"XMP:XMP-photoshop:DateCreated=2026-11", {"-XMP:XMP-photoshop:DateCreated=2026:11"}, {}},
      {"XMP:DateCreated=2026-11-01T10:30:00-05:30",
       {"-XMP:DateCreated=2026:11:01 10:30:00-05:30"},
       {}},
      {"EXIF:DateTimeOriginal=", {"-EXIF:DateTimeOriginal="}, {}},
      {"EXIF:DateTimeOriginal=yesterday", {}, Reason::notADate},
      {"EXIF:DateTimeOriginal=2026:11:01", {}, Reason::notADate},
      {"XMP:DateCreated=2026:13:01", {}, Reason::notADate},
      {"EXIF:IFD0:NoSuchTag=1", {}, Reason::unknownTag},
      {"NoSuchTagAnywhere=1", {}, Reason::unknownTag},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const auto checked = checkAssignments(std::vector{c.text}, ETLanguage::english);
    if (c.reason) {
      const auto* refusals = std::get_if<std::vector<AssignmentRefusal>>(&checked);
      ASSERT_NE(refusals, nullptr);
      ASSERT_EQ(refusals->size(), 1u);
      EXPECT_EQ(refusals->front().reason, *c.reason);
    } else {
      const auto* assignments = std::get_if<std::vector<TagAssignment>>(&checked);
      ASSERT_NE(assignments, nullptr);
      EXPECT_EQ(argumentsOf(*assignments), c.arguments);
    }
  }
  // The reader's name and the catalogue's are the same tag.
  const auto twice =
      checkAssignments(std::vector<std::string>{"EXIF:ExifIFD:DateTimeOriginal=2026:11:01 10:30:00",
                                                "EXIF:DateTimeOriginal=2026:11:01 10:30:00"},
                       ETLanguage::english);
  ASSERT_TRUE(std::holds_alternative<std::vector<AssignmentRefusal>>(twice));
  EXPECT_EQ(std::get<std::vector<AssignmentRefusal>>(twice).front().reason, Reason::namedTwice);
}

TEST(MetadataWriter, ACaptureTimeAndAPlaceReadBackAsWritten) {
  struct Case {
    std::string time;
    GeoLocation place;
  };
  const std::vector<Case> cases = {
      {"2026-11-01T10:30:00.123+02:00", {48.8584, 2.2945, 35.0, ""}},
      {"2026-11-01T23:59:59-09:30", {-33.8568123, 151.2153456, std::nullopt, ""}},
      {"2026-02-28T00:00:00Z", {40.6892494, -74.0445004, -12.5, ""}},
      {"2026-11-01T10:30:00", {-0.0000005, -179.9999999, 0.0, ""}},
      {"2026-11-01", {89.9999999, 0.1234567, std::nullopt, ""}},
  };
  TemporaryFolder folder;
  MetadataWriter writer({.overwritesOriginal = true});
  MetadataReader reader;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.time);
    const std::string file =
        copyOfPlainJpeg(folder.path(), std::to_string(&c - cases.data()) + ".jpg").string();
    const auto time = TagDateTime::parse(c.time);
    ASSERT_TRUE(time);
    auto assignments = assignCaptureTime(*time);
    const auto place = assignLocation(c.place);
    assignments.insert(assignments.end(), place.begin(), place.end());
    const auto results = writer.write(assignments, std::vector{file});
    ASSERT_EQ(results.size(), 1u);
    ASSERT_EQ(results[0].outcome, FileWriteResult::Outcome::updated)
        << (results[0].messages.empty() ? "" : results[0].messages.front());
    const FileTags read = reader.read(file);
    const auto taken = read.captureTime();
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->time, *time);
    const auto where = read.location();
    ASSERT_TRUE(where);
    EXPECT_NEAR(where->latitude, c.place.latitude, 1e-7);
    EXPECT_NEAR(where->longitude, c.place.longitude, 1e-7);
    EXPECT_EQ(where->altitude.has_value(), c.place.altitude.has_value());
    EXPECT_NEAR(where->altitude.value_or(0), c.place.altitude.value_or(0), 1e-9);
  }
}

}  // namespace
