// The viewer's road through the library: a real ExifTool run made of named options, its JSON
// read against the catalogue, and the lorvane program as a user meets it.

#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>

#include "metadata_table.hpp"
#include "test_support.hpp"

namespace {

using namespace lorvane;
using lorvane::test::dataFolder;

// The catalogue reads its language once per process: this program's is English.
const bool englishCatalogue = [] { return ::setenv("LC_ALL", "C", 1) == 0; }();

std::string sample() { return (dataFolder() / "sample.jpg").string(); }

std::vector<show::FileMetadata> readWithTool(const std::vector<std::string>& files) {
  const ETOutput output = ETProcess::run(show::makeToolInput(files, std::nullopt));
  output.throwIfErrors();
  return show::makeMetadataTables(nlohmann::ordered_json::parse(output.decodeOutData().value()));
}

const show::MetadataRow* findRow(const show::FileMetadata& file, std::string_view stream,
                                 std::string_view title) {
  for (const auto& section : file.sections) {
    for (const auto& row : section.rows) {
      if (section.stream == stream && row.title == title) {
        return &row;
      }
    }
  }
  return nullptr;
}

TEST(MetadataTables, ToolOutputBecomesRowsWithCatalogueTitlesAndLabels) {
  ASSERT_TRUE(englishCatalogue);
  const auto files = readWithTool({sample()});
  ASSERT_EQ(files.size(), 1u);
  const auto& file = files[0];
  EXPECT_EQ(file.path, sample());
  EXPECT_FALSE(file.error);

  // Tags of IFD0, ExifIFD and GPS all stand in the one EXIF section, under the catalogue's
  // titles, which differ from the tool's tag names where the catalogue says so.
  const auto* model = findRow(file, "EXIF", "Camera Model Name");
  ASSERT_NE(model, nullptr);
  EXPECT_EQ(model->value, "DemoCam One");
  const auto* orientation = findRow(file, "EXIF", "Orientation");
  ASSERT_NE(orientation, nullptr);
  EXPECT_EQ(orientation->value, "6");
  EXPECT_EQ(orientation->label, "Rotate 90 CW");
  const auto* latitudeRef = findRow(file, "EXIF", "GPS Latitude Ref");
  ASSERT_NE(latitudeRef, nullptr);
  EXPECT_EQ(latitudeRef->label, "North");

  const auto* keywords = findRow(file, "IPTC", "Keywords");
  ASSERT_NE(keywords, nullptr);
  EXPECT_EQ(keywords->value, "tower, paris");
  EXPECT_EQ(keywords->label, "");
  const auto* title = findRow(file, "XMP", "Title");
  ASSERT_NE(title, nullptr);
  EXPECT_EQ(title->value, "Demo title");

  // The tool's own group is no catalogue stream: its tags keep their names.
  const auto* version = findRow(file, "ExifTool", "ExifToolVersion");
  ASSERT_NE(version, nullptr);
  EXPECT_FALSE(version->isKnown);
}

TEST(MetadataTables, TheToolsGroupsOfTheSampleLeadToCatalogueStreamsAndTags) {
  const auto files = readWithTool({sample()});
  ASSERT_EQ(files.size(), 1u);
  const auto streams = TagStream::allCases();
  std::size_t known = 0;
  for (const auto& section : files[0].sections) {
    // Every group of the tool but its own ("ExifTool") is a stream of the catalogue.
    if (section.stream != "ExifTool") {
      EXPECT_NE(std::find(streams.begin(), streams.end(), TagStream(section.stream)),
                streams.end())
          << section.stream;
    }
    for (const auto& row : section.rows) {
      known += row.isKnown ? 1 : 0;
    }
  }
  // The catalogue doesn't hold every tag the tool prints (the file system's, for one), but
  // each tag the sample was given is there.
  EXPECT_GE(known, 25u);
  for (const auto& [stream, title] : std::vector<std::pair<std::string, std::string>>{
           {"EXIF", "Make"}, {"EXIF", "Artist"}, {"EXIF", "Exposure Program"},
           {"EXIF", "GPS Longitude"}, {"IPTC", "City"}, {"IPTC", "Object Name"},
           {"XMP", "Creator"}, {"XMP", "Rating"}, {"XMP", "Color Mode"}}) {
    const auto* row = findRow(files[0], stream, title);
    ASSERT_NE(row, nullptr) << stream << " " << title;
    EXPECT_TRUE(row->isKnown);
  }
}

}  // namespace
