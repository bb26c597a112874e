// Dates, numbers, capture times and places read from files that the real ExifTool wrote.

#include <lorvane/lorvane.hpp>
#include <lorvane/tag_values.hpp>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
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

TEST(TagDateTime, ParsesTheToolsFormsAndIso8601) {
  using namespace std::chrono;
  const sys_days day = 2026y / 11 / 1;
  struct Case {
    std::string text;
    std::string iso;                                 // empty: no date
    std::optional<sys_time<microseconds>> utc = {};  // where the offset is known
  };
  const std::vector<Case> cases = {
      {"2026:11:01 10:30:00", "2026-11-01T10:30:00"},
      {"2026:11:01 10:30:00.123+02:00", "2026-11-01T10:30:00.123+02:00", day + 8h + 30min + 123ms},
      {"2026:11:01 10:30:00.05Z", "2026-11-01T10:30:00.05Z", day + 10h + 30min + 50ms},
      {"2026-11-01T00:15:00-05:30", "2026-11-01T00:15:00-05:30", day + 5h + 45min},
      {"2026:11:01 10:30+01:00", "2026-11-01T10:30+01:00", day + 9h + 30min},
      {"2024:02:29", "2024-02-29"},
      {"2026:11", "2026-11"},
      {"2026", "2026"},
      {"0000:00:00 00:00:00", ""},
      {"9999:99:99 00:00:00", ""},
      {"2026:02:29 10:00:00", ""},
      {"2026:11:30 24:00:00", ""},
      {"2026:11:01 10:30:00 ", ""},
      {"10:30:00", ""},
      {"taken 2026:11:01", ""},
      {"2026:11:01 10:30:00+15:00", ""},
      {"", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const auto date = TagDateTime::parse(c.text);
    EXPECT_EQ(date ? date->iso8601() : "", c.iso);
    if (date) {
      // The ISO form reads back as the same date.
      EXPECT_EQ(TagDateTime::parse(date->iso8601()), date);
      EXPECT_EQ(date->utc(), c.utc);
    }
  }
}

TEST(FileTag, DatesAndNumbersOfEveryFormTheToolWrites) {
  TemporaryFolder folder;
  const std::string jpeg = madeWith(
      folder, "plain.jpg",
      {"-XMP-photoshop:DateCreated=2026:11", "-XMP-xmp:CreateDate=2026", "-XMP-dc:Title=2026",
       "-EXIF:ISO=64000", "-EXIF:ExposureCompensation=-2/3", "-XMP-dc:Subject=1",
       "-XMP-dc:Subject=2", "-EXIF:FNumber#=1/0", "-EXIF:ExposureTime#=0/0",
       "-XMP-dc:Source=18446744073709551615", "-XMP-dc:Rights=-9223372036854775808"});
  const FileTags file = MetadataReader().read(jpeg);
  ASSERT_FALSE(file.error) << *file.error;
  struct Case {
    std::string group, name;
    std::string date;  // iso8601, empty: no date
    std::optional<TagNumber> number;
  };
  const std::vector<Case> cases = {
      {"XMP:XMP-photoshop", "DateCreated", "2026-11", {}},
      {"XMP:XMP-xmp", "CreateDate", "2026", TagNumber::make(std::int64_t{2026})},
      // A year alone in a text tag is a number, not a date.
      {"XMP:XMP-dc", "Title", "", TagNumber::make(std::int64_t{2026})},
      {"EXIF:ExifIFD", "ISO", "", TagNumber::make(std::int64_t{64000})},
      {"EXIF:ExifIFD", "ExposureCompensation", "", TagNumber::make(-0.6666666667)},
      {"XMP:XMP-dc", "Subject", "", {}},
      {"EXIF:ExifIFD", "FNumber", "", {}},       // inf
      {"EXIF:ExifIFD", "ExposureTime", "", {}},  // undef
      // Integers stay exact past a double's 53 bits.
      {"XMP:XMP-dc", "Source", "", TagNumber::make(std::uint64_t{18446744073709551615u})},
      {"XMP:XMP-dc", "Rights", "", TagNumber::make(std::int64_t{-9223372036854775807 - 1})},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.group + ":" + c.name);
    const FileTag* tag = tagNamed(file, c.group, c.name);
    ASSERT_NE(tag, nullptr);
    const auto date = tag->dateTime();
    EXPECT_EQ(date ? date->iso8601() : "", c.date);
    EXPECT_EQ(tag->number(), c.number);
  }
}

