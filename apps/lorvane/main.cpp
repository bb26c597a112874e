// lorvane: shows and edits the metadata of files with ExifTool, in the words of Lorvane's tag
// catalogue.
//
//   lorvane show [--lang L] [--raw] [--json | --json-lines] [--jobs N] [--timeout SECONDS]
//                [--sidecars] [--files-from FILE [--null]] FILE... | - [--name HINT]
//   lorvane set [--lang L] [--overwrite-original] [--backup none|beside|DIR]
//               [--to file|sidecar|both] [--timeout SECONDS] [--capture-time TIME]
//               [--location LAT,LON[,ALT]] NAME=VALUE... -- FILE...
//   lorvane tags [--lang L] [--choices] [--json] PATTERN...
//   lorvane extract [--tag NAME | --preview] [--out DIR] [--timeout SECONDS] FILE...
//   lorvane --version | --help

#include <unistd.h>

#include <cstring>

#include <cctype>
#include <charconv>
#include <chrono>
#include <fstream>
#include <iterator>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <lorvane/et_language.hpp>
#include <lorvane/et_settings.hpp>

#include "extract_command.hpp"
#include "interruption.hpp"
#include "set_command.hpp"
#include "show_command.hpp"
#include "tags_command.hpp"
#include "version_command.hpp"

