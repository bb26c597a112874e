// Pictures and other binary tags inside files, compared byte for byte with "exiftool -b".

#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

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

std::string asText(const std::optional<std::vector<std::byte>>& bytes) {
  return bytes ? std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size())
               : std::string();
}

TEST(MetadataReader, BinaryTagsAndTheLargestPreviewAsTheToolExtractsThem) {
  TemporaryFolder folder;
  const std::string plain = (dataFolder() / "plain.jpg").string();
  const auto made = [&](const std::string& sample, const std::string& name,
                        std::vector<std::string> arguments) {
    const fs::path copy = folder.path() / name;
    fs::copy_file(dataFolder() / sample, copy);
    arguments.insert(arguments.end(), {"-q", "-q", "-overwrite_original", copy.string()});
    outsideToolOutput("exiftool", arguments);
    return copy.string();
  };
  const std::string thumbnail = made("plain.jpg", "thumbnail.jpg", {"-ThumbnailImage<=" + plain});
  const std::string both = made("plain.jpg", "both.jpg",
                                {"-ThumbnailImage<=" + plain,
                                 "-PhotoshopThumbnail<=" + (dataFolder() / "sample.jpg").string()});
  const std::string movie = made("sample.mp4", "cover.mp4", {"-CoverArt<=" + plain});

  struct Case {
    std::string file, tag, largestTag;  // largestTag empty: no preview
  };
  const std::vector<Case> cases = {
      {thumbnail, "ThumbnailImage", "ThumbnailImage"},
      {thumbnail, "EXIF:ThumbnailImage", "ThumbnailImage"},
      {both, "PhotoshopThumbnail", "PhotoshopThumbnail"},
      {both, "ThumbnailImage", "PhotoshopThumbnail"},
      {movie, "CoverArt", "CoverArt"},
      {plain, "ThumbnailImage", ""},
      {(folder.path() / "missing.jpg").string(), "ThumbnailImage", ""},
  };
  MetadataReader reader;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file + " " + c.tag);
    const auto bytes = reader.readBinary(c.file, c.tag);
    const std::string expected = outsideToolOutput("exiftool", {"-b", "-" + c.tag, c.file});
    EXPECT_EQ(bytes.has_value(), !expected.empty());
    EXPECT_EQ(asText(bytes), expected);
    const auto preview = reader.readLargestPreview(c.file);
    EXPECT_EQ(preview ? preview->tag : "", c.largestTag);
    if (preview) {
      EXPECT_EQ(asText(preview->bytes),
                outsideToolOutput("exiftool", {"-b", "-" + c.largestTag, c.file}));
    }
  }
}

}  // namespace
