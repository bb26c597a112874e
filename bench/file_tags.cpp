// Files per second made from the tool's answer into FileTags: its JSON read, each tag found in
// the catalogue, titled and labelled. This is the reader's own work per file, which competes
// with the tools for the cores once there is a tool per core.
//
//   lorvane-bench-file_tags [FILE] [--benchmark_repetitions=5]
//
// FILE (default the sample picture) is read once, with the reader's arguments, for the answer.

#include <benchmark/benchmark.h>

#include <string>

#include <lorvane/lorvane.hpp>

#include "catalogue/catalogue_texts.hpp"
#include "read/tool_answer.hpp"

namespace {

using namespace lorvane;

std::string toolJson(const std::string& file) {
  ETInput input;
  input.addArguments([&](ETInput::ArgumentsMaker& maker) {
    maker.additional = {"-json", "-long", "-G0:1"};
    maker.enableSeparator = false;
    maker.extractsBinaries = false;
    maker.sourcePath = file;
  });
  const ETOutput output = ETProcess::run(input);
  output.throwIfErrors();
  return output.decodeOutData().value_or("");
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
