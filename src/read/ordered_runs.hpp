#pragma once

// One tool command per item, on kept tools side by side: each item goes to whichever tool is
// free, and the results come back on the caller's thread in the items' order, each as soon as
// it and all before it are done. Only a bounded window of items runs ahead of the one the
// caller waits for, so memory depends on the tools, never on the number of items. An item's
// answer may send it again as several commands (an item of many files whose joint answer
// can't be split file by file is read again one file at a time).

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include <lorvane/et_input.hpp>
#include <lorvane/et_output.hpp>
#include <lorvane/et_process.hpp>

#include "read/tool_slot.hpp"

namespace lorvane::detail {

// The tools of a reader or writer, made as they are first needed and kept between calls, and
// its cancel, which stays once given.
class ToolSlots {
public:
  explicit ToolSlots(std::size_t count);

  // The first `count` tools, made if need be.
  std::vector<ToolSlot*> take(std::size_t count);
  void cancel();
  bool isCancelled() const { return cancelled_.load(); }
  // How many tools there may be.
  std::size_t size() const { return size_; }

private:
  std::size_t size_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<ToolSlot>> slots_;
  std::atomic<bool> cancelled_{false};
};

// One command that ran: what was asked and what came back.
struct CommandAnswer {
  ETInput input;
  ETOutput output;
};

// makeResult (with the answers of the item's commands, in order), deliver and onProgress (the
// share delivered) run on the caller's thread, which would otherwise only wait: a tool's thread
// sends its next command as soon as the last one is answered, so the tool never waits for what
// is made of an answer. Stops early on a cancel (nothing more is delivered) or on a throw of
// any of them, which comes out of here once every tool has stopped.
//
// With `sendsAhead`, each tool gets its next item behind the one it runs, so it never waits
// for its thread between items. Only for commands that may be repeated: an item sent ahead to
// a tool that then fails (a time limit, a crash) is sent again to a fresh one.
//
// `redo` (if any) looks at each item's answer on the tool's thread; the inputs it gives, when
// any, run instead, one after the other on the same tool, and makeResult gets their answers.
// An input without arguments is nothing to run: its answer is an empty output.
// `window`: the items that may be done or under way ahead of the one the caller waits for;
// 0: four per tool and eight more.
template <class Result>
void runInOrder(
    ToolSlots& tools, bool sendsAhead, std::size_t count,
    const std::function<ETInput(std::size_t)>& makeInput,
    const std::function<Result(std::size_t, std::vector<CommandAnswer>&&)>& makeResult,
    const std::function<void(Result&&)>& deliver, const std::function<void(double)>& onProgress,
    const std::function<std::vector<ETInput>(std::size_t, const CommandAnswer&)>& redo = {},
    std::size_t window = 0) {
  if (count == 0 || tools.isCancelled()) {
    return;
  }
  const std::vector<ToolSlot*> slots = tools.take(count);
  if (window == 0) {
    window = 4 * slots.size() + 8;
  }
  // A cancel from another thread can't wake the waits below; they look again this often.
  constexpr auto recheck = std::chrono::milliseconds(50);
  std::mutex mutex;
  std::condition_variable changed;
  // The answers not yet delivered, with the inputs that asked for them.
  std::map<std::size_t, std::vector<CommandAnswer>> done;
  std::size_t next = 0;
  std::size_t delivered = 0;
  bool stopping = false;
  std::exception_ptr failure;
  const auto fail = [&](std::exception_ptr error) {
    std::lock_guard lock(mutex);
    if (!failure) {
      failure = std::move(error);
    }
    stopping = true;
  };

  // One command on `slot`, with the command sent ahead behind it, if any.
  const auto run = [&tools](ToolSlot& slot, ETInput& input,
                            const std::optional<std::pair<std::size_t, ETInput>>& ahead) {
    // A cancel given after the last look above and before the tool starts stops it here.
    input.onStartHandler = [&tools](ETProcess& process) {
      if (tools.isCancelled()) {
        process.cancel();
      }
    };
    // An input without arguments is nothing to run (a writer's file refused before it), nor
    // to send ahead.
    if (input.arguments.empty()) {
      return ETOutput{};
    }
    return ahead && !ahead->second.arguments.empty() ? slot.run(input, ahead->second)
                                                     : slot.run(input);
  };

  const auto work = [&](ToolSlot& slot) {
    // The item this tool has been sent ahead, with its input.
    std::optional<std::pair<std::size_t, ETInput>> ahead;
    for (;;) {
      std::size_t index = 0;
      {
        std::unique_lock lock(mutex);
        while (!ahead && !stopping && next < count && next >= delivered + window &&
               !tools.isCancelled()) {
          changed.wait_for(lock, recheck);
        }
        if (stopping || tools.isCancelled() || (!ahead && next >= count)) {
          return;
        }
        index = ahead ? ahead->first : next++;
      }
      try {
        ETInput input = ahead ? std::move(ahead->second) : makeInput(index);
        ahead.reset();
        {
          std::lock_guard lock(mutex);
          if (sendsAhead && next < count && next < delivered + window) {
            ahead.emplace(next++, ETInput{});
          }
        }
        if (ahead) {
          ahead->second = makeInput(ahead->first);
        }
        std::vector<CommandAnswer> answers;
        answers.push_back({std::move(input), {}});
        answers.back().output = run(slot, answers.back().input, ahead);
        if (redo) {
          std::vector<ETInput> again = redo(index, answers.front());
          if (!again.empty()) {
            answers.clear();
            for (auto& part : again) {
              // Part of an item is never delivered.
              if (tools.isCancelled()) {
                return;
              }
              answers.push_back({std::move(part), {}});
              answers.back().output = run(slot, answers.back().input, std::nullopt);
            }
          }
        }
        {
          std::lock_guard lock(mutex);
          done.emplace(index, std::move(answers));
        }
      } catch (...) {
        fail(std::current_exception());
      }
      changed.notify_all();
    }
  };
  std::vector<std::thread> workers;
  workers.reserve(slots.size());
  for (ToolSlot* slot : slots) {
    workers.emplace_back([&work, slot] { work(*slot); });
  }

  try {
    while (delivered < count) {
      std::optional<std::vector<CommandAnswer>> answer;
      {
        std::unique_lock lock(mutex);
        while (!stopping && !tools.isCancelled() && !done.contains(delivered)) {
          changed.wait_for(lock, recheck);
        }
        if (stopping || tools.isCancelled()) {
          break;
        }
        auto found = done.find(delivered);
        answer.emplace(std::move(found->second));
        done.erase(found);
      }
      deliver(makeResult(delivered, std::move(*answer)));
      {
        std::lock_guard lock(mutex);
        ++delivered;
      }
      changed.notify_all();
      if (onProgress) {
        onProgress(static_cast<double>(delivered) / static_cast<double>(count));
      }
    }
  } catch (...) {
    fail(std::current_exception());
  }
  bool failed = false;
  {
    std::lock_guard lock(mutex);
    stopping = true;
    failed = failure != nullptr;
  }
  changed.notify_all();
  if (failed) {
    // The commands under way are of no more use.
    for (ToolSlot* slot : slots) {
      slot->cancel();
    }
  }
  for (auto& worker : workers) {
    worker.join();
  }
  // A cancelled reader or writer keeps no tool, not even an idle one.
  if (tools.isCancelled()) {
    for (ToolSlot* slot : slots) {
      slot->close();
    }
  }
  if (failure) {
    std::rethrow_exception(failure);
  }
}

}  // namespace lorvane::detail
