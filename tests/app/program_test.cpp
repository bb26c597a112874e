// The lorvane program as a user runs it, with the real ExifTool: show, set and tags, their
// refusals and exit statuses; and against what a hostile or careless user gives it: file names
// the tool could read as options or that aren't UTF-8, and signals, down to SIGKILL.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <lorvane/version.hpp>

#include "outside_tool.hpp"
#include "processes.hpp"
#include "test_support.hpp"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using lorvane::test::dataFolder;
using lorvane::test::EnvironmentChanges;
using lorvane::test::exifToolValue;
using lorvane::test::fileContents;
using lorvane::test::outsideToolOutput;
using lorvane::test::TemporaryFolder;

struct ProgramResult {
  int status = -1;  // the exit status; -1 when a signal ended the program
  std::string out;
  std::string err;
};

// The program started in `folder` with these arguments, this process's environment with
// `changes` and `input` as its standard input.
class Program {
public:
  Program(const fs::path& folder, const std::vector<std::string>& arguments,
          const EnvironmentChanges& changes = {}, const fs::path& input = "/dev/null") {
    std::vector<std::string> words{LORVANE_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables;
    for (char** entry = environ; *entry != nullptr; ++entry) {
      const std::string text(*entry);
      if (!changes.contains(text.substr(0, text.find('=')))) {
        variables.push_back(text);
      }
    }
    for (const auto& [name, value] : changes) {
      if (value) {
        variables.push_back(name + "=" + *value);
      }
    }
    std::vector<char*> argv;
    std::vector<char*> envp;
    for (auto& word : words) {
      argv.push_back(word.data());
    }
    for (auto& variable : variables) {
      envp.push_back(variable.data());
    }
    argv.push_back(nullptr);
    envp.push_back(nullptr);
    const std::string out = (output_.path() / "out").string();
    const std::string err = (output_.path() / "err").string();
    pid_ = ::fork();
    if (pid_ == 0) {
      const int in = ::open(input.c_str(), O_RDONLY);
      const int outFile = ::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
      const int errFile = ::open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
      if (::chdir(folder.c_str()) != 0 || ::dup2(in, 0) < 0 || ::dup2(outFile, 1) < 0 ||
          ::dup2(errFile, 2) < 0) {
        ::_exit(126);
      }
      ::execve(argv[0], argv.data(), envp.data());
      ::_exit(127);
    }
  }
  ~Program() {
    if (pid_ > 0) {
      ::kill(pid_, SIGKILL);
      wait();
    }
  }

  pid_t pid() const { return pid_; }
  // Waits for the end, at most a minute (then SIGKILL: a hang fails the test, not the suite).
  ProgramResult wait() {
    int raw = 0;
    if (!waitFor(pid_, std::chrono::seconds(60), raw)) {
      ::kill(pid_, SIGKILL);
      ::waitpid(pid_, &raw, 0);
    }
    pid_ = -1;
    return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, fileContents(output_.path() / "out"),
            fileContents(output_.path() / "err")};
  }