// Each row a branch of the order, of the zone's source or of the GPS time's window.
TEST(FileTags, CaptureTimeByItsOrderWithItsZone) {
  struct Case {
    std::string sample;
    std::string taken;  // time (iso8601)|source|zoneSource, "||" for none
    std::vector<std::string> tags;
  };
  const std::vector<Case> cases = {
      {"plain.jpg",
       "2026-11-01T10:30:00.05-03:30|Composite:SubSecDateTimeOriginal|EXIF:OffsetTimeOriginal",
       {"-EXIF:DateTimeOriginal=2026:11:01 10:30:00", "-EXIF:SubSecTimeOriginal=05",
        "-EXIF:OffsetTimeOriginal=-03:30", "-XMP-exif:DateTimeOriginal=2020:01:01 00:00:00"}},
      {"plain.jpg",
       "2026-11-01T10:30:00|EXIF:DateTimeOriginal|",
       {"-EXIF:DateTimeOriginal=2026:11:01 10:30:00"}},
      {"plain.jpg",
       "2026-11-01T10:30:10+05:45|EXIF:DateTimeOriginal|GPS time",
       {"-EXIF:DateTimeOriginal=2026:11:01 10:30:10", "-GPSDateStamp=2026:11:01",
        "-GPSTimeStamp=04:45:00"}},
      {"plain.jpg",
       "2026-10-31T20:00:00-10:00|EXIF:DateTimeOriginal|GPS time",
       {"-EXIF:DateTimeOriginal=2026:10:31 20:00:00", "-GPSDateStamp=2026:11:01",
        "-GPSTimeStamp=06:00:00"}},
      // East of the date line, the day before in UTC; then one hour too far.
      {"plain.jpg",
       "2026-11-01T11:00:00+14:00|EXIF:DateTimeOriginal|GPS time",
       {"-EXIF:DateTimeOriginal=2026:11:01 11:00:00", "-GPSDateStamp=2026:10:31",
        "-GPSTimeStamp=21:00:00"}},
      {"plain.jpg",
       "2026-11-01T11:00:00|EXIF:DateTimeOriginal|",
       {"-EXIF:DateTimeOriginal=2026:11:01 11:00:00", "-GPSDateStamp=2026:10:31",
        "-GPSTimeStamp=20:00:00"}},
      {"plain.jpg",
       "2026-10-01|XMP:DateCreated|",
       {"-EXIF:CreateDate=2026:11:01 10:30:00", "-XMP-photoshop:DateCreated=2026:10:01"}},
      {"plain.jpg",
       "2026-11-01T10:30:00.7+01:00|EXIF:CreateDate|EXIF:OffsetTimeDigitized",
       {"-EXIF:CreateDate=2026:11:01 10:30:00", "-EXIF:OffsetTimeDigitized=+01:00",
        "-EXIF:SubSecTimeDigitized=7"}},
      {"sample.mp4",
       "2026-11-01T10:30:00+02:00|QuickTime:CreationDate|in the value",
       {"-QuickTime:CreateDate=2026:11:01 08:00:00",
        "-Keys:CreationDate=2026:11:01 10:30:00+02:00"}},
      {"sample.mp4",
       "2026-11-01T08:00:00Z|QuickTime:CreateDate|UTC by the format",
       {"-QuickTime:CreateDate=2026:11:01 08:00:00"}},
      {"plain.jpg", "||", {}},  // a file's own dates are none
  };
  TemporaryFolder folder;
  MetadataReader reader;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.taken);
    const FileTags file = reader.read(madeWith(folder, c.sample, c.tags));
    ASSERT_FALSE(file.error) << *file.error;
    const auto taken = file.captureTime();
    EXPECT_EQ(taken ? taken->time.iso8601() + "|" + taken->source + "|" + taken->zoneSource : "||",
              c.taken);
  }
}

