// Dates, numbers, capture times and places read from files that the real ExifTool wrote.

#include <lorvane/lorvane.hpp>
#include <lorvane/tag_values.hpp>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <iomanip>
#include <optional>
#include <sstream>
#include <variant>
#include <string>
#include <vector>

#include "outside_tool.hpp"
#include "test_support.hpp"

namespace {

namespace fs = std::filesystem;
using namespace lorvane;
using lorvane::test::dataFolder;
using lorvane::test::outsideToolOutput;
using lorvane::test::TemporaryFolder;

// A copy of a sample file with the tags written by ExifTool itself.
std::string madeWith(const TemporaryFolder& folder, const std::string& sample,
                     const std::vector<std::string>& tags) {
  static int count = 0;
  const fs::path copy =
      folder.path() / (std::to_string(++count) + fs::path(sample).extension().string());
  fs::copy_file(dataFolder() / sample, copy);
  std::vector<std::string> arguments = {"-q", "-q", "-overwrite_original"};
  arguments.insert(arguments.end(), tags.begin(), tags.end());
  arguments.push_back(copy.string());
  outsideToolOutput("exiftool", arguments);
  return copy.string();
}

const FileTag* tagNamed(const FileTags& file, std::string_view group, std::string_view name) {
  for (const auto& tag : file.tags) {
    if (tag.group == group && tag.name == name) {
      return &tag;
    }
  }
  return nullptr;
}

std::string utcText(std::chrono::sys_time<std::chrono::microseconds> instant) {
  using namespace std::chrono;
  const auto day = floor<days>(instant);
  const year_month_day date(day);
  const hh_mm_ss time(instant - day);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d.%06" PRId64,
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()),
                static_cast<std::int64_t>(time.subseconds().count()));
  return text;
}

