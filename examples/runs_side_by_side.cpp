// Reads files' tags as JSON in two runs side by side under one progress bar, then once more
// through kept tools, one command per file.
//   lorvane-example-runs-side-by-side FILE...
#include <lorvane/lorvane.hpp>
#include <iostream>

namespace {

void draw(double progress) {
  std::cerr << "\r" << static_cast<int>(progress * 100) << "%";
}

}  // namespace

int main(int argc, char** argv) {
  using namespace lorvane;
  using Maker = ETInput::ArgumentsMaker;
  const std::vector<std::string> files(argv + 1, argv + argc);

  ETBatches batches = ETBatches::spread(files, 2, [](const std::string& file, Maker& maker) {
    maker.additional = {"-json"};
    maker.sourcePath = file;
  });
  ETCombinedProgress bar(batches, [](double progress) { draw(progress); });  // one call at a time
  std::vector<ETOutput> outputs = ETProcess::runAll(batches.inputs, 2);
  // outputs[k] holds files[batches.places[k][0]], files[batches.places[k][1]], ...
  std::cerr << "\n";
  for (std::size_t k = 0; k < outputs.size(); ++k) {
    std::cout << batches.places[k].size() << " files: "
              << outputs[k].decodeOutData().value_or("").size() << " bytes of JSON\n";
  }

  // The same files again, each a run of its own on tools that stay: the first file pays for
  // starting a tool, the others don't.
  std::vector<ETInput> inputs(files.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    inputs[i].addArguments([&](Maker& maker) {
      maker.additional = {"-json"};
      maker.sourcePath = files[i];
    });
  }
  if (inputs.empty()) {
    return 0;
  }
  const ETInput& input = inputs.front();
  ETSession session;                                 // no tool yet: the first run starts it
  ETOutput out = session.run(input);                 // as ETProcess::run(input), without the start
  ETSessionPool pool(2);                             // 0: one session per hardware thread
  std::vector<ETOutput> outs = pool.runAll(inputs);  // outputs in the inputs' order
  std::cout << files.front() << ": " << out.decodeOutData().value_or("").size() << " bytes\n";
  for (std::size_t i = 0; i < outs.size(); ++i) {
    std::cout << files[i] << ": " << outs[i].decodeOutData().value_or("").size() << " bytes\n";
  }
}