namespace {

using namespace lorvane;

constexpr int usageStatus = 2;
constexpr int noExifToolStatus = 3;

constexpr const char* usageStart =
    "usage: lorvane show [--lang L] [--raw] [--json | --json-lines] [--jobs N]\n"
    "                    [--timeout SECONDS] [--sidecars] [--files-from FILE [--null]]\n"
    "                    FILE... | - [--name HINT]\n"
    "       lorvane set [--lang L] [--overwrite-original] [--backup none|beside|DIR]\n"
    "                   [--to file|sidecar|both] [--timeout SECONDS]\n"
    "                   [--capture-time TIME] [--location LAT,LON[,ALT]]\n"
    "                   NAME=VALUE... -- FILE...\n"
    "       lorvane tags [--lang L] [--choices] [--json] PATTERN...\n"
    "       lorvane extract [--tag NAME | --preview] [--out DIR] [--timeout SECONDS] FILE...\n"
    "       lorvane --version | --help\n"
    "\n"
    "show   every tag ExifTool reads from the files, by stream, with the catalogue's titles;\n"
    "       values as ExifTool prints them, the raw value after them where it differs; each\n"
    "       file as soon as it and the files before it are read\n"
    "       --raw   ExifTool's JSON as it came     --json  one JSON array, an object per file\n"
    "       --json-lines  one JSON object per file, one per line\n"
    "       --jobs N  N ExifTools side by side (default: one per hardware thread)\n"
    "       --files-from FILE  the files named in FILE, one per line ('-': standard input)\n"
    "       --null  names in --files-from end with a NUL character (find -print0)\n"
    "       --sidecars  each file's XMP sidecars (FILE.xmp, then the name with .xmp for\n"
    "               its extension) with it; their tags stand before the file's own\n"
    "       -      alone: the bytes of standard input; --name HINT names them (its\n"
    "               extension tells ExifTool the format)\n"
    "set    writes tags, file by file on one ExifTool, after checking every assignment\n"
    "       against the catalogue (nothing is written if one fails). NAME is a catalogue\n"
    "       name (EXIF:Orientation), VALUE a raw value or a label in the chosen language;\n"
    "       an empty VALUE deletes the tag; a list tag takes several NAME=VALUE.\n"
    "       Each written FILE keeps its original as FILE_original unless --overwrite-original\n"
    "       --backup none  no backup (the file is replaced)  --backup DIR  into folder DIR,\n"
    "               never over an older backup  --backup beside  FILE_original (default)\n"
    "       --to sidecar  into the file's XMP sidecar (made from the file's metadata if\n"
    "               missing; EXIF and IPTC tags go to their XMP counterparts), the file\n"
    "               untouched  --to both  the file and its sidecar  --to file  (default)\n"
    "       --capture-time 2026-11-01T10:30:00+02:00  EXIF's and XMP's dates, sub-seconds, zone\n"
    "       --location 48.8584,2.2945[,35]  EXIF's GPS position (south, west, below sea: -)\n"
    "tags   looks tags up in the catalogue: a name (EXIF:Orientation), a key in any stream\n"
    "       (Orientation), wildcards (Canon:*Lens*) or words of the title\n"
    "       --choices  every value with its label (always for a single tag)\n"
    "extract  writes a binary tag of each file (--tag ThumbnailImage) or its largest\n"
    "       preview (--preview, the default) as DIR/NAME_TAG.jpg (.png, .tif or .bin by\n"
    "       what it holds); --out DIR (default: the current folder)\n"
    "\n"
    "--timeout SECONDS  longest time for one file (default 60): the file gets an error,\n"
    "           the others go on\n";

constexpr const char* usageEnd =
    "--version  Lorvane's version and that of the ExifTool it finds\n"
    "--help     this text (also after a command)\n"
    "\n"
    "exit status: 0  done as asked\n"
    "             1  a file or tool error (the other files are still done), a refused\n"
    "                assignment, or no tag matched\n"
    "             2  a usage mistake\n"
    "             3  ExifTool not found (the message names where it looked)\n"
    "       128 + N  stopped by signal N (130 for Ctrl-C): its tools ended, its output whole\n"
    "\n"
    "More in the manual page: man lorvane\n";

// The usage's languages come from the library, so that it (and the shell completion, which
// reads them from it) never lists one the program doesn't take.
const std::string& usage() {
  static const std::string text = [] {
    std::string codes;
    std::string names;
    for (const ETLanguage language : ETLanguage::allCases()) {
      codes.append(codes.empty() ? "" : ", ").append(language.exifToolValue());
      names.append(names.empty() ? "" : ", ").append(language.rawValue());
    }
    return usageStart + ("--lang L   titles and labels in L: " + codes) +
           ("\n           or by name: " + names) +
           ";\n           default: the user's language settings (LANGUAGE, LC_ALL, LANG)\n" +
           usageEnd;
  }();
  return text;
}

struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

std::optional<ETLanguage> parseLanguage(std::string_view text) {
  if (auto language = ETLanguage::fromExifToolValue(text)) {
    return language;
  }
  return ETLanguage::fromRawValue(text);
}

// The catalogue reads its language once, from the POSIX language settings, on first use:
// choosing a language means setting them before any tag is touched.
void chooseCatalogueLanguage(ETLanguage language) {
  std::string localisation(language.exifToolValue());  // "de", "zh_cn"
  if (const auto underscore = localisation.find('_'); underscore != std::string::npos) {
    for (std::size_t i = underscore + 1; i < localisation.size(); ++i) {
      localisation[i] =
          static_cast<char>(std::toupper(static_cast<unsigned char>(localisation[i])));
    }
  }
  ::setenv("LANGUAGE", localisation.c_str(), 1);
  ::setenv("LC_ALL", localisation.c_str(), 1);
}

// Nothing when the binaries folder holds the tool; otherwise what to tell the user.
std::optional<std::string> missingExifTool() {
  const auto folder = ETSettings::shared().binariesFolderURL();
  for (const char* entry : {"perl", "exiftool"}) {
    if (::access((folder / entry).c_str(), R_OK) != 0) {
      return "ExifTool was not found: the binaries folder " + folder.string() + " has no '" +
             entry +
             "'.\nThe folder is the 'binaries' folder of Lorvane's resources; point "
             "LORVANE_RESOURCE_DIR at a folder whose binaries/ holds 'perl', 'exiftool' and "
             "'perllib', or install ExifTool (apt-get install libimage-exiftool-perl) and "
             "rebuild.";
    }
  }
  return std::nullopt;
}

// The words of one command line after the command, with its options taken out.
class Arguments {
public:
  Arguments(int argc, char** argv) : words_(argv + 2, argv + argc) {}

  // Goes through the words; `option` is called for every word starting with "--" before a
  // plain "--" (which it gets too, and may end the options with), `operand` for the others.
  template <class Option, class Operand>
  void walk(Option&& option, Operand&& operand) {
    for (position_ = 0; position_ < words_.size(); ++position_) {
      const std::string& word = words_[position_];
      if (word.starts_with("--") && !optionsEnded_) {
        option(word);
      } else {
        operand(word);
      }
    }
  }
  void endOptions() { optionsEnded_ = true; }
  std::string value(const std::string& option) {
    if (++position_ == words_.size()) {
      throw UsageError(option + " needs a value");
    }
    return words_[position_];
  }

private:
  std::vector<std::string> words_;
  std::size_t position_ = 0;
  bool optionsEnded_ = false;
};

// Walks a command's words: "--lang", "--help" and "--" are everybody's; `option` takes the
// command's own options (false: unknown), `operand` the other words. Then fixes the language.
template <class Option, class Operand>
std::optional<ETLanguage> walkCommand(Arguments& arguments, Option&& option, Operand&& operand) {
  std::optional<ETLanguage> language;
  arguments.walk(
      [&](const std::string& word) {
        if (word == "--lang") {
          const std::string text = arguments.value(word);
          language = parseLanguage(text);
          if (!language) {
            throw UsageError("unknown language '" + text + "'");
          }
        } else if (word == "--help") {
          std::cout << usage();
          std::exit(0);
        } else if (word == "--") {
          arguments.endOptions();
          option(word);
        } else if (!option(word)) {
          throw UsageError("unknown option '" + word + "'");
        }
      },
      operand);
  if (language) {
    chooseCatalogueLanguage(*language);
  }
  return language;
}

std::size_t wholeNumber(const std::string& option, const std::string& text) {
  std::size_t number = 0;
  const auto end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || number == 0) {
    throw UsageError(option + " needs a whole number from 1 up, not '" + text + "'");
  }
  return number;
}