  // Reaps `pid` once it ends within `limit`; false when it is still there then.
  static bool waitFor(pid_t pid, std::chrono::milliseconds limit, int& raw) {
    const auto until = std::chrono::steady_clock::now() + limit;
    // Not ours yet (an orphan on its way to us) counts as still there.
    while (::waitpid(pid, &raw, WNOHANG) != pid) {
      if (std::chrono::steady_clock::now() > until) {
        return false;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
  }

private:
  TemporaryFolder output_;
  pid_t pid_ = -1;
};

// Runs lorvane to its end with these arguments, here.
ProgramResult lorvane(const std::vector<std::string>& arguments,
                      const EnvironmentChanges& changes = {}, const fs::path& input = "/dev/null") {
  return Program(fs::current_path(), arguments, changes, input).wait();
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

  const auto byDefault = lorvane({"show", sample()}, {{"LANGUAGE", ""}, {"LC_ALL", "de_DE.UTF-8"}});
  EXPECT_EQ(byDefault.status, 0) << byDefault.err;
  EXPECT_NE(byDefault.out.find("90° im Uhrzeigersinn  [6]\n"), std::string::npos);
}

// Every tag the tool reports comes back in the JSON with the tool's very text.
TEST(ShowProgram, JsonHoldsEveryTagWithTheToolsExactValues) {
  TemporaryFolder folder;
  const auto file = copyOfSample(folder);
  outsideToolOutput("exiftool", {"-q", "-overwrite_original", "-XMP-dc:Title=5.00000",
                                 "-XMP-dc:Description=0.02414", "-XMP-dc:Subject=a, b",
                                 "-XMP-dc:Subject=c", file.string()});
  const auto tool = nlohmann::json::parse(
      outsideToolOutput("exiftool", {"-j", "-l", "-G0:1", "-lang", "de", file.string()}), nullptr,
      true)[0];
  const auto result = lorvane({"show", "--json", "--lang", "de", file.string()});
  EXPECT_EQ(result.status, 0) << result.err;
  const auto json = nlohmann::json::parse(result.out);
  ASSERT_EQ(json.size(), 1u);
  EXPECT_EQ(json[0]["file"], file.string());
  const auto& tags = json[0]["tags"];
  ASSERT_EQ(tags.size(), tool.size() - 1);  // all but SourceFile
  // The tool's numbers, read by a plain parser, may only differ from our text by notation.
  std::map<std::string, nlohmann::json> shown;
  for (const auto& tag : tags) {
    shown[tag["group"].get<std::string>() + ":" + tag["name"].get<std::string>()] = tag;
    EXPECT_FALSE(tag["title"].get<std::string>().empty());
  }
  for (const auto& [name, entry] : tool.items()) {
    if (name == "SourceFile" || name == "File:System:FileAccessDate") {
      continue;
    }
    ASSERT_TRUE(shown.contains(name)) << name;
    const auto& tag = shown[name];
    const auto& value = entry["val"];
    if (value.is_string()) {
      EXPECT_EQ(tag["value"], value) << name;
    } else if (value.is_number()) {
      EXPECT_EQ(nlohmann::json::parse(tag["value"].get<std::string>()), value) << name;
    }
    if (entry.contains("num") && entry["num"].is_string()) {
      EXPECT_EQ(tag["raw"], entry["num"]) << name;
    }
  }
  EXPECT_EQ(shown["XMP:XMP-dc:Title"]["value"], "5.00000");
  EXPECT_EQ(shown["XMP:XMP-dc:Description"]["value"], "0.02414");
  EXPECT_EQ(shown["XMP:XMP-dc:Subject"]["value"], nlohmann::json::array({"a, b", "c"}));
  EXPECT_EQ(shown["EXIF:IFD0:Orientation"]["raw"], "6");
  EXPECT_EQ(shown["EXIF:IFD0:Orientation"]["stream"], "EXIF");
  EXPECT_TRUE(shown["ExifTool:ExifToolVersion"]["stream"].is_null());
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
  const auto piped = lorvane({"show", "--json", "-", "--name", "upload.jpg"}, {}, sample());
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
  const EnvironmentChanges environment = {{"LORVANE_RESOURCE_DIR", resources.path().string()}};
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
  std::ofstream(folder.path() / "lines") << sample() << "\n\nmissing.jpg\n";
  const auto fromInput =
      lorvane({"show", "--json", "--files-from", "-"}, {}, folder.path() / "lines");
  EXPECT_EQ(fromInput.status, 1);
  const auto json = nlohmann::json::parse(fromInput.out);
  ASSERT_EQ(json.size(), 2u) << fromInput.out;
  EXPECT_EQ(json[1], nlohmann::json::parse(
                         R"({"file": "missing.jpg", "error": "File not found", "tags": []})"));
  EXPECT_EQ(lorvane({"show", "--null", sample()}).status, 2);
  EXPECT_EQ(lorvane({"show", "--json", "--json-lines", sample()}).status, 2);
}

// A folder is never written in place of its files, and never reported as updated.
TEST(SetProgram, AFolderIsNotWritten) {
  TemporaryFolder folder;
  const auto file = copyOfSample(folder);
  const std::string before = fileContents(file);
  const auto result = lorvane({"set", "EXIF:Orientation=1", "--", folder.path().string()});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_NE(result.err.find("not written"), std::string::npos) << result.err;
  EXPECT_EQ(fileContents(file), before);
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

// The children of `parent` that have /dev/zero open, from /proc.
std::vector<pid_t> readersOfZero(pid_t parent) {
  std::vector<pid_t> tools;
  for (const auto& process : lorvane::test::allProcesses()) {
    if (process.parent != parent) {
      continue;
    }
    std::error_code error;
    const fs::path descriptors = "/proc/" + std::to_string(process.pid) + "/fd";
    for (const auto& fd : fs::directory_iterator(descriptors, error)) {
      if (fs::read_symlink(fd.path(), error) == "/dev/zero") {
        tools.push_back(process.pid);
        break;
      }
    }
  }
  return tools;
}

// The tool of `program` that reads /dev/zero, once it does.
pid_t toolOf(const Program& program) {
  for (int attempt = 0; attempt < 3000; ++attempt) {
    if (const auto tools = readersOfZero(program.pid()); tools.size() == 1) {
      return tools.front();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return -1;
}

// Every file of the folder with its size and a hash of its bytes, short enough to read in a
// failure.
std::map<std::string, std::string> snapshot(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::directory_iterator(folder)) {
    const std::string bytes = fileContents(entry.path());
    files[entry.path().filename().string()] = std::to_string(bytes.size()) + " bytes, hash " +
                                              std::to_string(std::hash<std::string>{}(bytes));
  }
  return files;
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

// A name the tool reads as an option would strip, delete, write, run commands or hang; each
// reaches it as a file, and the user reads of it under the name given.
TEST(HostileNames, FileNamesThatLookLikeOptionsAreFilesToEveryCommand) {
  TemporaryFolder folder;
  const std::vector<std::string> dashNames = {
      "-all=", "-overwrite_original", "-@", "-delete_original!", "-o", "-stay_open", "-ver", "-"};
  for (const auto& name : dashNames) {
    fs::copy_file(dataFolder() / "sample.jpg", folder.path() / name);
  }
  // Read as the file of "-@", it would run a command of the user's choosing.
  std::ofstream(folder.path() / "-json") << "-if\nsystem(\"touch pwned\")\n";
  for (const std::string name : {"a.jpg", "b.jpg", "b.jpg_original"}) {
    fs::copy_file(dataFolder() / "sample.jpg", folder.path() / name);
  }
  const auto before = snapshot(folder.path());
  std::vector<std::string> files;
  for (const auto& [name, bytes] : before) {
    files.push_back(name);
  }

  // Each command over all the files, as the shell's "*" gives them: the folder stays as it was.
  using Check = std::function<void(const ProgramResult&)>;
  const std::vector<std::pair<std::vector<std::string>, Check>> commands = {
      {{"show", "--json"},
       [&](const ProgramResult& shown) {
         const auto objects = nlohmann::json::parse(shown.out);
         ASSERT_EQ(objects.size(), files.size()) << shown.out;
         for (std::size_t i = 0; i < files.size(); ++i) {
           EXPECT_EQ(objects[i]["file"], files[i]);
           EXPECT_FALSE(objects[i].contains("error")) << files[i];
         }
       }},
      {{"show", "--raw"},
       [&](const ProgramResult& shown) {
         std::vector<std::string> sources;
         for (const auto& object : nlohmann::json::parse(shown.out)) {
           sources.push_back(object["SourceFile"]);
         }
         EXPECT_EQ(sources, files);
       }},
      // Deleting a tag the pictures lack: the tool changes nothing, and says so per file.
      {{"set", "XMP:Label=", "--"},
       [&](const ProgramResult& written) {
         EXPECT_EQ(written.status, 1);  // the tool writes no text file
         for (const auto& name : files) {
           const std::string said = name == "-json" ? "\n-json: not written: "
                                                    : "\n" + name + ": unchanged";
           EXPECT_TRUE(contains("\n" + written.out + "\n" + written.err, said))
               << name << "\n"
               << written.out << written.err;
         }
       }},
  };
  for (auto [arguments, check] : commands) {
    SCOPED_TRACE(arguments[0] + " " + arguments[1]);
    arguments.insert(arguments.end(), files.begin(), files.end());
    check(Program(folder.path(), arguments).wait());
    EXPECT_EQ(snapshot(folder.path()), before);
  }
}

// ExifTool prints a file's name as its bytes are; a name that isn't UTF-8 must not take the
// tool's messages about it, or about the files next to it, away.
TEST(HostileNames, NamesThatAreNotUTF8KeepTheirMessagesAndShowEscaped) {
  TemporaryFolder folder;
  const std::vector<std::string> missing = {"gone1.jpg", "gone\xFF.jpg", "gone2.jpg"};
  const std::vector<std::string> shownNames = {"gone1.jpg", "gone\\xFF.jpg", "gone2.jpg"};

  auto set = std::vector<std::string>{"set", "XMP:Title=x", "--"};
  set.insert(set.end(), missing.begin(), missing.end());
  const auto written = Program(folder.path(), set).wait();
  EXPECT_EQ(written.status, 1);
  EXPECT_FALSE(contains(written.out, "updated")) << written.out;
  for (const auto& name : shownNames) {
    EXPECT_TRUE(contains(written.err, name + ": not written: File not found\n")) << name << "\n"
                                                                                 << written.err;
  }

  fs::copy_file(dataFolder() / "sample.jpg", folder.path() / "pic\xFE.jpg");
  auto show = std::vector<std::string>{"show", "--jobs", "1", "pic\xFE.jpg"};
  show.insert(show.end(), missing.begin(), missing.end());
  const auto shown = Program(folder.path(), show).wait();
  EXPECT_EQ(shown.status, 1);
  EXPECT_TRUE(contains(shown.out, "== pic\\xFE.jpg\n")) << shown.out;
  EXPECT_TRUE(contains(shown.out, "Demo title")) << shown.out;
  for (const auto& name : shownNames) {
    EXPECT_TRUE(contains(shown.err, "lorvane: " + name + ": File not found\n")) << name << "\n"
                                                                                << shown.err;
  }
}

// ExifTool reads /dev/zero for ever: the program's tool hangs until someone stops it. The
// program ends with 128 + the signal, what it printed whole, its tools gone.
TEST(HostileSignals, ASignalStopsTheToolsAndLeavesWellFormedOutput) {
  TemporaryFolder folder;
  fs::copy_file(dataFolder() / "sample.jpg", folder.path() / "good.jpg");
  const std::vector<std::pair<int, std::string>> cases = {
      {SIGINT, "--json"}, {SIGTERM, "--raw"}, {SIGHUP, "--json-lines"}};
  for (const auto& [number, form] : cases) {
    Program program(folder.path(), {"show", "--jobs", "1", form, "good.jpg", "/dev/zero"});
    const pid_t tool = toolOf(program);
    ASSERT_GT(tool, 0);
    ::kill(program.pid(), number);
    const auto result = program.wait();
    EXPECT_EQ(result.status, 128 + number) << strsignal(number) << "\n" << result.err;
    // Nothing, or whole JSON (a line of it per file): never half of it.
    std::istringstream lines(result.out);
    const bool byLine = form == "--json-lines";
    for (std::string line; byLine && std::getline(lines, line);) {
      EXPECT_TRUE(nlohmann::json::accept(line)) << line;
    }
    if (!byLine && !result.out.empty()) {
      EXPECT_TRUE(nlohmann::json::accept(result.out)) << result.out;
    }
    // The tool and its group are gone with the program.
    EXPECT_NE(::kill(-tool, 0), 0) << strsignal(number);
    if (::kill(-tool, 0) == 0) {
      ::kill(-tool, SIGKILL);
    }
  }
}

// SIGKILL leaves the program no say: the kernel must end its tool.
TEST(HostileSignals, AToolDoesNotOutliveAProgramKilledOutright) {
  TemporaryFolder folder;
  fs::copy_file(dataFolder() / "sample.jpg", folder.path() / "good.jpg");
  // The orphaned tool comes to us, so that we can see it end (a container's init may not reap).
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  Program program(folder.path(), {"show", "--jobs", "1", "good.jpg", "/dev/zero"});
  const pid_t tool = toolOf(program);
  ASSERT_GT(tool, 0);
  ::kill(program.pid(), SIGKILL);
  program.wait();
  int raw = 0;
  const bool ended = Program::waitFor(tool, std::chrono::seconds(10), raw);
  if (!ended) {
    ::kill(-tool, SIGKILL);
    ::waitpid(tool, &raw, 0);
  }
  ::prctl(PR_SET_CHILD_SUBREAPER, 0);
  EXPECT_TRUE(ended) << "the tool was still running";
  EXPECT_TRUE(WIFSIGNALED(raw) && WTERMSIG(raw) == SIGKILL);
}
