// The reading and writing layer through its public API, with the real ExifTool: which files
// come back, in which order, with which errors, and what a write did to each file.

#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "processes.hpp"
#include "test_support.hpp"

namespace {

namespace fs = std::filesystem;
using namespace lorvane;
using lorvane::test::copyOfPlainJpeg;
using lorvane::test::dataFolder;
using lorvane::test::fileContents;
using lorvane::test::TemporaryFolder;

const FileTag* tagNamed(const FileTags& file, std::string_view group, std::string_view name) {
  for (const auto& tag : file.tags) {
    if (tag.group == group && tag.name == name) {
      return &tag;
    }
  }
  return nullptr;
}

TEST(MetadataReader, ReadsFilesFoldersAndOddNamesEachWithItsOwnError) {
  TemporaryFolder folder;
  const fs::path inside = folder.path() / "inside";
  fs::create_directory(inside);
  fs::copy_file(dataFolder() / "sample.jpg", inside / "a.jpg");
  copyOfPlainJpeg(inside, "b.jpg");
  const std::string lineFeed = copyOfPlainJpeg(folder.path(), "line\nfeed.jpg").string();
  const std::string missing = (folder.path() / "missing.jpg").string();
  const std::string sample = (dataFolder() / "sample.jpg").string();

  MetadataReader reader({.language = ETLanguage::german, .jobs = 2});
  std::vector<FileTags> read;
  const std::vector<std::string> files = {sample, missing, inside.string(), lineFeed};
  std::vector<double> progress;
  reader.readEach(
      files, [&](FileTags&& file) { read.push_back(std::move(file)); },
      [&](double share) { progress.push_back(share); });

  ASSERT_EQ(read.size(), 5u);
  EXPECT_EQ(read[0].file, sample);
  EXPECT_FALSE(read[0].error);
  // Titles and labels come from the reader's language, not the process's.
  const FileTag* orientation = tagNamed(read[0], "EXIF:IFD0", "Orientation");
  ASSERT_NE(orientation, nullptr);
  ASSERT_NE(orientation->item, nullptr);
  EXPECT_EQ(orientation->title, "Ausrichtung");
  EXPECT_EQ(orientation->value.joined(), "90° im Uhrzeigersinn");
  EXPECT_EQ(orientation->raw.joined(), "6");

  EXPECT_EQ(read[1].file, missing);
  EXPECT_EQ(read[1].error, "File not found");
  EXPECT_TRUE(read[1].tags.empty());
  // A folder gives its files by their paths, in the tool's order.
  std::vector<std::string> folderFiles = {read[2].file, read[3].file};
  std::sort(folderFiles.begin(), folderFiles.end());
  EXPECT_EQ(folderFiles,
            (std::vector<std::string>{(inside / "a.jpg").string(), (inside / "b.jpg").string()}));
  EXPECT_FALSE(read[2].error);
  EXPECT_EQ(read[4].file, lineFeed);
  EXPECT_FALSE(read[4].error);
  EXPECT_NE(tagNamed(read[4], "File:System", "FileName"), nullptr);
  EXPECT_EQ(progress.back(), 1.0);

  // A missing file whose name has a line feed: the tool's message, cut in two, is one error.
  const FileTags missingLineFeed = reader.read(folder.path().string() + "/gone\nnow.jpg");
  EXPECT_EQ(missingLineFeed.error, "File not found");
  EXPECT_TRUE(reader.read(inside.string()).error);
  // A folder whose files all lie deeper down gives itself, with an error that says why.
  std::vector<FileTags> fromOuter;
  const std::vector<std::string> outer = {(folder.path() / "outer").string()};
  fs::create_directories(outer.front() + "/deeper");
  copyOfPlainJpeg(outer.front() + "/deeper", "c.jpg");
  reader.readEach(outer, [&](FileTags&& file) { fromOuter.push_back(std::move(file)); });
  ASSERT_EQ(fromOuter.size(), 1u);
  EXPECT_EQ(fromOuter[0].file, outer.front());
  EXPECT_EQ(fromOuter[0].error,
            "a folder without a file ExifTool reads (folders in it are not searched)");
}

TEST(MetadataReader, FiftyFilesOnThreeToolsComeInTheGivenOrder) {
  TemporaryFolder folder;
  std::vector<std::string> files;
  for (int i = 0; i < 50; ++i) {
    files.push_back(copyOfPlainJpeg(folder.path(), "f" + std::to_string(i) + ".jpg").string());
  }
  MetadataReader reader({.jobs = 3});
  std::vector<std::string> names;
  reader.readEach(files, [&](FileTags&& file) {
    EXPECT_FALSE(file.error) << file.file;
    const FileTag* name = tagNamed(file, "File:System", "FileName");
    // Each file's tags are its own, not a neighbour's.
    EXPECT_TRUE(name != nullptr && fs::path(file.file).filename() == name->value.joined())
        << file.file;
    names.push_back(file.file);
  });
  EXPECT_EQ(names, files);
}

TEST(MetadataReader, ACancelPartWayKeepsWhatWasDeliveredAndLeavesNoTool) {
  TemporaryFolder folder;
  std::vector<std::string> files;
  for (int i = 0; i < 40; ++i) {
    files.push_back(copyOfPlainJpeg(folder.path(), "f" + std::to_string(i) + ".jpg").string());
  }
  MetadataReader reader({.jobs = 2});
  std::vector<std::string> names;
  reader.readEach(files, [&](FileTags&& file) {
    names.push_back(file.file);
    if (names.size() == 5) {
      // From another thread, as a signal handler's helper or a button would.
      std::thread([&reader] { reader.cancel(); }).join();
    }
  });
  ASSERT_GE(names.size(), 5u);
  EXPECT_LT(names.size(), files.size());
  EXPECT_EQ(names, std::vector<std::string>(files.begin(), files.begin() + names.size()));
  for (const auto& process : lorvane::test::allProcesses()) {
    EXPECT_NE(process.parent, ::getpid()) << "a tool left behind, or its zombie";
  }
  // A cancelled reader reads nothing more.
  std::size_t more = 0;
  reader.readEach(files, [&](FileTags&&) { ++more; });
  EXPECT_EQ(more, 0u);
}

// The limit leaves a loaded machine time to start Perl and read the sample.
TEST(MetadataReader, AFileTheToolHangsOnGetsItsOwnErrorAndTheOthersGoOn) {
  const std::string sample = (dataFolder() / "sample.jpg").string();
  MetadataReader reader({.jobs = 1, .timeout = std::chrono::milliseconds(6000)});
  std::vector<FileTags> read;
  const std::vector<std::string> files = {sample, "/dev/zero", sample};
  reader.readEach(files, [&](FileTags&& file) { read.push_back(std::move(file)); });
  ASSERT_EQ(read.size(), 3u);
  EXPECT_FALSE(read[0].error);
  ASSERT_TRUE(read[1].error);
  EXPECT_NE(read[1].error->find("did not finish"), std::string::npos) << *read[1].error;
  EXPECT_FALSE(read[2].error);
  EXPECT_FALSE(read[2].tags.empty());
}

TEST(MetadataWriter, ARefusedAssignmentNeverReachesTheFileAndAGoodOneIsWrittenAndSaidSo) {
  TemporaryFolder folder;
  const fs::path file = folder.path() / "a.jpg";
  fs::copy_file(dataFolder() / "sample.jpg", file);
  const std::string before = fileContents(file);

  // One above the type's maximum (the program's test has one below the minimum).
  const std::vector<std::string> bad = {"EXIF:Orientation=sideways", "EXIF:FNumber=abc",
                                        "EXIF:Nothing=1", "EXIF:ExposureTime=1 2",
                                        "EXIF:ISOSpeed=4294967296"};
  const auto refused = checkAssignments(bad, ETLanguage::english);
  ASSERT_TRUE(std::holds_alternative<std::vector<AssignmentRefusal>>(refused));
  using Reason = AssignmentRefusal::Reason;
  std::vector<Reason> reasons;
  for (const auto& refusal : std::get<std::vector<AssignmentRefusal>>(refused)) {
    reasons.push_back(refusal.reason);
  }
  EXPECT_EQ(reasons,
            (std::vector<Reason>{Reason::notAChoice, Reason::notANumber, Reason::unknownTag,
                                 Reason::tooManyValues, Reason::outOfRange}));
  EXPECT_EQ(fileContents(file), before);

  // A label in the language asked for, whatever the process's own.
  const std::vector<std::string> good = {"EXIF:Orientation=90° gegen den Uhrzeigersinn"};
  const auto checked = checkAssignments(good, ETLanguage::german);
  ASSERT_TRUE(std::holds_alternative<std::vector<TagAssignment>>(checked));
  const auto& assignments = std::get<std::vector<TagAssignment>>(checked);
  EXPECT_EQ(assignments.front().toolArguments(),
            (std::vector<std::string>{"-EXIF:Orientation#=8"}));

  // An older, unrelated FILE_original beside the second file; the third is a folder; the tool
  // refuses the fourth, whose temporary file is in the way.
  const fs::path second = folder.path() / "b.jpg";
  fs::copy_file(file, second);
  std::ofstream(second.string() + "_original") << "older";
  const fs::path blocked = folder.path() / "c.jpg";
  fs::copy_file(file, blocked);
  std::ofstream(blocked.string() + "_exiftool_tmp") << "in the way";
  const std::string blockedBefore = fileContents(blocked);
  const std::vector<std::string> files = {file.string(), second.string(), folder.path().string(),
                                          blocked.string()};
  MetadataWriter writer;
  const auto results = writer.write(assignments, files);
  ASSERT_EQ(results.size(), 4u);
  using Outcome = FileWriteResult::Outcome;
  EXPECT_EQ(results[0].outcome, Outcome::updated);
  EXPECT_EQ(results[0].original, file.string() + "_original");
  EXPECT_EQ(fileContents(file.string() + "_original"), before);
  EXPECT_EQ(results[1].outcome, Outcome::updated);
  EXPECT_FALSE(results[1].original);
  EXPECT_EQ(fileContents(second.string() + "_original"), "older");
  EXPECT_EQ(results[2].outcome, Outcome::refused);
  EXPECT_EQ(results[3].outcome, Outcome::refused);
  EXPECT_EQ(fileContents(blocked), blockedBefore);

  MetadataReader reader;
  const FileTags written = reader.read(file.string());
  const FileTag* orientation = tagNamed(written, "EXIF:IFD0", "Orientation");
  ASSERT_NE(orientation, nullptr);
  EXPECT_EQ(orientation->raw.joined(), "8");
  // Written again: the tool says the file already is as asked, or writes it again; never more.
  EXPECT_NE(writer.write(assignments, std::vector<std::string>{file.string()})[0].outcome,
            Outcome::failed);
}

}  // namespace
