#include <lorvane/et_combined_progress.hpp>

#include <lorvane/et_process.hpp>

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace lorvane {

struct ETCombinedProgress::State {
  std::mutex mutex;
  std::vector<double> weights;
  std::vector<double> done;  // each run's share done, never going back
  double total = 0;
  Handler onChange;

  // Two readers of one run may report out of order, so a run's share only ever grows.
  void update(std::size_t run, double progress) {
    const std::lock_guard lock(mutex);
    done[run] = std::max(done[run], std::clamp(progress, 0.0, 1.0));
    double weighed = 0;
    double weightSum = 0;
    for (std::size_t k = 0; k < done.size(); ++k) {
      weighed += weights[k] * done[k];
      weightSum += weights[k];
    }
    // Summed in the same order, all runs done gives exactly 1.
    const double now = weightSum > 0 ? weighed / weightSum : 1;
    if (now > total) {
      total = now;
      if (onChange) {
        onChange(now);
      }
    }
  }
};

ETCombinedProgress::ETCombinedProgress(std::span<ETInput> inputs, std::span<const double> weights,
                                       Handler onChange)
    : state_(std::make_shared<State>()) {
  if (weights.size() != inputs.size()) {
    throw std::invalid_argument("ETCombinedProgress: one weight per input is needed");
  }
  state_->weights.assign(weights.begin(), weights.end());
  if (std::all_of(weights.begin(), weights.end(), [](double w) { return w <= 0; })) {
    std::fill(state_->weights.begin(), state_->weights.end(), 1.0);
  }
  state_->done.assign(inputs.size(), 0);
  state_->onChange = std::move(onChange);

  for (std::size_t k = 0; k < inputs.size(); ++k) {
    ETInput& input = inputs[k];
    input.onProgressHandler = [state = state_, k,
                               before = std::move(input.onProgressHandler)](ETProcess& process) {
      if (before) {
        before(process);
      }
      state->update(k, process.output().progress);
    };
    // The run's last step sets its progress to 1 without a progress call.
    input.onEndHandler = [state = state_, k,
                          before = std::move(input.onEndHandler)](ETProcess& process) {
      if (before) {
        before(process);
      }
      state->update(k, 1);
    };
  }
}

namespace {

std::vector<double> fileCounts(const ETBatches& batches) {
  std::vector<double> counts;
  for (const auto& places : batches.places) {
    counts.push_back(static_cast<double>(places.size()));
  }
  return counts;
}

}  // namespace

ETCombinedProgress::ETCombinedProgress(ETBatches& batches, Handler onChange)
    : ETCombinedProgress(batches.inputs, fileCounts(batches), std::move(onChange)) {}

double ETCombinedProgress::progress() const {
  const std::lock_guard lock(state_->mutex);
  return state_->total;
}

}  // namespace lorvane
