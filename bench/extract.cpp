// `lorvane extract --tag ThumbnailImage` against `exiftool -b -ThumbnailImage -w` over the same
// files, by processor time of the whole process tree (the program, its kept tool; the tool
// alone), in alternating pairs: a ratio is taken within each pair and the median of the pairs
// printed, with the smallest and largest ratio for the noise. Wall-clock time comes beside it.
//
//   lorvane-bench-extract [pairs] [folder]
//
// The folder defaults to a fresh one of 2,000 camera-like JPEGs with thumbnails made by
// tools/make-many-files.py (its few files of other kinds have none, for both programs alike).

#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench_support.hpp"

namespace {

namespace fs = std::filesystem;
using lorvane::bench::costOf;
using lorvane::bench::loadAverage;
using lorvane::bench::median;

std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) {
    result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return result + "'";
}

void run(const std::string& command) {
  const int status = std::system(command.c_str());
  if (status == -1 || !WIFEXITED(status)) {
    std::fprintf(stderr, "failed: %s\n", command.substr(0, 300).c_str());
    std::exit(1);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int pairs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 10;
  fs::path folder = argc > 2 ? fs::path(argv[2]) : fs::path();
  if (folder.empty()) {
    folder = fs::temp_directory_path() / "lorvane-bench-extract";
    fs::remove_all(folder);
    run(quoted(std::string(LORVANE_SOURCE_DIR) + "/tools/make-many-files.py") + " " +
        quoted(folder.string()) + " --count 2000 > /dev/null");
  }
  std::string files;
  std::size_t count = 0;
  for (const auto& entry : fs::directory_iterator(folder)) {
    files += " " + quoted(entry.path().string());
    ++count;
  }
  const fs::path out = fs::temp_directory_path() / "lorvane-bench-extract-out";
  const std::string program = std::string(LORVANE_PROGRAM) +
                              " extract --tag ThumbnailImage --out " + quoted(out.string()) +
                              files + " > /dev/null 2>&1";
  const std::string tool = "exiftool -q -b -ThumbnailImage -w " +
                           quoted(out.string() + "/%f_ThumbnailImage.jpg") + files +
                           " > /dev/null 2>&1";
  std::printf("%zu files; load average before: %s\n", count, loadAverage().c_str());
  std::vector<double> processorRatios;
  std::vector<double> wallRatios;
  std::vector<double> programSeconds;
  std::vector<double> toolSeconds;
  for (int pair = 0; pair < pairs; ++pair) {
    double program_[2] = {};
    double tool_[2] = {};
    // Alternating which goes first, so a drift of the machine's load favours neither.
    for (int turn = 0; turn < 2; ++turn) {
      const bool programTurn = (turn == 0) == (pair % 2 == 0);
      fs::remove_all(out);
      fs::create_directories(out);
      const auto cost = costOf([&] { run(programTurn ? program : tool); });
      (programTurn ? program_ : tool_)[0] = cost.processor;
      (programTurn ? program_ : tool_)[1] = cost.wall;
    }
    processorRatios.push_back(program_[0] / tool_[0]);
    wallRatios.push_back(program_[1] / tool_[1]);
    programSeconds.push_back(program_[0]);
    toolSeconds.push_back(tool_[0]);
    std::printf("pair %2d: processor %.2f s / %.2f s = %.3f, wall %.2f s / %.2f s = %.3f\n",
                pair + 1, program_[0], tool_[0], processorRatios.back(), program_[1], tool_[1],
                wallRatios.back());
    std::fflush(stdout);
  }
  fs::remove_all(out);
  const auto [lowest, highest] =
      std::minmax_element(processorRatios.begin(), processorRatios.end());
  std::printf(
      "processor time, lorvane extract / exiftool -w: median %.3f (from %.3f to %.3f over "
      "%d pairs); medians %.2f s and %.2f s\n",
      median(processorRatios), *lowest, *highest, pairs, median(programSeconds),
      median(toolSeconds));
  std::printf("wall time ratio: median %.3f\n", median(wallRatios));
  std::printf("load average after: %s\n", loadAverage().c_str());
}