std::chrono::milliseconds timeout(const std::string& text) {
  return std::chrono::seconds(wholeNumber("--timeout", text));
}

// The names of --files-from: one per line, or each ended by NUL; an empty line names nothing.
std::vector<std::string> namesFrom(const std::string& source, bool nullEnded) {
  std::ifstream file;
  if (source != "-") {
    file.open(source, std::ios::binary);
    if (!file) {
      throw UsageError("can't read --files-from '" + source + "'");
    }
  }
  std::istream& in = source == "-" ? std::cin : file;
  std::vector<std::string> names;
  for (std::string name; std::getline(in, name, nullEnded ? '\0' : '\n');) {
    if (!name.empty()) {
      names.push_back(std::move(name));
    }
  }
  return names;
}

int show(Arguments& arguments) {
  app::ShowRequest request;
  std::optional<std::string> filesFrom;
  std::optional<std::string> nameHint;
  bool nullEnded = false;
  const auto language = walkCommand(
      arguments,
      [&](const std::string& word) {
        if (word == "--raw") {
          request.printsToolJson = true;
        } else if (word == "--json") {
          request.printsJson = true;
        } else if (word == "--json-lines") {
          request.printsJsonLines = true;
        } else if (word == "--jobs") {
          request.jobs = wholeNumber(word, arguments.value(word));
        } else if (word == "--timeout") {
          request.timeout = timeout(arguments.value(word));
        } else if (word == "--files-from") {
          filesFrom = arguments.value(word);
        } else if (word == "--null") {
          nullEnded = true;
        } else if (word == "--sidecars") {
          request.readsSidecars = true;
        } else if (word == "--name") {
          nameHint = arguments.value(word);
        } else {
          return word == "--";
        }
        return true;
      },
      [&](const std::string& word) { request.files.push_back(word); });
  // "-" alone; among other files, or named by --files-from, it is the file of that name.
  const bool readsInput = request.files.size() == 1 && request.files.front() == "-" && !filesFrom;
  if (request.printsJson && request.printsJsonLines) {
    throw UsageError("--json and --json-lines exclude each other");
  }
  if (nullEnded && !filesFrom) {
    throw UsageError("--null goes with --files-from");
  }
  if (filesFrom) {
    auto named = namesFrom(*filesFrom, nullEnded);
    request.files.insert(request.files.end(), std::make_move_iterator(named.begin()),
                         std::make_move_iterator(named.end()));
  }
  if (request.files.empty()) {
    throw UsageError(filesFrom ? "no file named in --files-from" : "no file given");
  }
  if (readsInput && request.printsToolJson) {
    throw UsageError("--raw reads files, not standard input");
  }
  if (nameHint && !readsInput) {
    throw UsageError("--name goes with '-' (standard input)");
  }
  if (readsInput) {
    const std::string bytes(std::istreambuf_iterator<char>(std::cin), {});
    const auto* data = reinterpret_cast<const std::byte*>(bytes.data());
    request.standardInput.emplace(data, data + bytes.size());
    request.nameHint = nameHint.value_or("-");
  }
  if (const auto missing = missingExifTool()) {
    std::cerr << "lorvane: " << *missing << "\n";
    return noExifToolStatus;
  }
  request.language = language.value_or(ETLanguage::local());
  request.drawsProgress = ::isatty(STDERR_FILENO) != 0;
  request.dimsRawValues = ::isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr;
  app::interruption::watch();  // no thread has started yet
  return app::runShow(request, std::cout, std::cerr);
}

