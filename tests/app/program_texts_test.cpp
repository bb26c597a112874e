// The texts that describe the lorvane program to its users, the manual page and the shell
// completion, against what --help says: they must not drift apart when options come and go.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <lorvane/et_language.hpp>

#include "outside_tool.hpp"
#include "test_support.hpp"

namespace {

namespace fs = std::filesystem;
using lorvane::test::fileContents;
using lorvane::test::programOutput;
using lorvane::test::TemporaryFolder;
using Names = std::set<std::string>;

const fs::path sourceFolder = LORVANE_SOURCE_DIR;

std::string help() { return programOutput(LORVANE_PROGRAM, {"--help"}); }

// The manual page's source, its escaped hyphens ("\-") as plain ones.
std::string manual() {
  const std::string source = fileContents(sourceFolder / "apps/lorvane/lorvane.1");
  return std::regex_replace(source, std::regex(R"(\\-)"), "-");
}

// Each match's `group` in the text.
Names allMatches(const std::string& text, const std::regex& pattern, int group = 0) {
  Names found;
  for (std::sregex_iterator it(text.begin(), text.end(), pattern), end; it != end; ++it) {
    found.insert((*it)[group]);
  }
  return found;
}

// The long options a text names; a lone "--" is none.
Names optionsIn(const std::string& text) { return allMatches(text, std::regex("--[a-z][a-z-]*")); }

// What each usage line of --help offers: its first word (a command, or an option such as
// --version) to the options the line names, with the lines it goes on in.
std::map<std::string, Names> helpSynopsis(const std::string& help) {
  static const std::regex start(R"((?:usage:)? +lorvane (\S+).*)");
  std::istringstream lines(help.substr(0, help.find("\n\n")));
  std::map<std::string, std::string> usage;
  std::string* current = nullptr;
  for (std::string line; std::getline(lines, line);) {
    std::smatch match;
    if (std::regex_match(line, match, start)) {
      current = &usage[match[1]];
    }
    if (current != nullptr) {
      current->append(line).append("\n");
    }
  }
  std::map<std::string, Names> synopsis;
  for (const auto& [first, text] : usage) {
    synopsis[first] = optionsIn(text);
  }
  return synopsis;
}

// The same from the manual's ".SY lorvane" ... ".YS" blocks, whose first line after ".SY"
// is ".B" and the command.
std::map<std::string, Names> manualSynopsis(const std::string& manual) {
  static const std::regex block(R"(\.SY lorvane\n\.B (\S+)\n([^]*?)\n\.YS)");
  std::map<std::string, Names> synopsis;
  for (std::sregex_iterator it(manual.begin(), manual.end(), block), end; it != end; ++it) {
    synopsis[(*it)[1]] = optionsIn((*it)[0]);
  }
  return synopsis;
}

TEST(ProgramTexts, ManualPageNamesTheCommandsOptionsAndStatusesOfHelp) {
  const std::string helpText = help();
  const std::string manualText = manual();
  const auto synopsis = helpSynopsis(helpText);
  ASSERT_TRUE(synopsis.contains("show") && synopsis.contains("--version")) << helpText;
  EXPECT_EQ(manualSynopsis(manualText), synopsis);
  EXPECT_EQ(optionsIn(manualText), optionsIn(helpText));

  // Each option is described in an entry of its own, its value named as in the synopsis.
  for (const auto& option : optionsIn(helpText)) {
    const std::regex entry("\n\\.TP\n\\.BI? " + option + "[ \n]");
    EXPECT_TRUE(std::regex_search(manualText, entry)) << option << " has no .TP entry";
  }
  // The exit statuses --help lists ("exit status: 0  done as asked", then "  1  ..."), and the
  // manual's section of them.
  const auto statuses = allMatches(helpText, std::regex(R"(\n(?:exit status:)? +([0-9])  )"), 1);
  EXPECT_EQ(statuses, (Names{"0", "1", "2", "3"}));
  const auto start = manualText.find("\n.SH EXIT STATUS\n");
  const auto section = manualText.substr(start, manualText.find("\n.SH ", start + 1) - start);
  EXPECT_EQ(allMatches(section, std::regex(R"(\n\.TP\n\.B ([0-9])\n)"), 1), statuses);

  // The languages the manual lists for --lang are all the library's.
  const auto lang = manualText.find("\n.BI --lang \" L\"\n");
  ASSERT_NE(lang, std::string::npos);
  const auto entry = manualText.substr(lang, manualText.find("\n.TP\n", lang + 1) - lang);
  for (const auto language : lorvane::ETLanguage::allCases()) {
    EXPECT_NE(entry.find(std::string(language.exifToolValue())), std::string::npos)
        << language.exifToolValue();
  }
}

// What the completion offers when the words typed so far are `words` (the last one being
// completed, maybe empty), one entry per line.
std::vector<std::string> completions(const std::vector<std::string>& words,
                                     const fs::path& folder = fs::current_path()) {
  std::vector<std::string> arguments = {
      "-c",
      "cd \"$1\" && shift && source \"$1\" && shift && COMP_WORDS=(\"$@\") && "
      "COMP_CWORD=$(($# - 1)) && _lorvane \"$1\" \"${COMP_WORDS[COMP_CWORD]}\" "
      "\"${COMP_WORDS[COMP_CWORD - 1]}\" && printf '%s\\n' \"${COMPREPLY[@]}\"",
      "completion",
      folder.string(),
      (sourceFolder / "apps/lorvane/lorvane.bash-completion").string(),
      LORVANE_PROGRAM};
  arguments.insert(arguments.end(), words.begin(), words.end());
  std::istringstream lines(programOutput("/bin/bash", arguments));
  std::vector<std::string> offered;
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty()) {
      offered.push_back(line);
    }
  }
  return offered;
}

