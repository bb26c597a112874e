#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>

#include "platform/pipe.hpp"
#include "platform/stream_reader.hpp"
#include "run/run_state.hpp"

namespace lorvane {

// The reader of one standard stream of the tool. From `startListening()` on, it owns the pipe
// that the child writes to, and a thread of its own hands each chunk to `readAvailableData` in
// order and tells the run state when the stream has ended. The run waits for that end before
// it calls `flushPendingData()`, so chunks and flush never overlap and the flush comes after
// the last chunk. All a reader gives the run goes through the run state.
//
// A reader that never listens decodes what it is handed: a kept tool's stream carries many
// commands, and the part of one command goes to a reader of that command alone.
class ETPipe {
public:
  // A listening reader: an ETParserPipe when `parses` (which keeps text that isn't UTF-8 when
  // `keepsInvalidText`), else an ETBinaryPipe.
  static std::unique_ptr<ETPipe> make(bool parses, RunState& run, bool keepsInvalidText = false);
  // The same reader without a pipe: chunks come through `readAvailableData`, and
  // `finishData()` ends them.
  static std::unique_ptr<ETPipe> makeDecoder(bool parses, RunState& run,
                                             bool keepsInvalidText = false);

  explicit ETPipe(RunState& run);
  virtual ~ETPipe();
  ETPipe(const ETPipe&) = delete;
  ETPipe& operator=(const ETPipe&) = delete;

  // The pipe whose write end becomes the child's stream, made by `startListening()`; the run
  // closes its own copy of that end once the child has it.
  platform::Pipe& stdPipe() { return stdPipe_; }

  void startListening();
  // Closes our write end and blocks until the stream has ended and its last chunk is read.
  // A derived reader calls it in its destructor, before its own fields go.
  void waitForEndOfStream();

  // One chunk of the stream, never called for the empty chunk at its end. A bare ETPipe
  // discards it.
  virtual void readAvailableData(std::span<const std::byte> data);
  // Once, after the end of the stream: takes what is left in the pipe, then `finishData()`.
  void flushPendingData();
  // Once, after the last chunk: hands on what is held back and the result.
  virtual void finishData();

protected:
  RunState& run() { return run_; }

private:
  RunState& run_;
  platform::Pipe stdPipe_;
  std::optional<platform::StreamReader> listener_;
};

// Gathers the stream's bytes as they are and stores them into `binaryData` of the output in
// one step at the flush. The bytes are kept in blocks while they come and joined once, each
// block freed as soon as it is copied, so the peak stays close to the size of the data.
class ETBinaryPipe final : public ETPipe {
public:
  using ETPipe::ETPipe;
  ~ETBinaryPipe() override { waitForEndOfStream(); }

  void readAvailableData(std::span<const std::byte> data) override;
  void finishData() override;

private:
  std::vector<std::vector<std::byte>> blocks_;
  std::size_t size_ = 0;
};

}  // namespace lorvane