int set(Arguments& arguments) {
  app::SetRequest request;
  bool sawSeparator = false;
  const auto language = walkCommand(
      arguments,
      [&](const std::string& word) {
        if (word == "--") {
          sawSeparator = true;
        } else if (word == "--overwrite-original") {
          request.overwritesOriginal = true;
        } else if (word == "--backup") {
          const std::string where = arguments.value(word);
          if (where == "none") {
            request.backups = BackupPolicy::none;
          } else if (where == "beside") {
            request.backups = BackupPolicy::besideFile;
          } else {
            request.backups = BackupPolicy::folder;
            request.backupFolder = where;
          }
        } else if (word == "--to") {
          const std::string target = arguments.value(word);
          if (target == "file") {
            request.target = WriteTarget::file;
          } else if (target == "sidecar") {
            request.target = WriteTarget::sidecar;
          } else if (target == "both") {
            request.target = WriteTarget::both;
          } else {
            throw UsageError("--to takes file, sidecar or both, not '" + target + "'");
          }
        } else if (word == "--capture-time") {
          request.captureTime = arguments.value(word);
        } else if (word == "--location") {
          request.location = arguments.value(word);
        } else if (word == "--timeout") {
          request.timeout = timeout(arguments.value(word));
        } else {
          return false;
        }
        return true;
      },
      [&](const std::string& word) {
        if (sawSeparator) {
          request.files.push_back(word);
        } else if (word.find('=') == std::string::npos) {
          throw UsageError("'" + word + "' is no NAME=VALUE (files follow a '--')");
        } else {
          request.assignments.push_back(word);
        }
      });
  if (request.assignments.empty() && !request.captureTime && !request.location) {
    throw UsageError("no NAME=VALUE, --capture-time or --location given");
  }
  if (request.files.empty()) {
    throw UsageError("no file given (files follow a '--')");
  }
  if (const auto missing = missingExifTool()) {
    std::cerr << "lorvane: " << *missing << "\n";
    return noExifToolStatus;
  }
  request.language = language.value_or(ETLanguage::local());
  app::interruption::watch();  // no thread has started yet
  return app::runSet(request, std::cout, std::cerr);
}

int tags(Arguments& arguments) {
  app::TagsRequest request;
  walkCommand(
      arguments,
      [&](const std::string& word) {
        if (word == "--choices") {
          request.listsChoices = true;
        } else if (word == "--json") {
          request.printsJson = true;
        }
        return word == "--choices" || word == "--json" || word == "--";
      },
      [&](const std::string& word) { request.patterns.push_back(word); });
  if (request.patterns.empty()) {
    throw UsageError("no pattern given");
  }
  return app::runTags(request, std::cout, std::cerr);
}

int extract(Arguments& arguments) {
  app::ExtractRequest request;
  bool preview = false;
  walkCommand(
      arguments,
      [&](const std::string& word) {
        if (word == "--tag") {
          request.tag = arguments.value(word);
        } else if (word == "--preview") {
          preview = true;
        } else if (word == "--out") {
          request.folder = arguments.value(word);
        } else if (word == "--timeout") {
          request.timeout = timeout(arguments.value(word));
        } else {
          return word == "--";
        }
        return true;
      },
      [&](const std::string& word) { request.files.push_back(word); });
  if (preview && request.tag) {
    throw UsageError("--tag and --preview exclude each other");
  }
  if (request.files.empty()) {
    throw UsageError("no file given");
  }
  if (const auto missing = missingExifTool()) {
    std::cerr << "lorvane: " << *missing << "\n";
    return noExifToolStatus;
  }
  app::interruption::watch();  // no thread has started yet
  return app::runExtract(request, std::cout, std::cerr);
}

int runCommand(int argc, char** argv) {
  const std::string_view command = argc > 1 ? argv[1] : "";
  try {
    Arguments arguments(std::max(argc, 2), argv);
    if (command == "show") {
      return show(arguments);
    }
    if (command == "set") {
      return set(arguments);
    }
    if (command == "tags") {
      return tags(arguments);
    }
    if (command == "extract") {
      return extract(arguments);
    }
    if (command == "--version") {
      if (const auto missing = missingExifTool()) {
        std::cerr << "lorvane: " << *missing << "\n";
        return noExifToolStatus;
      }
      return app::runVersion(std::cout, std::cerr);
    }
    if (command == "--help" || command == "-h" || command == "help") {
      std::cout << usage();
      return 0;
    }
    throw UsageError(command.empty() ? "no command given"
                                     : "unknown command '" + std::string(command) + "'");
  } catch (const UsageError& error) {
    std::cerr << "lorvane: " << error.what() << "\n" << usage();
    return usageStatus;
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int status = runCommand(argc, argv);
  if (const int signal = app::interruption::signalNumber(); signal != 0) {
    // What was printed is whole: the tools were stopped between files.
    std::cerr << "lorvane: stopped by a signal (" << ::strsignal(signal) << ")\n";
    return 128 + signal;
  }
  return status;
}
