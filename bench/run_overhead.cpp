// What a run through ETProcess costs on top of the tool itself: one batch (JSON of 20 tagged
// JPEGs) run through ETProcess::run, against the same batch given directly to
// `perl exiftool -@ argfile` with the same fixed options, its standard output read the same
// way. The two take turns; the counters give the median of each and their ratio.
//
//   build/release/bench/lorvane-bench-run_overhead --benchmark_repetitions=5

#include <lorvane/lorvane.hpp>

#include <benchmark/benchmark.h>

#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <filesystem>
#include <fstream>
#include <map>

#include "platform/child_process.hpp"
#include "platform/pipe.hpp"
#include "platform/stream_reader.hpp"

#include "bench_support.hpp"

namespace {

using lorvane::bench::median;

using namespace lorvane;

constexpr int fileCount = 20;

// A folder of tagged copies of the sample image and the batch that reads them.
struct Sample {
  Sample() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "lorvane-overhead-XXXXXX").string();
    folder = mkdtemp(pattern.data());
    const auto first = folder / "photo-0.jpg";
    std::filesystem::copy_file(std::filesystem::path(LORVANE_SOURCE_DIR) / "tests/data/plain.jpg",
                               first);
    // Tagged by the tool itself, run the plain way with the host's environment.
    platform::ChildProcess tagger(platform::LaunchOptions{
        .executable = ETSettings::shared().binariesFolderURL() / "exiftool",
        .arguments = {"-q", "-overwrite_original", "-EXIF:Make=Bench", "-XMP-dc:Title=Bench title",
                      "-IPTC:Keywords=kw", first.string()}});
    tagger.waitForExit();
    arguments = {"-json", "-G1", first.string()};
    for (int i = 1; i < fileCount; ++i) {
      const auto copy = folder / ("photo-" + std::to_string(i) + ".jpg");
      std::filesystem::copy_file(first, copy);
      arguments.push_back(copy.string());
    }
    argfile = folder / "arguments.txt";
    std::ofstream file(argfile);
    for (const auto& argument : arguments) {
      file << argument << '\n';
    }
  }
  ~Sample() { std::filesystem::remove_all(folder); }

  std::filesystem::path folder;
  std::filesystem::path argfile;
  std::vector<std::string> arguments;
};

const Sample& sample() {
  static const Sample instance;
  return instance;
}

using Clock = std::chrono::steady_clock;

double runThroughETProcess(const ETInput& input) {
  const auto start = Clock::now();
  const ETOutput output = ETProcess::run(input);
  const auto end = Clock::now();
  if (output.joinUnknownErrors() || output.binaryData.empty()) {
    throw std::runtime_error("the run through ETProcess failed");
  }
  return std::chrono::duration<double>(end - start).count();
}

double runDirectly(const std::map<std::string, std::string>& environment) {
  const auto binaries = ETSettings::shared().binariesFolderURL();
  const auto start = Clock::now();
  auto output = platform::makePipe(1024 * 1024);
  auto errors = platform::makePipe();
  std::vector<std::byte> bytes;
  platform::StreamReader errorReader(errors.readEnd.get(), [](std::span<const std::byte>) {});
  {
    platform::ChildProcess child(
        platform::LaunchOptions{.executable = binaries / "perl",
                                .arguments = {(binaries / "exiftool").string(), "-progress", "-v0",
                                              "-q", "-@", sample().argfile.string()},
                                .environment = environment,
                                .standardOutput = output.writeEnd.get(),
                                .standardError = errors.writeEnd.get()});
    output.writeEnd.close();
    errors.writeEnd.close();
    bytes = platform::readToEnd(output.readEnd.get());
    child.waitForExit();
  }
  errorReader.waitForEnd();
  const auto end = Clock::now();
  if (bytes.empty()) {
    throw std::runtime_error("the direct run failed");
  }
  return std::chrono::duration<double>(end - start).count();
}

// The two kinds of run take turns (and swap who goes first), so that a change in the load of
// the machine hits both alike.
void runOverhead(benchmark::State& state) {
  ETInput input;
  input.arguments = sample().arguments;
  const auto binaries = ETSettings::shared().binariesFolderURL();
  const std::map<std::string, std::string> environment{
      {"LC_CTYPE", "C.UTF-8"}, {"PERL5LIB", (binaries / "perllib").string()}};
  std::vector<double> throughETProcess;
  std::vector<double> directly;
  bool etProcessFirst = true;
  for (auto _ : state) {
    if (etProcessFirst) {
      throughETProcess.push_back(runThroughETProcess(input));
      directly.push_back(runDirectly(environment));
    } else {
      directly.push_back(runDirectly(environment));
      throughETProcess.push_back(runThroughETProcess(input));
    }
    etProcessFirst = !etProcessFirst;
  }
  const double etProcessMedian = median(throughETProcess);
  const double directMedian = median(directly);
  state.counters["ETProcess_ms"] = etProcessMedian * 1000;
  state.counters["direct_ms"] = directMedian * 1000;
  state.counters["ratio"] = etProcessMedian / directMedian;
}

}  // namespace

BENCHMARK(runOverhead)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(30);
BENCHMARK_MAIN();
