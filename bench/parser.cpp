// Lines per second through the message parser, for ordinary lines (no recogniser's gate
// passes) and for progress lines (gate and expression, then a progress change). The chunks
// are handed to the parser directly, as the reader thread would.
//
//   build/release/bench/lorvane-bench-parser --benchmark_repetitions=5

#include <benchmark/benchmark.h>

#include <span>
#include <string>

#include "run/et_parser_pipe.hpp"

namespace {

using namespace lorvane;

// About a reader chunk's worth of text: `count` lines made by `line(i)`.
template <class MakeLine>
std::string makeChunk(int count, MakeLine line) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    text += line(i);
    text += '\n';
  }
  return text;
}

void parse(benchmark::State& state, const std::string& chunk, int linesPerChunk) {
  const auto bytes = std::as_bytes(std::span(chunk));
  for (auto _ : state) {
    // A fresh run each time, so the stored messages don't pile up across iterations.
    AtomicQueue atomic;
    ETOutput output;
    RunState run(atomic, output);
    ETParserPipe parser(run);
    for (int repeat = 0; repeat < 16; ++repeat) {
      parser.readAvailableData(bytes);
    }
    parser.waitForEndOfStream();
    parser.flushPendingData();
  }
  state.SetItemsProcessed(state.iterations() * 16 * linesPerChunk);
}

void ordinaryLines(benchmark::State& state) {
  constexpr int lines = 10'000;
  static const std::string chunk = makeChunk(lines, [](int i) {
    return "[ExifIFD]       ExposureTime                    : 1/" + std::to_string(100 + i % 900);
  });
  parse(state, chunk, lines);
}

void progressLines(benchmark::State& state) {
  constexpr int lines = 10'000;
  static const std::string chunk = makeChunk(lines, [](int i) {
    return "======== /home/someone/Pictures/2024/IMG_" + std::to_string(i) + ".JPG [" +
           std::to_string(i + 1) + "/" + std::to_string(lines) + "]";
  });
  parse(state, chunk, lines);
}

}  // namespace

BENCHMARK(ordinaryLines)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(progressLines)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_MAIN();
