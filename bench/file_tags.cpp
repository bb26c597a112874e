// Files per second made from the tool's answer into FileTags: its JSON read, each tag found in
// the catalogue, titled and labelled. This is the reader's own work per file, which competes
// with the tools for the cores once there is a tool per core.
//
//   lorvane-bench-file_tags [FILE] [--benchmark_repetitions=5]
//
// FILE (default the sample picture) is read once by `exiftool -j -l -G0:1` for the answer.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "catalogue_texts.hpp"
#include "tool_answer.hpp"

namespace {

using namespace lorvane;

std::string toolJson(const std::string& file) {
  const std::string command = "exiftool -j -l -G0:1 '" + file + "'";
  std::FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) {
    std::perror("popen");
    std::exit(1);
  }
  std::string json;
  char buffer[1 << 16];
  for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
    json.append(buffer, got);
  }
  ::pclose(pipe);
  return json;
}

std::string file = LORVANE_SOURCE_DIR "/tests/data/sample.jpg";

void makeFileTags(benchmark::State& state) {
  const detail::ToolAnswer answer{toolJson(file), {}};
  const detail::CatalogueTexts texts(ETLanguage::english);
  std::size_t tags = 0;
  for (auto _ : state) {
    const auto files = detail::makeFileTags(file, file, answer, texts);
    tags = files.front().tags.size();
    benchmark::DoNotOptimize(files);
  }
  state.SetItemsProcessed(state.iterations());
  state.counters["tags"] = static_cast<double>(tags);
  state.counters["json_bytes"] = static_cast<double>(answer.json.size());
}
BENCHMARK(makeFileTags)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (argc > 1) {
    file = argv[1];
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
