#pragma once

#include <lorvane/et_input.hpp>
#include <lorvane/et_output.hpp>

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace lorvane {

// Runs every input through `runOne` on up to `workerCount` threads, the caller's among them,
// and gives the outputs in the inputs' order. A worker takes the next input not yet taken
// until none is left, so a long run doesn't hold back the inputs behind it. Threads are
// started only as far as there are inputs, and none outlives the call. `runOne` must not throw.
std::vector<ETOutput> runEach(std::span<const ETInput> inputs, std::size_t workerCount,
                              const std::function<ETOutput(const ETInput&)>& runOne);

}  // namespace lorvane