TEST(TagDateTime, ParsesTheToolsFormsAndIso8601) {
  struct Case {
    std::string text;
    std::string iso;  // empty: no date
    std::string utc;  // the instant, where the offset is known
  };
  const std::vector<Case> cases = {
      {"2026:11:01 10:30:00", "2026-11-01T10:30:00", ""},
      {"2026:11:01 10:30:00.123+02:00", "2026-11-01T10:30:00.123+02:00",
       "2026-11-01 08:30:00.123000"},
      {"2026:11:01 10:30:00.05Z", "2026-11-01T10:30:00.05Z", "2026-11-01 10:30:00.050000"},
      {"2026-11-01T00:15:00-05:30", "2026-11-01T00:15:00-05:30", "2026-11-01 05:45:00.000000"},
      {"2026:11:01 10:30+01:00", "2026-11-01T10:30+01:00", "2026-11-01 09:30:00.000000"},
      {"2024:02:29", "2024-02-29", ""},
      {"2026:11", "2026-11", ""},
      {"2026", "2026", ""},
      {"0000:00:00 00:00:00", "", ""},
      {"9999:99:99 00:00:00", "", ""},
      {"2026:02:29 10:00:00", "", ""},
      {"2026:11:30 24:00:00", "", ""},
      {"2026:11:01 10:30:00 ", "", ""},
      {"10:30:00", "", ""},
      {"taken 2026:11:01", "", ""},
      {"2026:11:01 10:30:00+15:00", "", ""},
      {"", "", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const auto date = TagDateTime::parse(c.text);
    EXPECT_EQ(date ? date->iso8601() : "", c.iso);
    if (date) {
      // The ISO form reads back as the same date.
      EXPECT_EQ(TagDateTime::parse(date->iso8601()), date);
      const auto utc = date->utc();
      EXPECT_EQ(utc ? utcText(*utc) : "", c.utc);
    }
  }
}

TEST(FileTag, DatesAndNumbersOfEveryFormTheToolWrites) {
  TemporaryFolder folder;
  const std::string jpeg =
      madeWith(folder, "plain.jpg",
               {"-EXIF:DateTimeOriginal=2026:11:01 10:30:00", "-EXIF:SubSecTimeOriginal=123",
                "-EXIF:OffsetTimeOriginal=+02:00", "-EXIF:ModifyDate#=0000:00:00 00:00:00",
                "-EXIF:GPSTimeStamp=08:30:00", "-XMP-photoshop:DateCreated=2026:11",
                "-XMP-xmp:CreateDate=2026", "-XMP-xmp:MetadataDate=2026:11:01",
                "-XMP-exif:DateTimeOriginal=2026:11:01 10:30:00.5Z",
                "-XMP-dc:Description=taken 2026:11:01 10:30:00", "-XMP-dc:Title=2026",
                "-EXIF:ISO=64000", "-EXIF:ExposureCompensation=-2/3", "-XMP-dc:Subject=1",
                "-XMP-dc:Subject=2", "-EXIF:FNumber#=1/0", "-EXIF:ExposureTime#=0/0"});
  const FileTags file = MetadataReader().read(jpeg);
  ASSERT_FALSE(file.error) << *file.error;

  struct Case {
    std::string group, name;
    std::string date;    // iso8601, empty: no date
    std::string number;  // as printed, empty: no number
  };
  const std::vector<Case> cases = {
      {"EXIF:ExifIFD", "DateTimeOriginal", "2026-11-01T10:30:00", ""},
      {"Composite", "SubSecDateTimeOriginal", "2026-11-01T10:30:00.123+02:00", ""},
      {"EXIF:IFD0", "ModifyDate", "", ""},
      {"EXIF:GPS", "GPSTimeStamp", "", ""},
      {"XMP:XMP-photoshop", "DateCreated", "2026-11", ""},
      {"XMP:XMP-xmp", "CreateDate", "2026", "2026"},
      {"XMP:XMP-xmp", "MetadataDate", "2026-11-01", ""},
      {"XMP:XMP-exif", "DateTimeOriginal", "2026-11-01T10:30:00.5Z", ""},
      {"XMP:XMP-dc", "Description", "", ""},
      // A year alone in a text tag is a number, not a date.
      {"XMP:XMP-dc", "Title", "", "2026"},
      {"EXIF:ExifIFD", "ISO", "", "64000"},
      {"EXIF:ExifIFD", "ExposureCompensation", "", "-0.6666666667"},
      {"XMP:XMP-dc", "Subject", "", ""},
      {"EXIF:ExifIFD", "FNumber", "", ""},
      {"EXIF:ExifIFD", "ExposureTime", "", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.group + ":" + c.name);
    const FileTag* tag = tagNamed(file, c.group, c.name);
    ASSERT_NE(tag, nullptr);
    const auto date = tag->dateTime();
    EXPECT_EQ(date ? date->iso8601() : "", c.date);
    const auto number = tag->number();
    std::ostringstream printed;
    if (number) {
      std::visit([&](auto value) { printed << std::setprecision(15) << value; }, number->value());
    }
    EXPECT_EQ(printed.str(), c.number);
  }
  // Integers stay exact past a double's 53 bits.
  const std::string large =
      madeWith(folder, "plain.jpg",
               {"-XMP-dc:Source=18446744073709551615", "-XMP-dc:Rights=-9223372036854775808"});
  const FileTags read = MetadataReader().read(large);
  ASSERT_NE(tagNamed(read, "XMP:XMP-dc", "Source"), nullptr);
  EXPECT_EQ(tagNamed(read, "XMP:XMP-dc", "Source")->number(),
            TagNumber::make(std::uint64_t{18446744073709551615u}));
  EXPECT_EQ(tagNamed(read, "XMP:XMP-dc", "Rights")->number(),
            TagNumber::make(std::int64_t{-9223372036854775807 - 1}));
}

TEST(FileTags, CaptureTimeByItsOrderWithItsZone) {
  struct Case {
    std::string name;
    std::string sample;
    std::vector<std::string> tags;
    std::string time;  // iso8601, empty: none
    std::string source;
    std::string zoneSource;
  };
  const std::vector<Case> cases = {
      {"offset tag",
       "plain.jpg",
       {"-EXIF:DateTimeOriginal=2026:11:01 10:30:00", "-EXIF:OffsetTimeOriginal=+02:00"},
       "2026-11-01T10:30:00+02:00",
       "Composite:SubSecDateTimeOriginal",
       "EXIF:OffsetTimeOriginal"},
      {"sub-seconds and offset",
       "plain.jpg",
       {"-EXIF:DateTimeOriginal=2026:11:01 10:30:00", "-EXIF:SubSecTimeOriginal=05",
        "-EXIF:OffsetTimeOriginal=-03:30", "-XMP-exif:DateTimeOriginal=2020:01:01 00:00:00"},
       "2026-11-01T10:30:00.05-03:30",
       "Composite:SubSecDateTimeOriginal",
       "EXIF:OffsetTimeOriginal"},
      {"no zone",
       "plain.jpg",
       {"-EXIF:DateTimeOriginal=2026:11:01 10:30:00"},
       "2026-11-01T10:30:00",
       "EXIF:DateTimeOriginal",
       ""},
      {"GPS time the same day",
       "plain.jpg",
       {"-EXIF:DateTimeOriginal=2026:11:01 10:30:10", "-GPSDateStamp=2026:11:01",
        "-GPSTimeStamp=04:45:00"},
       "2026-11-01T10:30:10+05:45",
       "EXIF:DateTimeOriginal",
       "GPS time"},
      {"GPS time the day before",
       "plain.jpg",
       {"-EXIF:DateTimeOriginal=2026:11:01 00:30:00", "-GPSDateStamp=2026:10:31",
        "-GPSTimeStamp=22:30:00"},
       "2026-11-01T00:30:00+02:00",
       "EXIF:DateTimeOriginal",
       "GPS time"},
      {"GPS time the day after",
       "plain.jpg",
       {"-EXIF:DateTimeOriginal=2026:10:31 20:00:00", "-GPSDateStamp=2026:11:01",
        "-GPSTimeStamp=06:00:00"},
       "2026-10-31T20:00:00-10:00",
       "EXIF:DateTimeOriginal",
       "GPS time"},
      {"GPS time east of the date line",
       "plain.jpg",
       {"-EXIF:DateTimeOriginal=2026:11:01 11:00:00", "-GPSDateStamp=2026:10:31",
        "-GPSTimeStamp=21:00:00"},
       "2026-11-01T11:00:00+14:00",
       "EXIF:DateTimeOriginal",
       "GPS time"},
      {"GPS time too far off",
       "plain.jpg",
       {"-EXIF:DateTimeOriginal=2026:11:01 11:00:00", "-GPSDateStamp=2026:10:31",
        "-GPSTimeStamp=20:00:00"},
       "2026-11-01T11:00:00",
       "EXIF:DateTimeOriginal",
       ""},
      {"XMP before EXIF's creation date",
       "plain.jpg",
       {"-EXIF:CreateDate=2026:11:01 10:30:00", "-XMP-photoshop:DateCreated=2026:10:01"},
       "2026-10-01",
       "XMP:DateCreated",
       ""},
      {"EXIF's creation date with its offset",
       "plain.jpg",
       {"-EXIF:CreateDate=2026:11:01 10:30:00", "-EXIF:OffsetTimeDigitized=+01:00",
        "-EXIF:SubSecTimeDigitized=7"},
       "2026-11-01T10:30:00.7+01:00",
       "EXIF:CreateDate",
       "EXIF:OffsetTimeDigitized"},
      {"zone in the value",
       "sample.mp4",
       {"-QuickTime:CreateDate=2026:11:01 08:00:00",
        "-Keys:CreationDate=2026:11:01 10:30:00+02:00"},
       "2026-11-01T10:30:00+02:00",
       "QuickTime:CreationDate",
       "in the value"},
      {"QuickTime's UTC",
       "sample.mp4",
       {"-QuickTime:CreateDate=2026:11:01 08:00:00"},
       "2026-11-01T08:00:00Z",
       "QuickTime:CreateDate",
       "UTC by the format"},
      {"a file's own dates are none", "plain.jpg", {}, "", "", ""},
  };
  TemporaryFolder folder;
  MetadataReader reader;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const FileTags file = reader.read(madeWith(folder, c.sample, c.tags));
    ASSERT_FALSE(file.error) << *file.error;
    const auto taken = file.captureTime();
    EXPECT_EQ(taken ? taken->time.iso8601() : "", c.time);
    EXPECT_EQ(taken ? taken->source : "", c.source);
    EXPECT_EQ(taken ? taken->zoneSource : "", c.zoneSource);
  }
}

