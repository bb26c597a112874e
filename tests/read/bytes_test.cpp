// Reading bytes that have no file of their own: the same tags as the file they came from, and
// no file or descriptor left behind, whether the read ends well, is cancelled or its tool dies.

#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "outside_tool.hpp"
#include "platform/private_file.hpp"
#include "test_support.hpp"

namespace {

namespace fs = std::filesystem;
using namespace lorvane;
using lorvane::test::dataFolder;
using lorvane::test::fileContents;
using lorvane::test::TemporaryFolder;

std::vector<std::byte> bytesOf(const fs::path& file) {
  const std::string text = fileContents(file);
  const auto* data = reinterpret_cast<const std::byte*>(text.data());
  return {data, data + text.size()};
}

// The files this process's private files would be, by their extension.
std::vector<std::string> privateFiles(const std::string& extension) {
  std::vector<std::string> found;
  for (const auto& entry : fs::directory_iterator(platform::PrivateFile::folder())) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with("lorvane-") && name.ends_with("." + extension)) {
      found.push_back(name);
    }
  }
  return found;
}

std::vector<std::string> openFilesNamed(const std::string& extension) {
  std::vector<std::string> found;
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code error;
    const std::string target = fs::read_symlink(entry.path(), error).string();
    if (target.ends_with("." + extension) || target.ends_with("." + extension + " (deleted)")) {
      found.push_back(target);
    }
  }
  return found;
}

// "File:System" tags other than the name and size describe where a file lies, not its data.
std::vector<std::string> dataTags(const FileTags& file) {
  std::vector<std::string> tags;
  for (const auto& tag : file.tags) {
    if (tag.group != "File:System" || tag.name == "FileSize") {
      tags.push_back(tag.group + ":" + tag.name + "=" + tag.value.joined() + "|" +
                     tag.raw.joined());
    }
  }
  return tags;
}

TEST(ReadBytes, GivesTheTagsOfTheSameFileOnDisk) {
  TemporaryFolder folder;
  const fs::path xmp = folder.path() / "made.xmp";
  test::outsideToolOutput("exiftool", {"-q", "-o", xmp.string(), "-XMP-dc:Title=From bytes"});
  const std::vector<fs::path> files = {dataFolder() / "sample.jpg", dataFolder() / "sample.mp4",
                                       dataFolder() / "plain.jpg", xmp};
  MetadataReader reader({.jobs = 1});
  for (const auto& file : files) {
    SCOPED_TRACE(file.string());
    const FileTags onDisk = reader.read(file.string());
    const std::string hint = "upload/" + file.filename().string();
    const FileTags fromBytes = reader.readBytes(bytesOf(file), hint);
    EXPECT_EQ(fromBytes.file, hint);
    EXPECT_FALSE(fromBytes.error);
    EXPECT_FALSE(onDisk.tags.empty());
    EXPECT_EQ(dataTags(fromBytes), dataTags(onDisk));
  }
  // The hint's extension tells the tool what the bytes alone may not; no bytes are no file.
  EXPECT_TRUE(reader.readBytes({}, "empty.jpg").error);
  EXPECT_TRUE(privateFiles("jpg").empty());
}

TEST(ReadBytes, TheFileIsPrivateAndGoneOnceTheObjectIs) {
  const std::vector<std::byte> bytes(100, std::byte{7});
  std::string path;
  {
    const platform::PrivateFile file(bytes, "probe");
    path = file.path();
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    EXPECT_EQ(status.st_size, 100);
    EXPECT_EQ(fs::path(path).parent_path(),
              fs::is_directory("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path());
    EXPECT_TRUE(path.ends_with(".probe"));
    EXPECT_TRUE(openFilesNamed("probe").empty());  // nothing open for a child to inherit
  }
  EXPECT_FALSE(fs::exists(path));
}

TEST(ReadBytes, ACancelOrAKilledToolLeavesNoFileBehind) {
  const std::vector<std::byte> bytes = bytesOf(dataFolder() / "sample.jpg");
  {
    // A tool that hangs over every command: the read waits until it is cancelled.
    test::FakeTool tool(R"(sleep 1000 while sysread(STDIN, my $chunk, 65536) > 0;)");
    MetadataReader reader({.jobs = 1});
    std::thread canceller([&] {
      while (privateFiles("cancelled").empty()) {
        std::this_thread::yield();
      }
      reader.cancel();
    });
    const FileTags read = reader.readBytes(bytes, "a.cancelled");
    canceller.join();
    EXPECT_EQ(read.error, "cancelled");
  }
  {
    test::FakeTool tool(R"(sysread(STDIN, my $chunk, 65536); kill 'KILL', $$;)");
    MetadataReader reader({.jobs = 1});
    const FileTags read = reader.readBytes(bytes, "a.killed");
    EXPECT_TRUE(read.error);
  }
  for (const char* extension : {"cancelled", "killed"}) {
    EXPECT_TRUE(privateFiles(extension).empty()) << extension;
    EXPECT_TRUE(openFilesNamed(extension).empty()) << extension;
  }
}

}  // namespace
