// The lorvane program as a user runs it, with the real ExifTool: show, set and tags, their
// refusals and exit statuses.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>

#include <lorvane/version.hpp>

#include "outside_tool.hpp"
#include "test_support.hpp"

namespace {

namespace fs = std::filesystem;
using lorvane::test::dataFolder;
using lorvane::test::exifToolValue;
using lorvane::test::fileContents;
using lorvane::test::outsideToolOutput;
using lorvane::test::TemporaryFolder;

struct ProgramResult {
  int status = -1;
  std::string out;
  std::string err;
};

std::string quoted(const std::string& text) {
  std::string result = "'";
  for (char c : text) {
    result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return result + "'";
}

// Runs lorvane with these arguments, after `environment` (shell assignments).
ProgramResult lorvane(const std::vector<std::string>& arguments,
                      const std::string& environment = "") {
  TemporaryFolder folder;
  // Appends only: GCC 12 warns falsely (-Wrestrict) on a literal + string at -O3.
  std::string command = environment;
  command.append(" ").append(quoted(LORVANE_PROGRAM));
  for (const auto& word : arguments) {
    command.append(" ").append(quoted(word));
  }
  command.append(" > ").append(quoted((folder.path() / "out").string()));
  command.append(" 2> ").append(quoted((folder.path() / "err").string()));
  const int raw = std::system(command.c_str());
  ProgramResult result;
  result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  result.out = fileContents(folder.path() / "out");
  result.err = fileContents(folder.path() / "err");
  return result;
}

std::string sample() { return (dataFolder() / "sample.jpg").string(); }

fs::path copyOfSample(const TemporaryFolder& folder, const std::string& name = "sample.jpg") {
  const auto copy = folder.path() / name;
  fs::copy_file(sample(), copy);
  return copy;
}

TEST(ShowProgram, PrintsTitlesAndValuesInTheChosenLanguageAndReportsBadFiles) {
  TemporaryFolder folder;
  const auto junk = folder.path() / "junk.jpg";
  std::ofstream(junk) << std::string(64, '\0');
  const auto missing = folder.path() / "missing.jpg";
  const auto english = lorvane({"show", "--lang", "en", sample(), missing.string(), junk.string()});
  EXPECT_EQ(english.status, 1);
  EXPECT_NE(english.err.find(missing.string() + ": File not found"), std::string::npos)
      << english.err;
  EXPECT_NE(english.err.find(junk.string() + ": "), std::string::npos) << english.err;
  EXPECT_NE(english.out.find("== " + sample()), std::string::npos);
  EXPECT_NE(english.out.find("\nEXIF\n"), std::string::npos);
  EXPECT_NE(english.out.find("Camera Model Name"), std::string::npos);
  EXPECT_NE(english.out.find("Rotate 90 CW  [6]\n"), std::string::npos) << english.out;
  EXPECT_NE(english.out.find("1/250  [0.004]\n"), std::string::npos) << english.out;

  const auto german = lorvane({"show", "--lang", "de", sample()});
  EXPECT_EQ(german.status, 0) << german.err;
  EXPECT_NE(german.out.find("Kameramodell"), std::string::npos) << german.out;
  EXPECT_NE(german.out.find("90° im Uhrzeigersinn  [6]\n"), std::string::npos) << german.out;
  EXPECT_NE(german.out.find("\nEXIF\n"), std::string::npos);  // stream names stay

  const auto byDefault = lorvane({"show", sample()}, "LANGUAGE= LC_ALL=de_DE.UTF-8");
  EXPECT_EQ(byDefault.status, 0) << byDefault.err;
  EXPECT_NE(byDefault.out.find("90° im Uhrzeigersinn  [6]\n"), std::string::npos);
}

TEST(SetProgram, WritesByALabelInTheChosenLanguageAndKeepsTheOriginal) {
  TemporaryFolder folder;
  const auto file = copyOfSample(folder);
  const auto other = copyOfSample(folder, "other.jpg");
  const auto missing = folder.path() / "missing.jpg";
  const auto result =
      lorvane({"set", "--lang", "de", "EXIF:Orientation=90° gegen den Uhrzeigersinn",
               "XMP:Subject=Berg", "XMP:Subject=See, Ufer", "EXIF:Artist=", "--", file.string(),
               missing.string(), other.string()});
  EXPECT_EQ(result.status, 1);  // the missing file
  EXPECT_NE(result.err.find(missing.string() + ": not written: File not found"), std::string::npos)
      << result.err;
  for (const auto& written : {file, other}) {
    EXPECT_NE(result.out.find(written.string() + ": updated"), std::string::npos) << result.out;
    EXPECT_EQ(exifToolValue(written, "EXIF:Orientation"), "Rotate 270 CW");
    EXPECT_EQ(outsideToolOutput("exiftool", {"-s3", "-sep", "|", "-XMP:Subject", written.string()}),
              "Berg|See, Ufer\n");
    EXPECT_EQ(exifToolValue(written, "EXIF:Artist"), "");
    EXPECT_EQ(fileContents(written.string() + "_original"), fileContents(sample()));
  }

  // Deleting what isn't there leaves the file as it is; no backup is kept when asked.
  const auto again = lorvane({"set", "--overwrite-original", "EXIF:Artist=", "--", file.string()});
  EXPECT_EQ(again.status, 0) << again.err;
  EXPECT_NE(again.out.find(file.string() + ": unchanged"), std::string::npos) << again.out;
  const auto overwritten =
      lorvane({"set", "--overwrite-original", "EXIF:Orientation=1", "--", other.string()});
  EXPECT_EQ(overwritten.status, 0) << overwritten.err;
  EXPECT_EQ(exifToolValue(other, "EXIF:Orientation"), "Horizontal (normal)");
  EXPECT_EQ(fileContents(other.string() + "_original"), fileContents(sample()));  // the first one
}

TEST(SetProgram, ARefusedAssignmentWritesNothingAndSaysWhy) {
  TemporaryFolder folder;
  const auto file = copyOfSample(folder);
  const std::vector<std::pair<std::string, std::string>> refusals = {
      {"EXIF:NoSuchTag=1", "'EXIF:NoSuchTag' is no tag of the catalogue"},
      {"File:MIMEType=image/png", "'File:MIMEType' is not writable"},
      {"EXIF:Orientation=schief",
       "'schief' is not among its values:\n    1 = Horizontal (normal)\n    2 = Horizontal "
       "gespiegelt"},
      {"EXIF:FNumber=weit", "'weit' is not a number"},
      {"EXIF:ISOSpeed=-1", "outside the range of int32u"},
      {"EXIF:LensInfo=1 2 3 4 5", "takes at most 4 values, not 5"},
      {"EXIF:XResolution=72 72", "takes one value, not 2"},
      {"EXIF:Artist=b", "'EXIF:Artist' takes one value and is named more than once"},
      {"EXIF:ExifIFD:DateTimeOriginal=gestern", "'gestern' is no date"}};
  for (const auto& [assignment, reason] : refusals) {
    const auto result =
        lorvane({"set", "--lang", "de", "EXIF:Artist=a", assignment, "--", file.string()});
    EXPECT_EQ(result.status, 1) << assignment;
    EXPECT_NE(result.err.find(reason), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("nothing was written"), std::string::npos) << result.err;
    EXPECT_EQ(fileContents(file), fileContents(sample())) << assignment;
    EXPECT_FALSE(fs::exists(file.string() + "_original")) << assignment;
  }
}

TEST(ShowProgram, ReadsStandardInputUnderAHintAndSidecarsWithTheirFile) {
  TemporaryFolder folder;
  const auto file = copyOfSample(folder, "photo.jpg");
  outsideToolOutput("exiftool", {"-q", "-o", file.string() + ".xmp", "-XMP-dc:Title=Sidecar"});
  const auto piped =
      lorvane({"show", "--json", "-", "--name", "upload.jpg"}, "cat " + quoted(sample()) + " |");
  EXPECT_EQ(piped.status, 0) << piped.err;
  const auto json = nlohmann::json::parse(piped.out);
  EXPECT_EQ(json[0]["file"], "upload.jpg");
  EXPECT_FALSE(json[0]["tags"].empty());

  const auto merged = lorvane({"show", "--sidecars", file.string()});
  EXPECT_EQ(merged.status, 0) << merged.err;
  EXPECT_NE(merged.out.find("Title [photo.jpg.xmp]"), std::string::npos) << merged.out;
  EXPECT_EQ(lorvane({"show", "--name", "x.jpg", sample()}).status, 2);
}

TEST(SetProgram, WritesTheSidecarOrKeepsBackupsInAFolder) {
  TemporaryFolder folder;
  TemporaryFolder backups;
  const auto file = copyOfSample(folder, "photo.jpg");
  const auto toSidecar =
      lorvane({"set", "--to", "sidecar", "EXIF:Artist=Someone", "--", file.string()});
  EXPECT_EQ(toSidecar.status, 0) << toSidecar.err;
  EXPECT_NE(toSidecar.out.find("sidecar " + file.string() + ".xmp: created"), std::string::npos)
      << toSidecar.out;
  EXPECT_EQ(fileContents(file), fileContents(sample()));
  EXPECT_EQ(exifToolValue(file.string() + ".xmp", "XMP-tiff:Artist"), "Someone");

  const auto kept = lorvane(
      {"set", "--backup", backups.path().string(), "EXIF:Artist=Other", "--", file.string()});
  EXPECT_EQ(kept.status, 0) << kept.err;
  EXPECT_EQ(fileContents(backups.path() / "photo.jpg_original"), fileContents(sample()));
  EXPECT_FALSE(fs::exists(file.string() + "_original"));
  EXPECT_EQ(lorvane({"set", "--to", "elsewhere", "EXIF:Artist=x", "--", file.string()}).status, 2);
}

TEST(TagsProgram, FindsTagsByNameWildcardAndTitle) {
  const auto one = lorvane({"tags", "--lang", "de", "EXIF:Orientation"});
  EXPECT_EQ(one.status, 0) << one.err;
  EXPECT_NE(one.out.find("EXIF:Orientation  int16u      0  writable  Ausrichtung\n"),
            std::string::npos)
      << one.out;
  EXPECT_NE(one.out.find("    6  90° im Uhrzeigersinn\n"), std::string::npos) << one.out;

  const auto byTitle = lorvane({"tags", "--lang", "de", "--json", "Ausrichtung"});
  EXPECT_EQ(byTitle.status, 0);
  const auto json = nlohmann::json::parse(byTitle.out);
  EXPECT_TRUE(std::any_of(json.begin(), json.end(),
                          [](const auto& tag) { return tag["name"] == "EXIF:Orientation"; }));

  const auto lenses = lorvane({"tags", "Canon:*Lens*"});
  EXPECT_EQ(lenses.status, 0);
  EXPECT_NE(lenses.out.find("Canon:LensType"), std::string::npos);
  EXPECT_EQ(lenses.out.find("Canon EF 50mm f/1.8"), std::string::npos);  // choices only when asked
  EXPECT_NE(lorvane({"tags", "--choices", "Canon:*Lens*"}).out.find("Canon EF 50mm f/1.8"),
            std::string::npos);

  EXPECT_EQ(lorvane({"tags", "EXIF:NoSuchTag"}).status, 1);
}

TEST(Program, NoExifToolSaysWhereItLookedAndHowToSetTheFolder) {
  TemporaryFolder resources;
  const std::string environment = "LORVANE_RESOURCE_DIR=" + quoted(resources.path().string());
  for (const auto& arguments : std::vector<std::vector<std::string>>{
           {"show", sample()}, {"set", "EXIF:Artist=x", "--", sample()}, {"--version"}}) {
    const auto result = lorvane(arguments, environment);
    EXPECT_EQ(result.status, 3);
    EXPECT_NE(result.err.find((resources.path() / "binaries").string()), std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find("LORVANE_RESOURCE_DIR"), std::string::npos);
    EXPECT_TRUE(result.out.empty());
  }
}

TEST(Program, UsageMistakesExitWithStatusTwo) {
  for (const auto& arguments :
       std::vector<std::vector<std::string>>{{},
                                             {"bogus"},
                                             {"show"},
                                             {"show", "--lang", "klingon", sample()},
                                             {"show", "--bogus", sample()},
                                             {"set", "EXIF:Artist=x", sample()},
                                             {"set", "--", sample()},
                                             {"show", "--jobs", "0", sample()},
                                             {"tags"}}) {
    EXPECT_EQ(lorvane(arguments).status, 2) << (arguments.empty() ? "" : arguments[0]);
  }
  EXPECT_EQ(lorvane({"--help"}).status, 0);  // its statuses: program_texts_test.cpp
}

TEST(Program, VersionNamesLorvaneAndTheExifToolItRuns) {
  const auto result = lorvane({"--version"});
  EXPECT_EQ(result.status, 0) << result.err;
  std::string tool = outsideToolOutput("exiftool", {"-ver"});
  tool.erase(tool.find_last_not_of('\n') + 1);
  EXPECT_TRUE(result.out.starts_with("lorvane " LORVANE_VERSION_STRING "\nExifTool " + tool + " ("))
      << result.out;
}

// Names from a list (NUL-ended, or lines on standard input), one JSON object per line, and a
// file the tool hangs on that gets its own error while the others are shown.
TEST(ShowProgram, FilesFromAListAsJsonLinesWithATimeLimitPerFile) {
  TemporaryFolder folder;
  const auto lineFeed = copyOfSample(folder, "line\nbreak.jpg");
  const auto list = folder.path() / "list";
  {
    std::ofstream out(list, std::ios::binary);
    for (const std::string& name : {sample(), std::string("/dev/zero"), lineFeed.string()}) {
      out << name << '\0';
    }
  }
  const auto result =
      lorvane({"show", "--json-lines", "--timeout", "5", "--files-from", list.string(), "--null"});
  EXPECT_EQ(result.status, 1);
  std::vector<nlohmann::json> lines;
  std::istringstream in(result.out);
  for (std::string line; std::getline(in, line);) {
    lines.push_back(nlohmann::json::parse(line));
  }
  ASSERT_EQ(lines.size(), 3u) << result.out;
  EXPECT_EQ(lines[0]["file"], sample());
  EXPECT_FALSE(lines[0].contains("error"));
  EXPECT_EQ(lines[1]["file"], "/dev/zero");
  EXPECT_NE(lines[1]["error"].get<std::string>().find("did not finish"), std::string::npos);
  EXPECT_EQ(lines[2]["file"], lineFeed.string());
  EXPECT_FALSE(lines[2]["tags"].empty());

  // Lines on standard input; an empty one names no file.
  const auto fromInput = lorvane({"show", "--json", "--files-from", "-"},
                                 "printf '%s\\n\\n%s\\n' " + quoted(sample()) + " missing.jpg |");
  EXPECT_EQ(fromInput.status, 1);
  const auto json = nlohmann::json::parse(fromInput.out);
  ASSERT_EQ(json.size(), 2u) << fromInput.out;
  EXPECT_EQ(json[1], nlohmann::json::parse(
                         R"({"file": "missing.jpg", "error": "File not found", "tags": []})"));
  EXPECT_EQ(lorvane({"show", "--null", sample()}).status, 2);
  EXPECT_EQ(lorvane({"show", "--json", "--json-lines", sample()}).status, 2);
}

TEST(SetProgram, ACaptureTimeAndAPlaceAreWrittenAndShown) {
  TemporaryFolder folder;
  const std::string file = lorvane::test::copyOfPlainJpeg(folder.path(), "a.jpg").string();
  const std::string before = fileContents(file);
  for (const auto& [option, value] :
       std::vector<std::pair<std::string, std::string>>{{"--capture-time", "soon"},
                                                        {"--capture-time", "2026-11-31"},
                                                        {"--location", "48.8,east"},
                                                        {"--location", "91,0"}}) {
    const auto refused = lorvane({"set", option, value, "--", file});
    EXPECT_EQ(refused.status, 1) << value;
    EXPECT_NE(refused.err.find("nothing was written"), std::string::npos) << refused.err;
    EXPECT_EQ(fileContents(file), before);
  }
  const auto written =
      lorvane({"set", "--overwrite-original", "--capture-time", "2026-11-01T10:30:00.5-03:00",
               "--location", "-33.5,-70.25,-12", "--", file});
  EXPECT_EQ(written.status, 0) << written.err;
  const auto shown = lorvane({"show", "--json-lines", file});
  const auto json = nlohmann::json::parse(shown.out);
  EXPECT_EQ(json["captureTime"], nlohmann::json::parse(R"({"time": "2026-11-01T10:30:00.5-03:00",
      "utc": "2026-11-01T13:30:00.5Z", "source": "Composite:SubSecDateTimeOriginal",
      "zoneSource": "EXIF:OffsetTimeOriginal"})"));
  EXPECT_EQ(json["location"], nlohmann::json::parse(
                                  R"({"latitude": -33.5, "longitude": -70.25, "altitude": -12.0,
                                      "source": "Composite"})"));
  const auto table = lorvane({"show", "--lang", "de", file});
  EXPECT_NE(table.out.find("\nErstellungsdatum/-uhrzeit: 2026-11-01T10:30:00.5-03:00   "),
            std::string::npos)
      << table.out;
}

TEST(ExtractProgram, WritesEachFilesPictureAsTheToolExtractsItAndGoesOnPastAFileWithout) {
  TemporaryFolder folder;
  const fs::path plain = dataFolder() / "plain.jpg";
  const std::string withThumbnail = (folder.path() / "with.jpg").string();
  fs::copy_file(plain, withThumbnail);
  outsideToolOutput("exiftool", {"-q", "-overwrite_original", "-ThumbnailImage<=" + plain.string(),
                                 withThumbnail});
  const fs::path out = folder.path() / "out";
  const auto result = lorvane(
      {"extract", "--tag", "ThumbnailImage", "--out", out.string(), plain.string(), withThumbnail});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("plain.jpg: no ThumbnailImage"), std::string::npos) << result.err;
  EXPECT_EQ(fileContents(out / "with_ThumbnailImage.jpg"),
            outsideToolOutput("exiftool", {"-b", "-ThumbnailImage", withThumbnail}));
  EXPECT_FALSE(fs::exists(out / "plain_ThumbnailImage.jpg"));
  const auto preview = lorvane({"extract", "--out", out.string(), withThumbnail});
  EXPECT_EQ(preview.status, 0) << preview.err;
  EXPECT_EQ(fileContents(out / "with_ThumbnailImage.jpg"), fileContents(plain));
}

}  // namespace