TEST(FileTags, LocationsInEveryQuadrantAndBelowTheSea) {
  struct Case {
    std::string name;
    std::string sample;
    std::vector<std::string> tags;
    bool found;
    double latitude, longitude;
    std::optional<double> altitude;
    std::string source;
  };
  const std::vector<Case> cases = {
      {"EXIF north east",
       "plain.jpg",
       {"-GPSLatitude=48.8584", "-GPSLatitudeRef=N", "-GPSLongitude=2.2945", "-GPSLongitudeRef=E",
        "-GPSAltitude=35", "-GPSAltitudeRef#=0"},
       true,
       48.8584,
       2.2945,
       35,
       "Composite"},
      {"EXIF south west below the sea",
       "plain.jpg",
       {"-GPSLatitude=33.5", "-GPSLatitudeRef=S", "-GPSLongitude=70.25", "-GPSLongitudeRef=W",
        "-GPSAltitude=12.5", "-GPSAltitudeRef#=1"},
       true,
       -33.5,
       -70.25,
       -12.5,
       "Composite"},
      {"EXIF north west",
       "plain.jpg",
       {"-GPSLatitude=40.6892", "-GPSLatitudeRef=N", "-GPSLongitude=74.0445", "-GPSLongitudeRef=W"},
       true,
       40.6892,
       -74.0445,
       std::nullopt,
       "Composite"},
      {"EXIF south east",
       "plain.jpg",
       {"-GPSLatitude=33.8568", "-GPSLatitudeRef=S", "-GPSLongitude=151.2153",
        "-GPSLongitudeRef=E"},
       true,
       -33.8568,
       151.2153,
       std::nullopt,
       "Composite"},
      {"XMP below the sea",
       "plain.jpg",
       {"-XMP:GPSLatitude=48,51.504N", "-XMP:GPSLongitude=2,17.67W", "-XMP:GPSAltitude=35",
        "-XMP:GPSAltitudeRef#=1"},
       true,
       48.8584,
       -2.2945,
       -35,
       "XMP"},
      {"QuickTime south west below the sea",
       "sample.mp4",
       {"-Keys:GPSCoordinates#=-33.5 -70.25 -12"},
       true,
       -33.5,
       -70.25,
       -12,
       "Composite"},
      {"QuickTime user data north east",
       "sample.mp4",
       {"-UserData:GPSCoordinates#=48.8584 2.2945 35"},
       true,
       48.8584,
       2.2945,
       35,
       "Composite"},
      {"0,0 alone is no place",
       "plain.jpg",
       {"-GPSLatitude=0", "-GPSLatitudeRef=N", "-GPSLongitude=0", "-GPSLongitudeRef=E"},
       false,
       0,
       0,
       std::nullopt,
       ""},
      {"0,0 with an altitude is one",
       "plain.jpg",
       {"-GPSLatitude=0", "-GPSLatitudeRef=N", "-GPSLongitude=0", "-GPSLongitudeRef=E",
        "-GPSAltitude=3", "-GPSAltitudeRef#=0"},
       true,
       0,
       0,
       3,
       "Composite"},
      {"none", "plain.jpg", {"-EXIF:Make=DemoCam"}, false, 0, 0, std::nullopt, ""},
  };
  TemporaryFolder folder;
  MetadataReader reader;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const FileTags file = reader.read(madeWith(folder, c.sample, c.tags));
    ASSERT_FALSE(file.error) << *file.error;
    const auto place = file.location();
    ASSERT_EQ(place.has_value(), c.found);
    if (place) {
      EXPECT_NEAR(place->latitude, c.latitude, 1e-9);
      EXPECT_NEAR(place->longitude, c.longitude, 1e-9);
      EXPECT_EQ(place->altitude.has_value(), c.altitude.has_value());
      EXPECT_NEAR(place->altitude.value_or(0), c.altitude.value_or(0), 1e-9);
      EXPECT_EQ(place->source, c.source);
    }
  }
}