// The tool's composite position (signed from EXIF's references, or from QuickTime's value),
// XMP's own hemispheres, and 0,0.
TEST(FileTags, LocationsSignedByTheirReferences) {
  struct Case {
    std::string sample;
    std::optional<GeoLocation> place;
    std::vector<std::string> tags;
  };
  const std::vector<Case> cases = {
      {"plain.jpg",
       GeoLocation{-33.5, -70.25, -12.5, "Composite"},
       {"-GPSLatitude=33.5", "-GPSLatitudeRef=S", "-GPSLongitude=70.25", "-GPSLongitudeRef=W",
        "-GPSAltitude=12.5", "-GPSAltitudeRef#=1"}},
      {"plain.jpg",
       GeoLocation{48.8584, -2.2945, -35, "XMP"},
       {"-XMP:GPSLatitude=48,51.504N", "-XMP:GPSLongitude=2,17.67W", "-XMP:GPSAltitude=35",
        "-XMP:GPSAltitudeRef#=1"}},
      {"sample.mp4",
       GeoLocation{-33.5, -70.25, -12, "Composite"},
       {"-Keys:GPSCoordinates#=-33.5 -70.25 -12"}},
      {"plain.jpg",
       {},
       {"-GPSLatitude=0", "-GPSLatitudeRef=N", "-GPSLongitude=0", "-GPSLongitudeRef=E"}},
      {"plain.jpg",
       GeoLocation{0, 0, 3, "Composite"},
       {"-GPSLatitude=0", "-GPSLatitudeRef=N", "-GPSLongitude=0", "-GPSLongitudeRef=E",
        "-GPSAltitude=3", "-GPSAltitudeRef#=0"}},
  };
  TemporaryFolder folder;
  MetadataReader reader;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.tags.front());
    const FileTags file = reader.read(madeWith(folder, c.sample, c.tags));
    ASSERT_FALSE(file.error) << *file.error;
    const auto place = file.location();
    ASSERT_EQ(place.has_value(), c.place.has_value());
    if (place) {
      EXPECT_NEAR(place->latitude, c.place->latitude, 1e-9);
      EXPECT_NEAR(place->longitude, c.place->longitude, 1e-9);
      EXPECT_EQ(place->altitude.has_value(), c.place->altitude.has_value());
      EXPECT_NEAR(place->altitude.value_or(0), c.place->altitude.value_or(0), 1e-9);
      EXPECT_EQ(place->source, c.place->source);
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
  std::vector<std::string> arguments = {
      "-q", "-j", "-n", "-G0:1", "-time:all", "-Composite:GPSLatitude", "-Composite:GPSLongitude"};
  for (const auto& entry : fs::directory_iterator(folder.path())) {
    arguments.push_back(entry.path().string());
  }
  std::size_t dates = 0;
  std::size_t places = 0;
  MetadataReader reader;
  for (const auto& told : nlohmann::json::parse(outsideToolOutput("exiftool", arguments))) {
    SCOPED_TRACE(told["SourceFile"]);
    const FileTags file = reader.read(told["SourceFile"]);
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
      EXPECT_TRUE(tag->dateTime());
      dates += tag->dateTime().has_value();
    }
    const auto place = file.location();
    ASSERT_EQ(place.has_value(), told.contains("Composite:GPSLatitude"));
    if (place) {
      EXPECT_NEAR(place->latitude, told["Composite:GPSLatitude"].get<double>(), 1e-12);
      EXPECT_NEAR(place->longitude, told["Composite:GPSLongitude"].get<double>(), 1e-12);
      ++places;
    }
  }
  EXPECT_GE(dates, 20u);
  EXPECT_GE(places, 2u);
}

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
    EXPECT_EQ(modified->value.joined(), lorvane::test::exifToolValue(file, "FileModifyDate"));
  }
  // A run's tool, under a TZ, is as a tool that has none.
  ::setenv("TZ", "Europe/Berlin", 1);
  ETInput input;
  input.addArguments([&](ETInput::ArgumentsMaker& maker) {
    maker.additional = {"-s3", "-FileModifyDate"};
    maker.sourcePath = file;
  });
  const auto run = ETProcess::run(input).decodeOutData().value_or("");
  ::unsetenv("TZ");
  EXPECT_EQ(run, lorvane::test::exifToolValue(file, "FileModifyDate"));
  if (saved) {
    ::setenv("TZ", saved->c_str(), 1);
  } else {
    ::unsetenv("TZ");
  }
}

}  // namespace
