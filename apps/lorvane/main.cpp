// lorvane: the metadata of files, as a table per file grouped by stream, with the catalogue's
// titles and value labels in the chosen language.
//
//   lorvane show [--lang LANG] [--raw] FILE...
//
// One ExifTool run reads all files (JSON with group names and raw values); the catalogue turns
// tag names and raw values into titles and labels.

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

#include <lorvane/lorvane.hpp>

#include "metadata_table.hpp"

namespace {

using namespace lorvane;

constexpr const char* usage =
    "usage: lorvane show [--lang LANG] [--raw] FILE...\n"
    "  --lang LANG  titles and labels in LANG: en, de, fr, it, es, ja, zh_cn\n"
    "               (or english, german, ...); default: the user's language settings\n"
    "  --raw        print ExifTool's JSON as it came, without the catalogue\n"
    "exit status: 0 all files read, 1 a file or tool error, 2 a usage mistake,\n"
    "             3 ExifTool not found\n";

struct Options {
  std::optional<ETLanguage> language;
  bool raw = false;
  std::vector<std::string> files;
};

[[noreturn]] void fail(const std::string& message, int status = 2) {
  std::cerr << "lorvane: " << message << "\n";
  std::exit(status);
}

Options parseOptions(int argc, char** argv) {
  Options options;
  if (argc < 2 || (std::string_view(argv[1]) != "show" && std::string_view(argv[1]) != "--help" &&
                   std::string_view(argv[1]) != "-h")) {
    fail(std::string(argc < 2 ? "no command given\n" : "unknown command\n") + usage);
  }
  for (int i = 2 - (std::string_view(argv[1]) != "show"); i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument == "--lang") {
      if (++i == argc) {
        fail(std::string("--lang needs a language\n") + usage);
      }
      options.language = ETLanguage::fromExifToolValue(argv[i]);
      if (!options.language) {
        options.language = ETLanguage::fromRawValue(argv[i]);
      }
      if (!options.language) {
        fail(std::string("unknown language '") + argv[i] + "'\n" + usage);
      }
    } else if (argument == "--raw") {
      options.raw = true;
    } else if (argument == "--help" || argument == "-h") {
      std::cout << usage;
      std::exit(0);
    } else if (argument.starts_with("--")) {
      fail("unknown option '" + std::string(argument) + "'\n" + usage);
    } else {
      options.files.emplace_back(argument);
    }
  }
  if (options.files.empty()) {
    fail(std::string("no file given\n") + usage);
  }
  return options;
}

// The catalogue reads its language once, from the POSIX language settings, on first use:
// choosing a language means setting them before any tag is touched.
void chooseCatalogueLanguage(ETLanguage language) {
  std::string localisation(language.exifToolValue());  // "de", "zh_cn"
  if (const auto underscore = localisation.find('_'); underscore != std::string::npos) {
    for (std::size_t i = underscore + 1; i < localisation.size(); ++i) {
      localisation[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(localisation[i])));
    }
  }
  ::setenv("LANGUAGE", localisation.c_str(), 1);
  ::setenv("LC_ALL", localisation.c_str(), 1);
}

void requireExifTool() {
  const auto folder = ETSettings::shared().binariesFolderURL();
  for (const char* entry : {"perl", "exiftool"}) {
    if (::access((folder / entry).c_str(), R_OK) != 0) {
      fail("ExifTool was not found: the binaries folder " + folder.string() + " has no '" + entry +
               "'.\nThe folder is the 'binaries' folder of Lorvane's resources; point "
               "LORVANE_RESOURCE_DIR at a folder whose binaries/ holds 'perl', 'exiftool' and "
               "'perllib', or install ExifTool (apt-get install libimage-exiftool-perl) and "
               "rebuild.",
           3);
    }
  }
}

void drawProgress(double progress) {
  constexpr int width = 40;
  const int filled = static_cast<int>(progress * width + 0.5);
  std::cerr << "\r[" << std::string(static_cast<std::size_t>(std::clamp(filled, 0, width)), '#')
            << std::string(static_cast<std::size_t>(width - std::clamp(filled, 0, width)), ' ')
            << "] " << static_cast<int>(progress * 100 + 0.5) << "%" << std::flush;
}

ETInput makeInput(const Options& options) {
  ETInput input = show::makeToolInput(options.files, options.language);
  if (options.files.size() > 1 && ::isatty(STDERR_FILENO)) {
    input.onProgressHandler = [](ETProcess& process) { drawProgress(process.output().progress); };
    input.onEndHandler = [](ETProcess&) { std::cerr << "\r" << std::string(48, ' ') << "\r"; };
  }
  return input;
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = parseOptions(argc, argv);
  if (options.language) {
    chooseCatalogueLanguage(*options.language);
  }
  requireExifTool();

  const ETOutput output = ETProcess::run(makeInput(options));
  int status = 0;
  // What the tool complained about (a missing file, say), one line each.
  for (const auto& log : output.processLogs) {
    if (const auto* unknown = std::get_if<ETOutput::UnknownLog>(&log)) {
      if (const auto line = nonBlank(unknown->line)) {
        std::cerr << "lorvane: " << line->substr(0, line->find_last_not_of("\r\n") + 1)
                  << "\n";
        status = 1;
      }
    }
  }
  const std::string text = output.decodeOutData().value_or("");
  if (options.raw) {
    std::cout << text;
    return status;
  }
  if (text.empty()) {
    return status != 0 ? status : 1;
  }
  std::vector<show::FileMetadata> files;
  try {
    files = show::makeMetadataTables(nlohmann::ordered_json::parse(text));
  } catch (const nlohmann::json::exception& error) {
    fail(std::string("ExifTool's output is not the JSON expected: ") + error.what(), 1);
  }
  for (const auto& file : files) {
    show::printMetadata(std::cout, file);
    if (file.error) {
      std::cerr << "lorvane: " << file.path << ": " << *file.error << "\n";
      status = 1;
    }
  }
  return status;
}
