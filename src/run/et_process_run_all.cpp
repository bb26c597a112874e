#include <lorvane/et_process.hpp>

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>

#include "run/run_each.hpp"

namespace lorvane {

std::vector<ETOutput> runEach(std::span<const ETInput> inputs, std::size_t workerCount,
                              const std::function<ETOutput(const ETInput&)>& runOne) {
  std::vector<ETOutput> outputs(inputs.size());
  workerCount = std::min(workerCount, inputs.size());
  std::atomic<std::size_t> next{0};
  const auto work = [&] {
    for (std::size_t i; (i = next.fetch_add(1, std::memory_order_relaxed)) < inputs.size();) {
      outputs[i] = runOne(inputs[i]);
    }
  };
  {
    std::vector<std::jthread> helpers;
    helpers.reserve(workerCount > 0 ? workerCount - 1 : 0);
    for (std::size_t n = 1; n < workerCount; ++n) {
      try {
        helpers.emplace_back(work);
      } catch (const std::system_error&) {
        break;  // no more threads to be had: the workers there are share the inputs
      }
    }
    work();
  }  // joins the helpers
  return outputs;
}

std::vector<ETOutput> ETProcess::runAll(std::span<const ETInput> inputs,
                                        std::size_t maxConcurrent) {
  if (maxConcurrent == 0) {
    maxConcurrent = std::max(1u, std::thread::hardware_concurrency());
  }
  // Never throws: what a handler throws stays in the output of its own input.
  return runEach(inputs, maxConcurrent, [](const ETInput& input) { return ETProcess::run(input); });
}

}  // namespace lorvane
