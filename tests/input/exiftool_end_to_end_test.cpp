// Named options through a real run of ExifTool: what the tool does with the lists the makers
// build. (The language option is seen at work in the program's tests.)
#include <lorvane/json.hpp>
#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "test_support.hpp"

using lorvane::ETInput;
using lorvane::ETOutput;
using lorvane::ETPathFilter;
using lorvane::ETProcess;
using Maker = ETInput::ArgumentsMaker;
using nlohmann::json;

namespace {

class ExifToolEndToEnd : public ::testing::Test {
protected:
  std::filesystem::path copyPhoto(const std::string& name) {
    return lorvane::test::copyOfPlainJpeg(folder.path(), name);
  }

  lorvane::test::TemporaryFolder folder;
};

}  // namespace

TEST_F(ExifToolEndToEnd, WritesATagAndReadsItBack) {
  const auto photo = copyPhoto("holiday photo.jpg");
  ETInput input;
  // Two commands: forceExecute ends the writing one, so the reading one sees its result.
  input.addArguments([&](Maker& maker) {
    maker.additional = {"-XMP-dc:Title=Grüße aus Köln"};
    maker.overwriteInPlace = true;
    maker.sourcePath = photo.string();
    maker.forceExecute = true;
  });
  input.addArguments([&](Maker& maker) {
    maker.additional = {"-json", "-XMP-dc:Title"};
    maker.sourceURL = photo;
  });

  const ETOutput output = ETProcess::run(input);

  EXPECT_NO_THROW(output.throwIfErrors());
  // One JSON array: the writing command, quiet, prints nothing.
  const auto tags = json::parse(output.decodeOutData().value());
  ASSERT_EQ(tags.size(), 1u);
  EXPECT_EQ(tags[0].at("Title"), "Grüße aus Köln");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()),
                          std::filesystem::directory_iterator()),
            1)
      << "written in place, without a backup copy";
}

TEST_F(ExifToolEndToEnd, PathFilterMakesTheToolSkipFiles) {
  copyPhoto("a.jpg");
  copyPhoto("b.jpeg");
  std::filesystem::copy_file(lorvane::test::dataFolder() / "sample.mp4", folder.path() / "c.MP4");
  ETInput input;
  input.addArguments([&](Maker& maker) {
    maker.additional = {"-json", "-FileName"};
    maker.filePathFilter = ETPathFilter::suffix({"jpg", "mp4"});
    maker.sourceURL = folder.path();
  });

  const ETOutput output = ETProcess::run(input);

  EXPECT_NO_THROW(output.throwIfErrors());
  std::set<std::string> names;
  for (const json& result : json::parse(output.decodeOutData().value())) {
    names.insert(result.at("FileName").get<std::string>());
  }
  EXPECT_EQ(names, (std::set<std::string>{"a.jpg", "c.MP4"}));
}
