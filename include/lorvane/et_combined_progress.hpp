#pragma once

#include <functional>
#include <memory>
#include <span>

#include <lorvane/et_batches.hpp>
#include <lorvane/et_input.hpp>

namespace lorvane {

// One progress value over several runs, each run counting by its weight (its number of
// files, say): what an application draws as one bar for a job spread over several inputs.
//
//   ETCombinedProgress total(batches, [](double progress) { drawBar(progress); });
//   std::vector<ETOutput> outputs = ETProcess::runAll(batches.inputs, jobs);
//
// It hooks into the progress and end handlers of the inputs; handlers already there still
// run, before it. `onChange` gets the new total, from 0 to 1, each time it grows: on the
// thread that saw the change, one call at a time (so it may draw without a lock of its own)
// and never with a smaller value than before. It must not reach back into this object. The
// hooks share the state with this object, so it may go before the runs end. An input whose
// run has ended counts as done even when its tool printed no progress.
class ETCombinedProgress {
public:
  using Handler = std::function<void(double)>;

  // Hooks into `inputs`, the k-th counting by weights[k] (as many weights as inputs; all 0
  // count alike).
  ETCombinedProgress(std::span<ETInput> inputs, std::span<const double> weights, Handler onChange);
  // Hooks into `batches.inputs`, each counting by its number of files.
  ETCombinedProgress(ETBatches& batches, Handler onChange);

  // The total as it stands.
  double progress() const;

private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace lorvane
