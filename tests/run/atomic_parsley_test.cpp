#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "outside_tool.hpp"
#include "test_support.hpp"

using lorvane::AtomicParsley;
using lorvane::test::exifToolValue;
using lorvane::test::outsideToolOutput;

namespace {

constexpr const char* castPlist =
    R"(<?xml version="1.0" encoding="UTF-8"?>)"
    R"(<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" )"
    R"("http://www.apple.com/DTDs/PropertyList-1.0.dtd">)"
    R"(<plist version="1.0"><dict><key>cast</key><array><dict><key>name</key>)"
    R"(<string>Jane Doe</string></dict></array></dict></plist>)";

// The bytes of the movie's media data, wherever the metadata has put them in the file.
std::string mediaData(const std::filesystem::path& file) {
  const auto offset = std::stoul(exifToolValue(file, "MediaDataOffset"));
  const auto size = std::stoul(exifToolValue(file, "MediaDataSize"));
  return lorvane::test::fileContents(file).substr(offset, size);
}

// The sample clip, copied into a folder and file name with blanks, with an iTunMOVI atom
// whose cast ExifTool shows as XML:Cast.
class AtomicParsleyTest : public ::testing::Test {
protected:
  void SetUp() override {
    std::filesystem::create_directory(folder.path() / "my movies");
    std::filesystem::copy_file(lorvane::test::dataFolder() / "sample.mp4", movie);
    outsideToolOutput("atomicparsley", {movie.string(), "--rDNSatom", castPlist, "name=iTunMOVI",
                                        "domain=com.apple.iTunes", "--overWrite"});
    ASSERT_EQ(exifToolValue(movie, "XML:Cast"), "Jane Doe");
    ASSERT_EQ(exifToolValue(movie, "Title"), "Demo clip");
  }

  lorvane::test::TemporaryFolder folder;
  std::filesystem::path movie = folder.path() / "my movies" / "demo clip.mp4";
  lorvane::test::SettingsGuard settings;
};

}  // namespace

TEST_F(AtomicParsleyTest, RemovesTheAtomAndKeepsEverythingElse) {
  const std::string media = mediaData(movie);
  const std::string duration = exifToolValue(movie, "Duration");

  AtomicParsley::deleteiTunMOVI(movie);

  EXPECT_EQ(exifToolValue(movie, "XML:Cast"), "");
  EXPECT_EQ(exifToolValue(movie, "Title"), "Demo clip");
  EXPECT_EQ(exifToolValue(movie, "Duration"), duration);
  EXPECT_EQ(exifToolValue(movie, "ImageSize"), "64x48");
  EXPECT_EQ(mediaData(movie), media);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(movie.parent_path()),
                          std::filesystem::directory_iterator()),
            1)
      << "the file is changed in place, without a backup";
}

TEST_F(AtomicParsleyTest, MissingToolLeavesTheFileAlone) {
  const std::string before = lorvane::test::fileContents(movie);
  lorvane::ETSettings::shared().setBinariesFolderURL(folder.path() / "no such folder");

  AtomicParsley::deleteiTunMOVI(movie);

  EXPECT_EQ(lorvane::test::fileContents(movie), before);
}