// Over files of many kinds: every date the tool prints with -n reads as a date, every
// position is the tool's own composite one.
TEST(FileTags, AgreeWithTheToolOverVariedFiles) {
  TemporaryFolder folder;
  lorvane::test::programOutput(
      "/usr/bin/python3",
      {LORVANE_SOURCE_DIR "/tools/make-varied-files.py", folder.path().string()});
  madeWith(
      folder, "sample.mp4",
      {"-Keys:GPSCoordinates#=-33.5 -70.25 -12", "-Keys:CreationDate=2026:11:01 10:30:00+02:00"});
  madeWith(folder, "plain.jpg",
           {"-XMP:DateTimeOriginal=2026:11:01 10:30:00.5Z", "-GPSLatitude=33.5",
            "-GPSLatitudeRef=S", "-GPSLongitude=70.25", "-GPSLongitudeRef=W"});
  std::vector<std::string> files;
  for (const auto& entry : fs::directory_iterator(folder.path())) {
    files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  std::vector<std::string> arguments = {
      "-q", "-j", "-n", "-G0:1", "-time:all", "-Composite:GPSLatitude", "-Composite:GPSLongitude"};
  arguments.insert(arguments.end(), files.begin(), files.end());
  const auto expected = nlohmann::json::parse(outsideToolOutput("exiftool", arguments));
  std::size_t dates = 0;
  std::size_t places = 0;
  MetadataReader reader;
  for (const auto& told : expected) {
    const std::string name = told["SourceFile"];
    SCOPED_TRACE(name);
    const FileTags file = reader.read(name);
    for (const auto& [key, value] : told.items()) {
      const auto parts = ToolGroupedName::parse(key);
      if (!parts || parts->family0 == "Composite" || !value.is_string() ||
          value.get<std::string>().starts_with("0000:00:00")) {
        continue;
      }
      SCOPED_TRACE(key);
      std::string group(parts->family0);
      if (!parts->family1.empty()) {
        group.append(":").append(parts->family1);
      }
      const FileTag* tag = tagNamed(file, group, parts->tag);
      ASSERT_NE(tag, nullptr);
      const auto date = tag->dateTime();
      EXPECT_TRUE(date);
      dates += date.has_value();
    }
    const auto place = file.location();
    EXPECT_EQ(place.has_value(), told.contains("Composite:GPSLatitude"));
    if (place && told.contains("Composite:GPSLatitude")) {
      EXPECT_NEAR(place->latitude, told["Composite:GPSLatitude"].get<double>(), 1e-12);
      EXPECT_NEAR(place->longitude, told["Composite:GPSLongitude"].get<double>(), 1e-12);
      ++places;
    }
  }
  EXPECT_GE(dates, 20u);
  EXPECT_GE(places, 2u);
}

}  // namespace

