// XMP sidecars with the real ExifTool: read with their file in a stated order, read with their
// files in a folder, and written instead of (or beside) the file, whose bytes then never change.

#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "outside_tool.hpp"
#include "test_support.hpp"

namespace {

namespace fs = std::filesystem;
using namespace lorvane;
using lorvane::test::dataFolder;
using lorvane::test::exifToolValue;
using lorvane::test::fileContents;
using lorvane::test::TemporaryFolder;
using Outcome = FileWriteResult::Outcome;

void makeSidecar(const fs::path& path, const std::string& title) {
  test::outsideToolOutput(
      "exiftool", {"-q", "-o", path.string(), "-XMP-dc:Title=" + title, "-XMP-xmp:Label=" + title});
}

// Each XMP-dc:Title of the file with where it came from, in order.
std::vector<std::pair<std::string, std::string>> titles(const FileTags& file) {
  std::vector<std::pair<std::string, std::string>> found;
  for (const auto& tag : file.tags) {
    if (tag.group == "XMP:XMP-dc" && tag.name == "Title") {
      found.emplace_back(tag.value.joined(), tag.origin);
    }
  }
  return found;
}

TEST(Sidecars, ReadWithTheFileTheLongerNameFirstTheFileBehind) {
  TemporaryFolder folder;
  const auto path = [&](const char* name) { return (folder.path() / name).string(); };
  for (const char* name : {"both.jpg", "none.jpg", "broken.jpg"}) {
    fs::copy_file(dataFolder() / "sample.jpg", path(name));
  }
  makeSidecar(path("both.jpg.xmp"), "long");
  makeSidecar(path("both.xmp"), "short");
  std::ofstream(path("broken.xmp")).flush();  // empty: the tool can't read it
  using Titles = std::vector<std::pair<std::string, std::string>>;
  struct Case {
    const char* file;
    std::vector<std::string> sidecars;
    Titles titles;
    std::size_t warnings;
  };
  const Case cases[] = {
      {"both.jpg",
       {path("both.jpg.xmp"), path("both.xmp")},
       {{"long", path("both.jpg.xmp")}, {"short", path("both.xmp")}, {"Demo title", ""}},
       0},
      {"none.jpg", {}, {{"Demo title", ""}}, 0},
      {"broken.jpg", {}, {{"Demo title", ""}}, 1},
  };
  MetadataReader merging({.jobs = 2, .sidecars = SidecarPolicy::merge});
  MetadataReader ignoring({.jobs = 1});
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file);
    const FileTags read = merging.read(path(c.file));
    EXPECT_FALSE(read.error);
    EXPECT_EQ(read.sidecars, c.sidecars);
    EXPECT_EQ(titles(read), c.titles);
    EXPECT_EQ(read.warnings.size(), c.warnings);
    // A tag only the sidecar has comes with the file's; the sidecar's file tags don't.
    std::size_t labels = 0;
    for (const auto& tag : read.tags) {
      EXPECT_TRUE(tag.origin.empty() || tag.group.starts_with("XMP")) << tag.group;
      labels += tag.name == "Label" ? 1 : 0;
    }
    EXPECT_EQ(labels, c.sidecars.size());
    // By default the file is read alone.
    const FileTags alone = ignoring.read(path(c.file));
    EXPECT_TRUE(alone.sidecars.empty());
    EXPECT_EQ(titles(alone), (Titles{{"Demo title", ""}}));
  }
}

TEST(Sidecars, AFolderGivesItsFilesWithTheirSidecarsAndNoSidecarOnItsOwn) {
  TemporaryFolder folder;
  fs::copy_file(dataFolder() / "sample.jpg", folder.path() / "a.jpg");
  fs::copy_file(dataFolder() / "plain.jpg", folder.path() / "b.jpg");
  makeSidecar(folder.path() / "a.jpg.xmp", "for a");
  makeSidecar(folder.path() / "b.xmp", "for b");
  makeSidecar(folder.path() / "lone.xmp", "no file of its own");
  // Named as a sidecar of the folder would be: a folder has none.
  makeSidecar(folder.path().string() + ".xmp", "beside the folder");
  const struct Removal {
    std::string path;
    ~Removal() { fs::remove(path); }
  } removal{folder.path().string() + ".xmp"};
  MetadataReader reader({.jobs = 1, .sidecars = SidecarPolicy::merge});
  std::set<std::string> names;
  reader.readEach(std::vector<std::string>{folder.path().string()}, [&](FileTags&& file) {
    const std::string name = fs::path(file.file).filename().string();
    names.insert(name);
    if (name == "a.jpg") {
      EXPECT_EQ(file.sidecars, std::vector<std::string>{(folder.path() / "a.jpg.xmp").string()});
      EXPECT_EQ(titles(file).front().first, "for a");
    } else if (name == "b.jpg") {
      EXPECT_EQ(file.sidecars, std::vector<std::string>{(folder.path() / "b.xmp").string()});
      EXPECT_EQ(titles(file).front().first, "for b");
    }
  });
  EXPECT_EQ(names, (std::set<std::string>{"a.jpg", "b.jpg", "lone.xmp"}));
}

