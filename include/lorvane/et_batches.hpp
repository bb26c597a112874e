#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iterator>
#include <span>
#include <type_traits>
#include <vector>

#include <lorvane/et_input.hpp>

namespace lorvane {

// One list of files spread over several inputs, one set of named options for all, so that
// `ETProcess::runAll` reads them side by side. The files are balanced by size, so big files
// don't all land in one input, and each input keeps its files in the list's order. `places`
// tells where each file came from, so results go back into the caller's order:
//
//   ETBatches batches = ETBatches::spread(files, jobs,
//       [](const std::string& file, ETInput::ArgumentsMaker& maker) {
//         maker.additional = {"-json"};
//         maker.sourcePath = file;
//       });
//   std::vector<ETOutput> outputs = ETProcess::runAll(batches.inputs, jobs);
//   // outputs[k] holds the files files[batches.places[k][0]], files[batches.places[k][1]], ...
//
// The block is called once per element with a fresh maker, exactly as in
// `ETInput::addArguments(elements, block)`. Set the inputs' other fields (`parsesOutPipe`,
// handlers) on `inputs` afterwards.
struct ETBatches {
  // No empty input: fewer than asked when there are fewer elements. The first holds the
  // list's first element.
  std::vector<ETInput> inputs;
  // places[k][j]: the index in the caller's list of the j-th element of inputs[k], rising.
  std::vector<std::vector<std::size_t>> places;

  // Spreads `elements` (paths, or strings naming files) over `count` inputs (0: one per
  // hardware thread), weighed by `fileWeight`.
  template <class Elements, class Block>
  static ETBatches spread(const Elements& elements, std::size_t count, Block&& block);

  // The same with the weights that `weigh(element)` gives (std::uint64_t each).
  template <class Elements, class Weigh, class Block>
  static ETBatches spread(const Elements& elements, std::size_t count, Weigh&& weigh,
                          Block&& block);

  // What a file costs the tool to read: its size plus a fixed share (4 MiB) for opening and
  // walking it, since the tool reads little more than the metadata at the start of most
  // files. A file that can't be read counts only that share.
  static std::uint64_t fileWeight(const std::filesystem::path& file);

  // The places of each batch for these weights: the heaviest first, each to the batch that
  // carries least so far, then every batch in rising order and the batches by their first
  // place. Deterministic; no empty batch.
  static std::vector<std::vector<std::size_t>> balance(std::span<const std::uint64_t> weights,
                                                       std::size_t count);
};

template <class Elements, class Block>
ETBatches ETBatches::spread(const Elements& elements, std::size_t count, Block&& block) {
  return spread(
      elements, count,
      [](const auto& element) { return fileWeight(std::filesystem::path(element)); },
      std::forward<Block>(block));
}

template <class Elements, class Weigh, class Block>
ETBatches ETBatches::spread(const Elements& elements, std::size_t count, Weigh&& weigh,
                            Block&& block) {
  using Element = std::remove_cvref_t<decltype(*std::begin(elements))>;
  std::vector<const Element*> all;
  std::vector<std::uint64_t> weights;
  for (const auto& element : elements) {
    all.push_back(&element);
    weights.push_back(static_cast<std::uint64_t>(weigh(element)));
  }
  ETBatches batches;
  batches.places = balance(weights, count);
  for (const auto& places : batches.places) {
    std::vector<std::reference_wrapper<const Element>> chosen;
    for (const std::size_t place : places) {
      chosen.emplace_back(*all[place]);
    }
    ETInput& input = batches.inputs.emplace_back();
    input.addArguments(chosen, [&](const auto& element, ETInput::ArgumentsMaker& maker) {
      block(element.get(), maker);
    });
  }
  return batches;
}

}  // namespace lorvane
