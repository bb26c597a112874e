// Where a write keeps the file as it was, and what a write that fails leaves behind: nothing,
// under every backup policy, with the real ExifTool and with a tool killed part way.

#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "outside_tool.hpp"
#include "test_support.hpp"

namespace {

namespace fs = std::filesystem;
using namespace lorvane;
using lorvane::test::dataFolder;
using lorvane::test::fileContents;
using lorvane::test::TemporaryFolder;
using Outcome = FileWriteResult::Outcome;

std::set<std::string> listing(const fs::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

std::vector<TagAssignment> assignments(const std::vector<std::string>& texts) {
  auto checked = checkAssignments(texts, ETLanguage::english);
  return std::get<std::vector<TagAssignment>>(checked);
}

struct PolicyCase {
  const char* name;
  BackupPolicy policy;
  bool overwritesOriginal;
};

const PolicyCase policies[] = {
    {"beside the file", BackupPolicy::besideFile, false},
    {"none", BackupPolicy::none, false},
    {"none, by the older option", BackupPolicy::besideFile, true},
    {"in a folder", BackupPolicy::folder, false},
};

TEST(Backups, EachPolicyKeepsTheOriginalWhereItSaysAndNowhereElse) {
  for (const auto& c : policies) {
    SCOPED_TRACE(c.name);
    TemporaryFolder folder;
    TemporaryFolder backups;
    const fs::path file = folder.path() / "a.jpg";
    fs::copy_file(dataFolder() / "sample.jpg", file);
    const std::string before = fileContents(file);
    MetadataWriter writer({.overwritesOriginal = c.overwritesOriginal,
                           .backups = c.policy,
                           .backupFolder = backups.path()});
    const std::vector<std::string> files = {file.string()};
    for (const char* title : {"first", "second"}) {
      const auto results = writer.write(assignments({std::string("XMP:Title=") + title}), files);
      ASSERT_EQ(results.size(), 1u);
      EXPECT_EQ(results[0].outcome, Outcome::updated);
    }
    EXPECT_EQ(test::exifToolValue(file, "XMP:Title"), "second");
    if (c.policy == BackupPolicy::besideFile && !c.overwritesOriginal) {
      EXPECT_EQ(listing(folder.path()), (std::set<std::string>{"a.jpg", "a.jpg_original"}));
      EXPECT_EQ(fileContents(file.string() + "_original"), before);
    } else {
      EXPECT_EQ(listing(folder.path()), std::set<std::string>{"a.jpg"});
    }
    if (c.policy == BackupPolicy::folder) {
      // The second write's backup stands beside the first's, which it never overwrites.
      EXPECT_EQ(listing(backups.path()),
                (std::set<std::string>{"a.jpg_original", "a.jpg_original_2"}));
      EXPECT_EQ(fileContents(backups.path() / "a.jpg_original"), before);
      EXPECT_EQ(test::exifToolValue(backups.path() / "a.jpg_original_2", "XMP:Title"), "first");
    } else {
      EXPECT_TRUE(listing(backups.path()).empty());
    }
  }
}

TEST(Backups, AFailingWriteLeavesFileAndFoldersAsTheyWere) {
  for (const auto& c : policies) {
    SCOPED_TRACE(c.name);
    TemporaryFolder folder;
    TemporaryFolder backups;
    // No JPEG at all: the tool refuses to write it.
    const fs::path bad = folder.path() / "bad.jpg";
    std::ofstream(bad) << "no picture here";
    // A file the tool is writing when it is killed: it has made its temporary file and moved
    // the file out of the way, as it does between its two renames.
    const fs::path killed = folder.path() / "killed.jpg";
    fs::copy_file(dataFolder() / "plain.jpg", killed);
    const auto folderBefore = listing(folder.path());
    const std::string badBefore = fileContents(bad);
    const std::string killedBefore = fileContents(killed);
    const MetadataWriter::Options options{.overwritesOriginal = c.overwritesOriginal,
                                          .backups = c.policy,
                                          .backupFolder = backups.path()};
    {
      MetadataWriter writer(options);
      const auto results =
          writer.write(assignments({"XMP:Title=t"}), std::vector<std::string>{bad.string()});
      ASSERT_EQ(results.size(), 1u);
      EXPECT_EQ(results[0].outcome, Outcome::refused);
      EXPECT_FALSE(results[0].original);
    }
    {
      test::FakeTool tool(R"(
        $| = 1;
        my $line = '';
        while (sysread(STDIN, my $chunk, 1) > 0) {
          $line .= $chunk;
          next unless $chunk eq "\n";
          chomp(my $argument = $line);
          $line = '';
          if ($argument =~ m{^/.*killed\.jpg$}) {
            open(my $temporary, '>', $argument . '_exiftool_tmp');
            print $temporary 'half written';
            close $temporary;
            rename($argument, $argument . '_original');
            kill 'KILL', $$;
          }
        }
      )");
      MetadataWriter writer(options);
      const auto results =
          writer.write(assignments({"XMP:Title=t"}), std::vector<std::string>{killed.string()});
      ASSERT_EQ(results.size(), 1u);
      EXPECT_EQ(results[0].outcome, Outcome::failed);
    }
    EXPECT_EQ(listing(folder.path()), folderBefore);
    EXPECT_EQ(fileContents(bad), badBefore);
    EXPECT_EQ(fileContents(killed), killedBefore);
    EXPECT_TRUE(listing(backups.path()).empty());
  }
}

TEST(Backups, ABackupFolderThatIsNoFolderRefusesEveryFileBeforeAnyIsTouched) {
  TemporaryFolder folder;
  const fs::path file = folder.path() / "a.jpg";
  fs::copy_file(dataFolder() / "sample.jpg", file);
  const std::string before = fileContents(file);
  MetadataWriter writer(
      {.backups = BackupPolicy::folder, .backupFolder = folder.path() / "missing"});
  const auto results =
      writer.write(assignments({"XMP:Title=t"}), std::vector<std::string>{file.string()});
  ASSERT_EQ(results.size(), 1u);
  EXPECT_EQ(results[0].outcome, Outcome::refused);
  EXPECT_EQ(fileContents(file), before);
  EXPECT_EQ(listing(folder.path()), std::set<std::string>{"a.jpg"});
}

}  // namespace