TEST(Sidecars, WritingToTheSidecarMakesItFromTheFileAndMapsEXIFAndIPTCToXMP) {
  TemporaryFolder folder;
  const fs::path file = folder.path() / "photo.jpg";
  fs::copy_file(dataFolder() / "sample.jpg", file);
  const std::string before = fileContents(file);
  const auto checked = checkAssignments(
      std::vector<std::string>{"EXIF:Artist=Someone", "IPTC:Keywords=harbour", "XMP:Title=Edited"},
      ETLanguage::english);
  const auto& assignments = std::get<std::vector<TagAssignment>>(checked);
  const std::vector<std::string> files = {file.string()};

  MetadataWriter toSidecar({.target = WriteTarget::sidecar});
  auto results = toSidecar.write(assignments, files);
  ASSERT_EQ(results.size(), 1u);
  EXPECT_EQ(results[0].outcome, Outcome::updated);
  ASSERT_TRUE(results[0].sidecar);
  const fs::path sidecar = file.string() + ".xmp";
  EXPECT_EQ(results[0].sidecar->path, sidecar.string());
  EXPECT_TRUE(results[0].sidecar->created);
  EXPECT_EQ(fileContents(file), before);
  EXPECT_EQ(exifToolValue(sidecar, "XMP-tiff:Artist"), "Someone");
  EXPECT_EQ(exifToolValue(sidecar, "XMP-dc:Subject"), "harbour");
  EXPECT_EQ(exifToolValue(sidecar, "XMP-dc:Title"), "Edited");
  // Made from the file's own metadata first, which the assignments then overwrote.
  EXPECT_EQ(exifToolValue(sidecar, "XMP-tiff:Make"), "DemoCam");

  // A tag without an XMP counterpart refuses the file: nothing is written anywhere.
  const std::string sidecarBefore = fileContents(sidecar);
  const auto offset =
      checkAssignments(std::vector<std::string>{"EXIF:OffsetTime=+01:00"}, ETLanguage::english);
  results = toSidecar.write(std::get<std::vector<TagAssignment>>(offset), files);
  ASSERT_EQ(results.size(), 1u);
  EXPECT_EQ(results[0].outcome, Outcome::refused);
  ASSERT_EQ(results[0].messages.size(), 1u);
  EXPECT_NE(results[0].messages[0].find("EXIF:OffsetTime"), std::string::npos);
  EXPECT_EQ(fileContents(sidecar), sidecarBefore);
  EXPECT_EQ(fileContents(file), before);

  // Both: the file and the sidecar that is there, each with its own result.
  MetadataWriter toBoth({.backups = BackupPolicy::none, .target = WriteTarget::both});
  const auto title =
      checkAssignments(std::vector<std::string>{"XMP:Title=Both"}, ETLanguage::english);
  results = toBoth.write(std::get<std::vector<TagAssignment>>(title), files);
  ASSERT_EQ(results.size(), 1u);
  EXPECT_EQ(results[0].outcome, Outcome::updated);
  ASSERT_TRUE(results[0].sidecar);
  EXPECT_EQ(results[0].sidecar->outcome, Outcome::updated);
  EXPECT_FALSE(results[0].sidecar->created);
  EXPECT_EQ(exifToolValue(file, "XMP-dc:Title"), "Both");
  EXPECT_EQ(exifToolValue(sidecar, "XMP-dc:Title"), "Both");
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder.path())) {
    names.insert(entry.path().filename().string());
  }
  EXPECT_EQ(names, (std::set<std::string>{"photo.jpg", "photo.jpg.xmp"}));
}

}  // namespace
