#include <lorvane/atomic_queue.hpp>

namespace lorvane {

void AtomicQueue::beginRead() const {
  std::unique_lock lock(mutex_);
  readersMayEnter_.wait(lock, [&] { return !writerActive_ && waitingWriters_ == 0; });
  ++activeReaders_;
}

void AtomicQueue::endRead() const {
  std::lock_guard lock(mutex_);
  if (--activeReaders_ == 0 && waitingWriters_ > 0) {
    writerMayEnter_.notify_one();
  }
}

void AtomicQueue::beginWrite() {
  std::unique_lock lock(mutex_);
  ++waitingWriters_;
  writerMayEnter_.wait(lock, [&] { return !writerActive_ && activeReaders_ == 0; });
  --waitingWriters_;
  writerActive_ = true;
}

void AtomicQueue::endWrite() {
  std::lock_guard lock(mutex_);
  writerActive_ = false;
  if (waitingWriters_ > 0) {
    writerMayEnter_.notify_one();
  } else {
    readersMayEnter_.notify_all();
  }
}

}  // namespace lorvane
