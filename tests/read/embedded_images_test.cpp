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
  const auto made = [&](const std::string& sample, const std::string& name,
                        const std::vector<std::string>& tags) {
    const fs::path copy = folder.path() / name;
    fs::copy_file(dataFolder() / sample, copy);
    std::vector<std::string> arguments = {"-q", "-q", "-overwrite_original"};
    arguments.insert(arguments.end(), tags.begin(), tags.end());
    arguments.push_back(copy.string());
    outsideToolOutput("exiftool", arguments);
    return copy.string();
  };
  const std::string plain = (dataFolder() / "plain.jpg").string();
  const std::string sample = (dataFolder() / "sample.jpg").string();
  const std::string png = (folder.path() / "cover.png").string();
  // A PNG the tool writes as cover art: the demo JPEG's own pixels aren't needed, any PNG is.
  lorvane::test::programOutput("/usr/bin/python3",
                               {"-c",
                                "import struct,sys,zlib\n"
                                "def c(k,b): return struct.pack('>I',len(b))+k+b+"
                                "struct.pack('>I',zlib.crc32(k+b))\n"
                                "open(sys.argv[1],'wb').write(b'\\x89PNG\\r\\n\\x1a\\n'+"
                                "c(b'IHDR',struct.pack('>IIBBBBB',2,2,8,2,0,0,0))+"
                                "c(b'IDAT',zlib.compress(b'\\0'*14))+c(b'IEND',b''))",
                                png});
  const std::string thumbnail = made("plain.jpg", "thumbnail.jpg", {"-ThumbnailImage<=" + plain});
  const std::string both = made("plain.jpg", "both.jpg",
                                {"-ThumbnailImage<=" + plain, "-PhotoshopThumbnail<=" + sample});
  const std::string movie = made("sample.mp4", "cover.mp4", {"-CoverArt<=" + png});

  struct Case {
    std::string file;
    std::string tag;
    bool found;
    std::string largestTag;  // empty: no preview
  };
  const std::vector<Case> cases = {
      {thumbnail, "ThumbnailImage", true, "ThumbnailImage"},
      {thumbnail, "EXIF:ThumbnailImage", true, "ThumbnailImage"},
      {both, "PhotoshopThumbnail", true, "PhotoshopThumbnail"},
      {both, "ThumbnailImage", true, "PhotoshopThumbnail"},
      {movie, "CoverArt", true, "CoverArt"},
      {plain, "ThumbnailImage", false, ""},
      {(folder.path() / "missing.jpg").string(), "ThumbnailImage", false, ""},
  };
  MetadataReader reader;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file + " " + c.tag);
    const auto bytes = reader.readBinary(c.file, c.tag);
    EXPECT_EQ(bytes.has_value(), c.found);
    EXPECT_EQ(asText(bytes), outsideToolOutput("exiftool", {"-b", "-" + c.tag, c.file}));
    const auto preview = reader.readLargestPreview(c.file);
    EXPECT_EQ(preview ? preview->tag : "", c.largestTag);
    if (preview) {
      EXPECT_EQ(asText(preview->bytes),
                outsideToolOutput("exiftool", {"-b", "-" + c.largestTag, c.file}));
    }
  }
}

}  // namespace
