#include <lorvane/et_process.hpp>

#include <algorithm>
#include <atomic>
#include <exception>
#include <string>
#include <system_error>
#include <thread>

namespace lorvane {
namespace {

std::string describe(const std::exception_ptr& fault) {
  try {
    std::rethrow_exception(fault);
  } catch (const std::exception& error) {
    return error.what();
  } catch (...) {
    return "an exception that is no std::exception";
  }
}

}  // namespace

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
      ETProcess process;
      try {
        process.execute(inputs[i]);
      } catch (...) {
        // A handler threw, here on the thread that runs this input: only this input ends.
        const std::string fault = describe(std::current_exception());
        process.state([&](ETOutput& output) {
          output.isRunning = false;
          output.processLogs.emplace_back(ETOutput::UnknownLog{"a handler of the run threw: " +
                                                               fault + "\n"});
        });
      }
      outputs[i] = process.takeOutput();
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
