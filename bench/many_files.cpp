// Many files on every core: `lorvane show --jobs 1` and `--jobs 2` against one ExifTool process
// that reads the same files with the arguments the program sends, for 50, 200 and 800 files.
// Each round times all of them back to back, in a rotating order; a ratio is taken within a
// round and the median of the rounds is printed, of wall-clock time and of processor time. The
// same through the library alone (`ETProcess::runAll`, no catalogue, no printing) comes beside it.
//
//   lorvane-bench-many_files [rounds] [folder]
//
// The folder defaults to a fresh one made by tools/make-many-files.py (800 files), removed at
// the end. The machine's load average is printed before and after: on a shared machine the
// figures are only as good as it is quiet.

#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <lorvane/lorvane.hpp>

#include "bench_support.hpp"

namespace {

using lorvane::bench::Cost;
using lorvane::bench::costOf;
using lorvane::bench::loadAverage;
using lorvane::bench::median;

namespace fs = std::filesystem;
using namespace lorvane;

// What each round times: the tool alone (the baseline), the program with one and two jobs,
// the library with one and two inputs, and the tool without the runs' fixed options.
constexpr std::size_t kinds = 6;

std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) {
    result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return result + "'";
}

int statusOf(const std::string& command) {
  const int status = std::system(command.c_str());
  return status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void mustSucceed(const std::string& command) {
  if (statusOf(command) != 0) {
    std::fprintf(stderr, "failed: %s\n", command.substr(0, 300).c_str());
    std::exit(1);
  }
}

// One run that reads all files as the program reads each: long JSON, family 0 and 1 groups.
ETInput makeReadingInput(const std::vector<std::string>& files, ETLanguage language) {
  ETInput input;
  input.addArguments(files, [language](const std::string& file, ETInput::ArgumentsMaker& maker) {
    maker.additional = {"-json", "-long", "-G0:1"};
    maker.enableSeparator = false;
    maker.extractsBinaries = false;
    maker.extractsEmbedded = false;
    maker.language = language;
    maker.sourcePath = file;
  });
  return input;
}

// The library alone: the files spread by size over `jobs` inputs of the program's reading.
void readThroughLibrary(const std::vector<std::string>& files, std::size_t jobs) {
  std::vector<std::uint64_t> weights;
  for (const auto& file : files) {
    weights.push_back(ETBatches::fileWeight(file));
  }
  std::vector<ETInput> inputs;
  for (const auto& places : ETBatches::balance(weights, jobs)) {
    std::vector<std::string> batch;
    for (const std::size_t place : places) {
      batch.push_back(files[place]);
    }
    inputs.push_back(makeReadingInput(batch, ETLanguage::english));
  }
  for (const auto& output : ETProcess::runAll(inputs, jobs)) {
    if (output.binaryData.empty()) {
      std::fprintf(stderr, "a run through the library gave no output\n");
      std::exit(1);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
  fs::path folder = argc > 2 ? fs::path(argv[2]) : fs::path();
  const bool ownFolder = folder.empty();
  if (ownFolder) {
    folder = fs::temp_directory_path() / "lorvane-bench-many-files";
    fs::remove_all(folder);
    mustSucceed(quoted(std::string(LORVANE_SOURCE_DIR) + "/tools/make-many-files.py") + " " +
                quoted(folder.string()) + " --count 800 > /dev/null");
  }
  std::vector<std::string> all;
  for (const auto& entry : fs::directory_iterator(folder)) {
    all.push_back(entry.path().string());
  }
  std::sort(all.begin(), all.end());

  const std::string program = quoted(LORVANE_PROGRAM) + " show --lang en";
  const bool hasJobs = statusOf(program + " --help 2>&1 | grep -q -- --jobs") == 0;
  std::printf("load average before: %s\n", loadAverage().c_str());
  std::printf("%d rounds; ratios are of one round, median over rounds; times are medians\n",
              rounds);
  if (!hasJobs) {
    std::printf("(the program has no --jobs yet: only the library is measured)\n");
  }

  for (const std::size_t count : {50u, 200u, 800u}) {
    if (count > all.size()) {
      std::printf("%zu files: only %zu in the folder, skipped\n", count, all.size());
      continue;
    }
    const std::vector<std::string> files(all.begin(), all.begin() + static_cast<long>(count));
    // The tool alone, given exactly what the program hands it, on its command line's file.
    const fs::path argumentsFile = fs::temp_directory_path() / "lorvane-bench-many-files.args";
    {
      std::ofstream out(argumentsFile);
      for (const auto& argument : makeReadingInput(files, ETLanguage::english).arguments) {
        out << argument << "\n";
      }
    }
    std::string fileList;
    for (const auto& file : files) {
      fileList += " " + quoted(file);
    }
    // The baseline has the options every run's command line gives the tool, "-progress" and
    // "-v0" among them; "-v0" makes the tool flush each line it prints, which costs it
    // noticeably on long JSON, so the tool without them comes last, for reference.
    const std::string arguments = " -@ " + quoted(argumentsFile.string()) + " > /dev/null 2>&1";
    const std::string tool = "exiftool -progress -v0 -q" + arguments;
    const std::array<std::function<void()>, kinds> work = {
        [&] { mustSucceed(tool); },
        [&] { mustSucceed(program + " --jobs 1" + fileList + " > /dev/null"); },
        [&] { mustSucceed(program + " --jobs 2" + fileList + " > /dev/null"); },
        [&] { readThroughLibrary(files, 1); },
        [&] { readThroughLibrary(files, 2); },
        [&] { mustSucceed("exiftool" + arguments); },
    };
    work[0]();  // warm the page cache and Perl's modules
    std::array<std::vector<double>, kinds> walls, wallRatios, processors, processorRatios;
    for (int round = 0; round < rounds; ++round) {
      std::array<Cost, kinds> now{};
      for (std::size_t step = 0; step < kinds; ++step) {
        const std::size_t kind = (step + static_cast<std::size_t>(round)) % kinds;
        if ((kind != 1 && kind != 2) || hasJobs) {
          now[kind] = costOf(work[kind]);
        }
      }
      for (std::size_t kind = 0; kind < kinds; ++kind) {
        if (now[kind].wall > 0) {
          walls[kind].push_back(now[kind].wall);
          wallRatios[kind].push_back(now[kind].wall / now[0].wall);
          processors[kind].push_back(now[kind].processor);
          processorRatios[kind].push_back(now[kind].processor / now[0].processor);
        }
      }
    }
    fs::remove(argumentsFile);

    const char* names[kinds] = {"exiftool alone",           "lorvane show --jobs 1",
                                "lorvane show --jobs 2",    "library runAll, 1 input",
                                "library runAll, 2 inputs", "exiftool without -v0"};
    std::printf("\n%zu files             wall s   ratio (min-max)          processor s  ratio\n",
                count);
    for (std::size_t kind = 0; kind < kinds; ++kind) {
      if (walls[kind].empty()) {
        continue;
      }
      const auto [least, most] =
          std::minmax_element(wallRatios[kind].begin(), wallRatios[kind].end());
      std::printf("  %-24s %6.3f   %.3f (%.3f-%.3f)   %6.3f       %.3f\n", names[kind],
                  median(walls[kind]), median(wallRatios[kind]), *least, *most,
                  median(processors[kind]), median(processorRatios[kind]));
    }
  }
  std::printf("\ntargets: --jobs 1 <= 1.05, --jobs 2 <= 0.60 of exiftool alone\n");
  std::printf("load average after: %s\n", loadAverage().c_str());
  if (ownFolder) {
    fs::remove_all(folder);
  }
  return 0;
}
