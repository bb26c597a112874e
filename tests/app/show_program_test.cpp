// `lorvane show` as a user runs it: the tables in two languages, and bad input.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/wait.h>

#include "test_support.hpp"

namespace {

using lorvane::test::dataFolder;
using lorvane::test::fileContents;
using lorvane::test::TemporaryFolder;

struct ProgramResult {
  int status = -1;
  std::string out;
  std::string err;
};

std::string quoted(const std::string& text) {
  std::string result = "'";
  for (char c : text) {
    result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return result + "'";
}

// Runs `lorvane show` with these arguments, after `environment` (shell assignments).
ProgramResult show(const std::vector<std::string>& arguments, const std::string& environment = "") {
  TemporaryFolder folder;
  // Appends only: GCC 12 warns falsely (-Wrestrict) on a literal + string at -O3.
  std::string command = environment;
  command.append(" ").append(quoted(LORVANE_PROGRAM)).append(" show");
  for (const auto& word : arguments) {
    command.append(" ").append(quoted(word));
  }
  command.append(" > ").append(quoted((folder.path() / "out").string()));
  command.append(" 2> ").append(quoted((folder.path() / "err").string()));
  const int raw = std::system(command.c_str());
  ProgramResult result;
  result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  result.out = fileContents(folder.path() / "out");
  result.err = fileContents(folder.path() / "err");
  return result;
}

std::string sample() { return (dataFolder() / "sample.jpg").string(); }

TEST(ShowProgram, PrintsTitlesAndLabelsInTheChosenLanguage) {
  const auto english = show({"--lang", "en", sample()});
  EXPECT_EQ(english.status, 0) << english.err;
  EXPECT_NE(english.out.find("== " + sample()), std::string::npos);
  EXPECT_NE(english.out.find("\nEXIF\n"), std::string::npos);
  EXPECT_NE(english.out.find("Camera Model Name"), std::string::npos);
  EXPECT_NE(english.out.find("6 (Rotate 90 CW)"), std::string::npos);

  const auto german = show({"--lang", "de", sample()});
  EXPECT_EQ(german.status, 0) << german.err;
  EXPECT_NE(german.out.find("Kameramodell"), std::string::npos) << german.out;
  EXPECT_NE(german.out.find("Ausrichtung"), std::string::npos);
  EXPECT_NE(german.out.find("6 (90° im Uhrzeigersinn)"), std::string::npos);
  // Stream names are never translated.
  EXPECT_NE(german.out.find("\nEXIF\n"), std::string::npos);
}

TEST(ShowProgram, TheUsersLanguageSettingsChooseTheLanguageByDefault) {
  const auto german = show({sample()}, "LANGUAGE= LC_ALL=de_DE.UTF-8");
  EXPECT_EQ(german.status, 0) << german.err;
  EXPECT_NE(german.out.find("Kameramodell"), std::string::npos);
}

TEST(ShowProgram, BadFilesAreReportedAndTheGoodOnesStillShown) {
  TemporaryFolder folder;
  const auto junk = folder.path() / "junk.jpg";
  std::ofstream(junk) << std::string(64, '\0');
  const auto missing = folder.path() / "missing.jpg";

  const auto result = show({"--lang", "en", sample(), missing.string(), junk.string()});
  EXPECT_NE(result.status, 0);
  EXPECT_NE(result.err.find("File not found - " + missing.string()), std::string::npos)
      << result.err;
  EXPECT_NE(result.err.find(junk.string()), std::string::npos) << result.err;
  EXPECT_NE(result.out.find("Camera Model Name"), std::string::npos);
}

TEST(ShowProgram, NoExifToolSaysWhereItLookedAndHowToSetTheFolder) {
  TemporaryFolder resources;
  const auto result = show({sample()}, "LORVANE_RESOURCE_DIR=" + quoted(resources.path().string()));
  EXPECT_EQ(result.status, 3);
  EXPECT_NE(result.err.find((resources.path() / "binaries").string()), std::string::npos)
      << result.err;
  EXPECT_NE(result.err.find("LORVANE_RESOURCE_DIR"), std::string::npos);
  EXPECT_TRUE(result.out.empty());
}

TEST(ShowProgram, UsageMistakesExitWithStatusTwo) {
  EXPECT_EQ(show({}).status, 2);
  EXPECT_EQ(show({"--lang", "klingon", sample()}).status, 2);
  EXPECT_EQ(show({"--bogus", sample()}).status, 2);
}

}  // namespace