Names asSet(const std::vector<std::string>& words) { return Names(words.begin(), words.end()); }

TEST(ProgramTexts, BashCompletionOffersWhatHelpNames) {
  const auto synopsis = helpSynopsis(help());
  Names first;
  for (const auto& [word, options] : synopsis) {
    if (word.starts_with("--")) {
      first.insert(options.begin(), options.end());
    } else {
      first.insert(word);
    }
  }
  EXPECT_EQ(asSet(completions({""})), first);
  EXPECT_EQ(completions({"ta"}), std::vector<std::string>{"tags"});
  for (const std::string command : {"show", "set", "tags"}) {
    auto options = synopsis.at(command);
    options.insert("--help");
    EXPECT_EQ(asSet(completions({command, "--"})), options) << command;
  }
  EXPECT_EQ(completions({"set", "--o"}), std::vector<std::string>{"--overwrite-original"});

  Names languages;
  for (const auto language : lorvane::ETLanguage::allCases()) {
    languages.insert(std::string(language.exifToolValue()));
  }
  EXPECT_EQ(asSet(completions({"tags", "--lang", ""})), languages);
  EXPECT_EQ(completions({"show", "--json", "--lang", "z"}), std::vector<std::string>{"zh_cn"});
  EXPECT_TRUE(completions({"show", "--jobs", ""}).empty());
}

TEST(ProgramTexts, BashCompletionOffersFilesOnlyWhereTheyGo) {
  TemporaryFolder folder;
  std::ofstream(folder.path() / "holiday picture.jpg") << "x";
  const std::vector<std::string> picture = {"holiday picture.jpg"};
  EXPECT_EQ(completions({"show", "--lang", "de", "hol"}, folder.path()), picture);
  EXPECT_EQ(completions({"set", "EXIF:Artist=x", "--", "hol"}, folder.path()), picture);
  EXPECT_EQ(completions({"show", "--files-from", "hol"}, folder.path()), picture);
  EXPECT_TRUE(completions({"show", "--timeout", "hol"}, folder.path()).empty());
  EXPECT_TRUE(completions({"set", "hol"}, folder.path()).empty());
  EXPECT_TRUE(completions({"tags", "hol"}, folder.path()).empty());
}

}  // namespace
