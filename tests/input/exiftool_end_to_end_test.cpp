// Named options through a real run of ExifTool: what the tool does with the lists the makers
// build.
#include <lorvane/json.hpp>
#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "test_support.hpp"

using lorvane::ETInput;
using lorvane::ETLanguage;
using lorvane::ETOutput;
using lorvane::ETPathFilter;
using lorvane::ETProcess;
using Maker = ETInput::ArgumentsMaker;
using nlohmann::json;

namespace {

// The tool prints one JSON array per command; a batch of commands gives them one after another.
std::vector<json> jsonResults(const ETOutput& output) {
  const auto text = output.decodeOutData();
  EXPECT_TRUE(text.has_value());
  std::vector<json> results;
  std::istringstream stream(text.value_or(""));
  while ((stream >> std::ws).peek() != std::char_traits<char>::eof()) {
    results.emplace_back();
    stream >> results.back();
  }
  return results;
}

std::string fileName(const json& result) { return result.at("FileName").get<std::string>(); }

class ExifToolEndToEnd : public ::testing::Test {
protected:
  std::filesystem::path copyPhoto(const std::string& name) {
    return lorvane::test::copyOfPlainJpeg(folder.path(), name);
  }

  lorvane::test::TemporaryFolder folder;
  lorvane::test::SettingsGuard settings;
};

}  // namespace

TEST_F(ExifToolEndToEnd, WritesATagAndReadsItBack) {
  const auto photo = copyPhoto("holiday photo.jpg");
  ETInput input;
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
  const auto results = jsonResults(output);
  ASSERT_EQ(results.size(), 1u);
  ASSERT_EQ(results[0].size(), 1u);
  EXPECT_EQ(results[0][0].at("Title"), "Grüße aus Köln");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()),
                          std::filesystem::directory_iterator()),
            1)
      << "written in place, without a backup copy";
}

TEST_F(ExifToolEndToEnd, LanguageGivesTheToolsTranslations) {
  const auto photo = copyPhoto("photo.jpg");
  const auto describe = [&](std::optional<ETLanguage> language) {
    ETInput input;
    input.addArguments([&](Maker& maker) {
      maker.language = language;
      maker.extractsBinaries = false;  // "-b" would print bare values without descriptions
      maker.additional = {"-FileSize", "-ResolutionUnit"};
      maker.sourcePath = photo.string();
    });
    const ETOutput output = ETProcess::run(input);
    EXPECT_NO_THROW(output.throwIfErrors());
    return output.decodeOutData().value_or("");
  };
  const std::string german = describe(ETLanguage::german);
  EXPECT_NE(german.find("Dateigröße"), std::string::npos) << german;
  EXPECT_NE(german.find("Keine"), std::string::npos) << german;
  const std::string english = describe(std::nullopt);
  EXPECT_NE(english.find("File Size"), std::string::npos) << english;
  EXPECT_NE(english.find("None"), std::string::npos) << english;
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
  const auto results = jsonResults(output);
  ASSERT_EQ(results.size(), 1u);
  std::set<std::string> names;
  for (const json& result : results[0]) {
    names.insert(fileName(result));
  }
  EXPECT_EQ(names, (std::set<std::string>{"a.jpg", "c.MP4"}));
}

TEST_F(ExifToolEndToEnd, ListFormWithForceExecuteGivesOneResultPerFile) {
  const std::vector<std::filesystem::path> photos{copyPhoto("one.jpg"), copyPhoto("two.jpg"),
                                                  copyPhoto("three.jpg")};
  const auto runList = [&](bool forceExecute) {
    ETInput input;
    input.addArguments(photos, [&](const std::filesystem::path& photo, Maker& maker) {
      maker.additional = {"-json", "-FileName"};
      maker.sourceURL = photo;
      maker.forceExecute = forceExecute;
    });
    const ETOutput output = ETProcess::run(input);
    EXPECT_NO_THROW(output.throwIfErrors());
    return jsonResults(output);
  };

  const auto separate = runList(true);
  ASSERT_EQ(separate.size(), 3u);
  for (std::size_t index = 0; index < photos.size(); ++index) {
    ASSERT_EQ(separate[index].size(), 1u);
    EXPECT_EQ(fileName(separate[index][0]), photos[index].filename().string());
  }

  // Without "-execute" between them the elements run together into one command.
  const auto joined = runList(false);
  ASSERT_EQ(joined.size(), 1u);
  EXPECT_EQ(joined[0].size(), 3u);
}
