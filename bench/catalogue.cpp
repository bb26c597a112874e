// The catalogue's costs: building all of it, the first touch of one tag, and a text lookup.
//
// The first uses happen once per process, so each iteration runs this program again as a
// fresh process that times the first use and reports it, with the growth of its resident
// memory over that use.
//
//   build/release/bench/lorvane-bench-catalogue --benchmark_filter=FirstTouch
//   (the first touches report the median of 101 fresh processes; LANG picks the language)

#include <lorvane/lorvane.hpp>

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace {

using namespace lorvane;

constexpr std::string_view firstUseOption = "--first-use=";

long residentBytes() {
  long pages = 0;
  long resident = 0;
  if (FILE* statm = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(statm, "%ld %ld", &pages, &resident) != 2) {
      resident = 0;
    }
    std::fclose(statm);
  }
  return resident * sysconf(_SC_PAGESIZE);
}

// The first uses a fresh process measures, by name.
const std::map<std::string_view, std::function<void()>> firstUses{
    {"all-cases", [] { benchmark::DoNotOptimize(TagItem::allCases().size()); }},
    {"one-tag", [] { benchmark::DoNotOptimize(&TagItem::itemEXIFOrientation()); }},
};

// In the fresh process: prints the seconds and the resident growth of one first use.
int measureFirstUse(std::string_view name, bool languageKnown) {
  if (languageKnown) {
    benchmark::DoNotOptimize(ETLanguage::local());
  }
  const long before = residentBytes();
  const auto start = std::chrono::steady_clock::now();
  firstUses.at(name)();
  const auto end = std::chrono::steady_clock::now();
  std::printf("%.9f %ld\n", std::chrono::duration<double>(end - start).count(),
              residentBytes() - before);
  return 0;
}

void runFirstUse(benchmark::State& state, const std::string& name, bool languageKnown) {
  // Appended piece by piece: GCC 12 at -O3 warns falsely (-Wrestrict) on "literal" + string.
  std::string command = "'";
  command += std::filesystem::read_symlink("/proc/self/exe").string();
  command += "' ";
  command += firstUseOption;
  command += name;
  command += languageKnown ? " --language-known" : "";
  double growth = 0;
  for (auto _ : state) {
    double seconds = 0;
    long grown = 0;
    FILE* child = popen(command.c_str(), "r");
    const bool read = child != nullptr && std::fscanf(child, "%lf %ld", &seconds, &grown) == 2;
    if (child != nullptr) {
      pclose(child);
    }
    if (!read) {
      state.SkipWithError("the fresh process reported nothing");
      return;
    }
    state.SetIterationTime(seconds);
    growth += static_cast<double>(grown);
  }
  state.counters["rss_growth_MB"] =
      benchmark::Counter(growth / 1e6, benchmark::Counter::kAvgIterations);
}

void AllCasesInAFreshProcess(benchmark::State& state) { runFirstUse(state, "all-cases", false); }
BENCHMARK(AllCasesInAFreshProcess)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

// The first touch of any tag reads the user's language; here it is known already. One fresh
// process a repetition and their median: a process that the scheduler holds up now and then
// would otherwise decide a mean of tens of microseconds.
void FirstTouchOfOneTag(benchmark::State& state) { runFirstUse(state, "one-tag", true); }
BENCHMARK(FirstTouchOfOneTag)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond)
    ->Iterations(1)
    ->Repetitions(101)
    ->ReportAggregatesOnly(true);

void FirstTouchOfOneTagWithTheLanguageLookup(benchmark::State& state) {
  runFirstUse(state, "one-tag", false);
}
BENCHMARK(FirstTouchOfOneTagWithTheLanguageLookup)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond)
    ->Iterations(1)
    ->Repetitions(101)
    ->ReportAggregatesOnly(true);

// A hit in the first table asked: the local (German) one.
void LocalizeHitInTheLocalTable(benchmark::State& state) {
  const TagStrings strings(TagStrings::stringTableEXIF(ETLanguage::german),
                           TagStrings::stringTableEXIF(ETLanguage::english));
  for (auto _ : state) {
    benchmark::DoNotOptimize(strings.localize({"EXIF", "Orientation", "2"}));
  }
}
BENCHMARK(LocalizeHitInTheLocalTable);

// A hit through the English table behind a local table that lacks the key.
void LocalizeHitThroughTheFallback(benchmark::State& state) {
  const TagStrings strings(TagStrings::stringTableEXIF(ETLanguage::german),
                           TagStrings::stringTableEXIF(ETLanguage::english));
  for (auto _ : state) {
    benchmark::DoNotOptimize(strings.localize({"EXIF", "Orientation", "1"}));
  }
}
BENCHMARK(LocalizeHitThroughTheFallback);

// The catalogue's own strings of the biggest stream, in this process's language.
void LocalizeTitleOfTheBiggestStream(benchmark::State& state) {
  const TagItem& item = TagItem::itemDICOMFileMetaInfoGroupLength();
  for (auto _ : state) {
    benchmark::DoNotOptimize(item.localizedKey());
  }
}
BENCHMARK(LocalizeTitleOfTheBiggestStream);

}  // namespace

int main(int argc, char** argv) {
  if (argc >= 2 && std::string_view(argv[1]).starts_with(firstUseOption)) {
    const bool languageKnown = argc >= 3 && std::string_view(argv[2]) == "--language-known";
    return measureFirstUse(std::string_view(argv[1]).substr(firstUseOption.size()), languageKnown);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