namespace {

// The reader's tools get the user's zone; a run's tool keeps only its own variables.
TEST(MetadataReader, DatesComeInTheUsersZoneAsTheToolPrintsThemForThatUser) {
  const char* before = std::getenv("TZ");
  const std::optional<std::string> saved = before ? std::optional<std::string>(before)
                                                  : std::nullopt;
  const std::string file = (dataFolder() / "sample.mp4").string();
  for (const char* zone : {"Europe/Berlin", "America/St_Johns", "UTC"}) {
    SCOPED_TRACE(zone);
    ::setenv("TZ", zone, 1);
    const FileTags read = MetadataReader().read(file);
    const FileTag* modified = tagNamed(read, "File:System", "FileModifyDate");
    ASSERT_NE(modified, nullptr);
    std::string expected = lorvane::test::programOutput(
        "/usr/bin/exiftool", {"-s3", "-FileModifyDate", file}, {{"TZ", zone}});
    expected.erase(expected.find_last_not_of('\n') + 1);
    EXPECT_EQ(modified->value.joined(), expected);
  }
  // A run's tool, under a TZ, is as a tool that has none.
  ::setenv("TZ", "Europe/Berlin", 1);
  ETInput input;
  input.addArguments([&](ETInput::ArgumentsMaker& maker) {
    maker.additional = {"-s3", "-FileModifyDate"};
    maker.sourcePath = file;
  });
  auto run = ETProcess::run(input).decodeOutData().value_or("");
  auto withoutZone = lorvane::test::programOutput(
      "/usr/bin/exiftool", {"-s3", "-FileModifyDate", file}, {{"TZ", std::nullopt}});
  run.erase(run.find_last_not_of('\n') + 1);
  withoutZone.erase(withoutZone.find_last_not_of('\n') + 1);
  EXPECT_EQ(run, withoutZone);
  if (saved) {
    ::setenv("TZ", saved->c_str(), 1);
  } else {
    ::unsetenv("TZ");
  }
}

}  // namespace
