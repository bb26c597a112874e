// The catalogue's costs: building all of it, the first touch of one tag, and a text lookup.
//
// The first two happen once per process, so each iteration forks a child of this program
// (which never touches the catalogue itself) and times the first use there; the child also
// reports how much its resident memory grew.
//
//   build/release/bench/lorvane-bench-catalogue --benchmark_repetitions=5

#include <lorvane/lorvane.hpp>

#include <benchmark/benchmark.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <functional>

namespace {

using namespace lorvane;

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

struct FirstUse {
  double seconds;
  long residentGrowth;
};

// Runs `use` once in a fresh child and measures it there.
FirstUse measureInChild(const std::function<void()>& use) {
  int channel[2];
  if (pipe(channel) != 0) {
    return {0, 0};
  }
  const pid_t child = fork();
  if (child == 0) {
    close(channel[0]);
    const long before = residentBytes();
    const auto start = std::chrono::steady_clock::now();
    use();
    const auto end = std::chrono::steady_clock::now();
    const FirstUse measured{std::chrono::duration<double>(end - start).count(),
                            residentBytes() - before};
    const bool sent = write(channel[1], &measured, sizeof measured) == sizeof measured;
    _exit(sent ? 0 : 1);
  }
  close(channel[1]);
  FirstUse measured{0, 0};
  const bool received = read(channel[0], &measured, sizeof measured) == sizeof measured;
  close(channel[0]);
  waitpid(child, nullptr, 0);
  return received ? measured : FirstUse{0, 0};
}

void runFirstUse(benchmark::State& state, const std::function<void()>& use) {
  double growth = 0;
  for (auto _ : state) {
    const FirstUse measured = measureInChild(use);
    state.SetIterationTime(measured.seconds);
    growth += static_cast<double>(measured.residentGrowth);
  }
  state.counters["rss_growth_MB"] =
      benchmark::Counter(growth / 1e6, benchmark::Counter::kAvgIterations);
}

void AllCasesInAFreshProcess(benchmark::State& state) {
  runFirstUse(state, [] { benchmark::DoNotOptimize(TagItem::allCases().size()); });
}
BENCHMARK(AllCasesInAFreshProcess)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

// The user's language is read on the first touch of any tag; here it is known already.
void FirstTouchOfOneTag(benchmark::State& state) {
  benchmark::DoNotOptimize(ETLanguage::local());
  runFirstUse(state, [] { benchmark::DoNotOptimize(&TagItem::itemEXIFOrientation()); });
}
BENCHMARK(FirstTouchOfOneTag)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(200);

void FirstTouchOfOneTagWithTheLanguageLookup(benchmark::State& state) {
  runFirstUse(state, [] {
    benchmark::DoNotOptimize(ETLanguage::local());
    benchmark::DoNotOptimize(&TagItem::itemEXIFOrientation());
  });
}
BENCHMARK(FirstTouchOfOneTagWithTheLanguageLookup)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond)
    ->Iterations(200);

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

BENCHMARK_MAIN();
