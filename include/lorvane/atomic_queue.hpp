#pragma once

#include <condition_variable>
#include <mutex>

namespace lorvane {

// Guards shared mutable state: many readers side by side, or one writer alone. The guarded
// fields are named `nonAtomic...` and touched only inside `read` or `write`.
//
// A write is a barrier: it waits for the reads under way, and reads that come after it wait
// for it, so a steady stream of readers can't keep a writer out.
//
// Not re-entrant: calling `read` or `write` of the same queue from inside `write` waits for
// itself. Keep the operations small and never call user code from inside them.
class AtomicQueue {
public:
  AtomicQueue() = default;
  AtomicQueue(const AtomicQueue&) = delete;
  AtomicQueue& operator=(const AtomicQueue&) = delete;

  // Runs `operation` alongside other reads and returns its result by value; an exception it
  // throws goes on to the caller.
  template <class Operation>
  auto read(Operation&& operation) const {
    ReadScope scope(*this);
    return operation();
  }

  // Runs `operation` alone and returns its result by value; an exception it throws goes on
  // to the caller.
  template <class Operation>
  auto write(Operation&& operation) {
    WriteScope scope(*this);
    return operation();
  }

private:
  struct ReadScope {
    explicit ReadScope(const AtomicQueue& queue) : queue(queue) { queue.beginRead(); }
    ~ReadScope() { queue.endRead(); }
    const AtomicQueue& queue;
  };
  struct WriteScope {
    explicit WriteScope(AtomicQueue& queue) : queue(queue) { queue.beginWrite(); }
    ~WriteScope() { queue.endWrite(); }
    AtomicQueue& queue;
  };

  void beginRead() const;
  void endRead() const;
  void beginWrite();
  void endWrite();

  mutable std::mutex mutex_;
  mutable std::condition_variable readersMayEnter_;
  mutable std::condition_variable writerMayEnter_;
  mutable int activeReaders_ = 0;
  int waitingWriters_ = 0;
  bool writerActive_ = false;
};

}  // namespace lorvane
