// Draining: a fake tool writes 1 GiB to its standard output as fast as it can, and the run
// gathers it into `binaryData`. Reports the rate (MB/s, 1 MB = 10^6 bytes) and the peak
// resident memory of this process over its whole life (about 7 MB before the first run)
// against the size of the data. The first repetition also pays for the system's first
// touch of the memory.
//
//   build/release/bench/lorvane-bench-drain --benchmark_repetitions=3

#include <lorvane/lorvane.hpp>

#include <benchmark/benchmark.h>

#include <stdlib.h>
#include <sys/resource.h>

#include <filesystem>
#include <fstream>

namespace {

using namespace lorvane;

constexpr std::size_t dataSize = std::size_t{1} << 30;

// The real perl running a script that reads the batch and then writes `dataSize` bytes.
class FakeBinaries {
public:
  FakeBinaries() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "lorvane-drain-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    auto& settings = ETSettings::shared();
    realBinaries_ = settings.binariesFolderURL();
    std::filesystem::create_symlink(std::filesystem::canonical(realBinaries_ / "perl"),
                                    folder_ / "perl");
    std::ofstream(folder_ / "exiftool") << R"(
      my $batch = '';
      while ($batch !~ /-execute\z/) { sysread(STDIN, $batch, 65536, length $batch) or last; }
      my $block = 'x' x (4 << 20);
      for (1 .. )" << dataSize / (4 << 20)
                                        << R"() {
        my $offset = 0;
        while ($offset < length $block) {
          my $written = syswrite(STDOUT, $block, length($block) - $offset, $offset);
          die unless defined $written;
          $offset += $written;
        }
      }
    )";
    settings.setBinariesFolderURL(folder_);
  }
  ~FakeBinaries() {
    ETSettings::shared().setBinariesFolderURL(realBinaries_);
    std::filesystem::remove_all(folder_);
  }

private:
  std::filesystem::path folder_;
  std::filesystem::path realBinaries_;
};

double peakResidentBytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024;  // Linux gives KiB
}

void drainOneGiB(benchmark::State& state) {
  FakeBinaries binaries;
  for (auto _ : state) {
    ETOutput output = ETProcess::run(ETInput{});
    if (output.binaryData.size() != dataSize) {
      state.SkipWithError("the data didn't arrive whole");
      break;
    }
    benchmark::DoNotOptimize(output.binaryData.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * dataSize));
  state.counters["MB/s"] = benchmark::Counter(
      static_cast<double>(state.iterations() * dataSize) / 1e6, benchmark::Counter::kIsRate);
  state.counters["peak/data"] = peakResidentBytes() / static_cast<double>(dataSize);
}

}  // namespace

BENCHMARK(drainOneGiB)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK_MAIN();
