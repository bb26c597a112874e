// The cost of the values an application uses (capture time, place, every tag's date) against
// the reading that made the tags, within one run: each round reads the files with a
// MetadataReader (processor time of this process and its tool, which ends with the reader),
// then works out the values of all of them, and the ratio of the two is the round's figure.
// The median of the rounds is printed with the smallest and largest ratio.
//
//   lorvane-bench-values [rounds] [folder]
//
// The folder defaults to a fresh one of 200 files made by tools/make-many-files.py.

#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <lorvane/lorvane.hpp>

#include "bench_support.hpp"

namespace {

namespace fs = std::filesystem;
using namespace lorvane;
using lorvane::bench::costOf;
using lorvane::bench::loadAverage;
using lorvane::bench::median;

double threadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 10;
  fs::path folder = argc > 2 ? fs::path(argv[2]) : fs::path();
  if (folder.empty()) {
    folder = fs::temp_directory_path() / "lorvane-bench-values";
    fs::remove_all(folder);
    const std::string command = std::string(LORVANE_SOURCE_DIR) + "/tools/make-many-files.py '" +
                                folder.string() + "' --count 200 > /dev/null";
    if (std::system(command.c_str()) != 0) {
      return 1;
    }
  }
  std::vector<std::string> files;
  for (const auto& entry : fs::directory_iterator(folder)) {
    files.push_back(entry.path().string());
  }
  std::printf("%zu files; load average before: %s\n", files.size(), loadAverage().c_str());
  std::vector<double> ratios;
  // Each pass over the values is short: they are worked out this often per round and the time
  // divided, so the clock's grain doesn't count.
  constexpr int passes = 20;
  for (int round = 0; round < rounds; ++round) {
    std::vector<FileTags> read;
    const auto reading = costOf([&] {
      MetadataReader reader({.language = ETLanguage::english, .jobs = 1});
      reader.readEach(files, [&](FileTags&& file) { read.push_back(std::move(file)); });
    });
    std::size_t found = 0;
    const double start = threadSeconds();
    for (int pass = 0; pass < passes; ++pass) {
      for (const auto& file : read) {
        found += file.captureTime().has_value() + file.location().has_value();
        for (const auto& tag : file.tags) {
          found += tag.dateTime().has_value();
        }
      }
    }
    const double values = (threadSeconds() - start) / passes;
    ratios.push_back(values / reading.processor);
    std::printf(
        "round %2d: reading %.3f s processor, values %.2f ms (%zu found per pass), "
        "ratio %.5f\n",
        round + 1, reading.processor, values * 1e3, found / passes, ratios.back());
    std::fflush(stdout);
  }
  const auto [lowest, highest] = std::minmax_element(ratios.begin(), ratios.end());
  std::printf("values / reading: median %.5f (from %.5f to %.5f over %d rounds)\n", median(ratios),
              *lowest, *highest, rounds);
  std::printf("load average after: %s\n", loadAverage().c_str());
}
