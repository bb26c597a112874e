// Many files through one reader, with the real ExifTool: whatever the reader sends the tool at
// once, each file comes back exactly as it does when read alone, in the given order.

#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "outside_tool.hpp"
#include "test_support.hpp"

namespace {

namespace fs = std::filesystem;
using namespace lorvane;
using lorvane::test::copyOfPlainJpeg;
using lorvane::test::TemporaryFolder;

// A file's tags as a text to compare, without the one date that each reading changes, in
// order of their names: a tool lists Composite tags in an order that depends on the files it
// read before.
std::string described(const FileTags& file) {
  std::vector<std::string> lines;
  for (const auto& tag : file.tags) {
    if (tag.name != "FileAccessDate") {
      lines.push_back(tag.group + ":" + tag.name + " [" + tag.title + "] " + tag.value.joined() +
                      " / " + tag.raw.joined() + " " + tag.label + "\n");
    }
  }
  std::sort(lines.begin(), lines.end());
  std::string text = file.file + " | " + file.error.value_or("-") + "\n";
  for (const auto& line : lines) {
    text += line;
  }
  return text;
}

// Runs in `folder` while it lives, for names that only a relative path can give.
class InFolder {
public:
  explicit InFolder(const fs::path& folder) : before_(fs::current_path()) {
    fs::current_path(folder);
  }
  ~InFolder() { fs::current_path(before_); }
  InFolder(const InFolder&) = delete;
  InFolder& operator=(const InFolder&) = delete;

private:
  fs::path before_;
};

TEST(BatchedReads, EachFileComesAsWhenReadAloneInTheGivenOrder) {
  TemporaryFolder folder;
  lorvane::test::programOutput(
      "/usr/bin/python3",
      {LORVANE_SOURCE_DIR "/tools/make-varied-files.py", folder.path().string()});
  std::vector<std::string> varied;
  for (const auto& entry : fs::directory_iterator(folder.path())) {
    varied.push_back(entry.path().filename().string());
  }
  std::sort(varied.begin(), varied.end());
  ASSERT_GE(varied.size(), 8u);
  std::ofstream(folder.path() / "empty.jpg").close();
  const std::string locked = copyOfPlainJpeg(folder.path(), "locked.jpg").filename().string();
  fs::permissions(folder.path() / locked, fs::perms::none);
  copyOfPlainJpeg(folder.path(), "-dash.jpg");
  copyOfPlainJpeg(folder.path(), "not-utf8-\xff.jpg");
  fs::create_directory(folder.path() / "inside");
  copyOfPlainJpeg(folder.path() / "inside", "c.jpg");

  // The odd ones among the others, twice over, so that they fall into the middle of commands
  // of several files (the reader sends 1, 2, 4, ... at once).
  const std::vector<std::string> odd = {"missing.jpg", "empty.jpg",         locked,
                                        "-dash.jpg",   "not-utf8-\xff.jpg", "inside",
                                        varied.front()};
  std::vector<std::string> files;
  for (int round = 0; round < 2; ++round) {
    for (std::size_t i = 0; i < varied.size(); ++i) {
      files.push_back(varied[i]);
      if (i < odd.size()) {
        files.push_back(odd[i]);
      }
    }
  }
  const InFolder here(folder.path());

  MetadataReader alone({.jobs = 1});
  std::vector<std::string> expected;
  for (const auto& file : files) {
    alone.readEach(std::vector{file},
                   [&](FileTags&& read) { expected.push_back(described(read)); });
  }
  for (const std::size_t jobs : {1, 3}) {
    SCOPED_TRACE(jobs);
    MetadataReader reader({.jobs = jobs});
    std::vector<std::string> read;
    std::vector<double> progress;
    reader.readEach(
        files, [&](FileTags&& file) { read.push_back(described(file)); },
        [&](double share) { progress.push_back(share); });
    ASSERT_EQ(read.size(), expected.size());
    for (std::size_t i = 0; i < read.size(); ++i) {
      EXPECT_EQ(read[i], expected[i]);
    }
    ASSERT_EQ(progress.size(), files.size());
    EXPECT_EQ(progress.back(), 1.0);
  }
  // What the comparison stands on: the odd files' own errors, their neighbours' tags.
  EXPECT_NE(expected[1].find("missing.jpg | File not found\n"), std::string::npos);
  EXPECT_NE(expected[2].find("| -\nComposite:"), std::string::npos);
  EXPECT_EQ(expected[3].find("empty.jpg | -\n"), std::string::npos);
}

}  // namespace
