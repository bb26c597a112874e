#include <lorvane/et_process.hpp>

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>

namespace lorvane {

std::vector<ETOutput> ETProcess::runAll(std::span<const ETInput> inputs,
                                        std::size_t maxConcurrent) {
  std::vector<ETOutput> outputs(inputs.size());
  if (maxConcurrent == 0) {
    maxConcurrent = std::max(1u, std::thread::hardware_concurrency());
  }
  const std::size_t workerCount = std::min(maxConcurrent, inputs.size());

  // A worker takes the next input not yet taken until none is left, so a long run doesn't
  // hold back the inputs behind it; each output lands in its input's place.
  std::atomic<std::size_t> next{0};
  const auto work = [&] {
    for (std::size_t i; (i = next.fetch_add(1, std::memory_order_relaxed)) < inputs.size();) {
      // Never throws: what a handler throws stays in the output of its own input.
      outputs[i] = ETProcess::run(inputs[i]);
    }
  };

  {
    // The caller's thread is one of the workers.
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

}  // namespace lorvane
