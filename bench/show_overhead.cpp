// `lorvane show --jobs 1` against ExifTool alone on the same 200 files: what the catalogue
// lookups and the run machinery add to the tool's own time, as a ratio of medians.
//
//   lorvane-bench-show_overhead [runs]     (default 7 runs of each, interleaved)

#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench_support.hpp"

namespace {

using lorvane::bench::median;

namespace fs = std::filesystem;

double secondsOf(const std::string& command) {
  const auto start = std::chrono::steady_clock::now();
  const int status = std::system(command.c_str());
  const auto end = std::chrono::steady_clock::now();
  if (status == -1 || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    std::fprintf(stderr, "failed: %s\n", command.c_str());
    std::exit(1);
  }
  return std::chrono::duration<double>(end - start).count();
}

}  // namespace

int main(int argc, char** argv) {
  const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
  constexpr int fileCount = 200;

  const fs::path folder = fs::temp_directory_path() / "lorvane-bench-show";
  fs::remove_all(folder);
  fs::create_directories(folder);
  std::string files;
  for (int i = 0; i < fileCount; ++i) {
    const fs::path copy = folder / ("sample-" + std::to_string(i) + ".jpg");
    fs::copy_file(LORVANE_SAMPLE_FILE, copy);
    files += " '" + copy.string() + "'";
  }

  // The same reading the program asks the tool for: long JSON, group names, German, quiet.
  const std::string tool = "exiftool -q -json -long -G0:1 -lang de" + files + " > /dev/null";
  const std::string show =
      std::string("'") + LORVANE_PROGRAM + "' show --jobs 1 --lang de" + files + " > /dev/null";
  std::vector<double> toolTimes;
  std::vector<double> showTimes;
  secondsOf(tool);  // warm the page cache and Perl's modules
  for (int run = 0; run < runs; ++run) {
    toolTimes.push_back(secondsOf(tool));
    showTimes.push_back(secondsOf(show));
  }
  fs::remove_all(folder);

  const double toolMedian = median(toolTimes);
  const double showMedian = median(showTimes);
  std::printf("%d files, %d runs each\n", fileCount, runs);
  std::printf("exiftool -q -json -long -G0:1 -lang de: median %.3f s (min %.3f, max %.3f)\n",
              toolMedian, *std::min_element(toolTimes.begin(), toolTimes.end()),
              *std::max_element(toolTimes.begin(), toolTimes.end()));
  std::printf("lorvane show --jobs 1 --lang de:  median %.3f s (min %.3f, max %.3f)\n", showMedian,
              *std::min_element(showTimes.begin(), showTimes.end()),
              *std::max_element(showTimes.begin(), showTimes.end()));
  std::printf("ratio of medians: %.3f (target <= 1.10)\n", showMedian / toolMedian);
  return 0;
}
