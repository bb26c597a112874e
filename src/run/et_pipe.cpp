#include "run/et_pipe.hpp"

#include <algorithm>
#include <exception>
#include <string>

#include "run/et_parser_pipe.hpp"
#include "platform/memory.hpp"

namespace lorvane {
namespace {

// Enough for a fast child to hand over large chunks; the system caps it for unprivileged users.
constexpr std::size_t pipeCapacity = 1024 * 1024;

// Blocks grow from small to large, so a short output costs little and a huge one few blocks.
// The largest lie above the size from which the allocator maps memory of its own, so freeing
// a block gives its memory back to the system at once.
constexpr std::size_t firstBlockCapacity = 64 * 1024;
constexpr std::size_t largestBlockCapacity = 64 * 1024 * 1024;

}  // namespace

std::unique_ptr<ETPipe> ETPipe::make(bool parses, RunState& run, bool keepsInvalidText) {
  auto pipe = makeDecoder(parses, run, keepsInvalidText);
  pipe->startListening();
  return pipe;
}

std::unique_ptr<ETPipe> ETPipe::makeDecoder(bool parses, RunState& run, bool keepsInvalidText) {
  if (parses) {
    return std::make_unique<ETParserPipe>(run, keepsInvalidText);
  }
  return std::make_unique<ETBinaryPipe>(run);
}

ETPipe::ETPipe(RunState& run) : run_(run) {}

ETPipe::~ETPipe() { waitForEndOfStream(); }

void ETPipe::startListening() {
  stdPipe_ = platform::makePipe(pipeCapacity);
  listener_.emplace(stdPipe_.readEnd.get(), [this](std::span<const std::byte> chunk) {
    if (chunk.empty()) {
      run_.streamEnded();
      return;
    }
    try {
      readAvailableData(chunk);
    } catch (const std::exception& error) {
      // Out of memory on this thread: the chunk is lost, the stream is still drained.
      run_.appendUnknownLine(std::string("a chunk of the tool's output was lost: ") + error.what());
    }
  });
}

void ETPipe::waitForEndOfStream() {
  stdPipe_.writeEnd.close();
  listener_.reset();
}

void ETPipe::readAvailableData(std::span<const std::byte>) {}

void ETPipe::flushPendingData() {
  if (stdPipe_.readEnd.isOpen()) {
    const auto rest = platform::readToEnd(stdPipe_.readEnd.get());
    if (!rest.empty()) {
      readAvailableData(rest);
    }
  }
  finishData();
}

void ETPipe::finishData() {}

void ETBinaryPipe::readAvailableData(std::span<const std::byte> data) {
  size_ += data.size();
  while (!data.empty()) {
    if (blocks_.empty() || blocks_.back().size() == blocks_.back().capacity()) {
      const std::size_t capacity =
          blocks_.empty() ? firstBlockCapacity
                          : std::min(2 * blocks_.back().capacity(), largestBlockCapacity);
      auto& block = blocks_.emplace_back();
      block.reserve(capacity);
      platform::adviseHugePages(block.data(), capacity);
    }
    auto& block = blocks_.back();
    const std::size_t taken = std::min(data.size(), block.capacity() - block.size());
    block.insert(block.end(), data.begin(), data.begin() + static_cast<std::ptrdiff_t>(taken));
    data = data.subspan(taken);
  }
}

void ETBinaryPipe::finishData() {
  std::vector<std::byte> binaryData;
  if (blocks_.size() == 1) {
    binaryData = std::move(blocks_.front());
  } else {
    binaryData.reserve(size_);
    platform::adviseHugePages(binaryData.data(), size_);
    for (auto& block : blocks_) {
      binaryData.insert(binaryData.end(), block.begin(), block.end());
      std::vector<std::byte>().swap(block);
    }
  }
  blocks_.clear();
  size_ = 0;
  run().change([&](ETOutput& output) { output.binaryData = std::move(binaryData); });
}

}  // namespace lorvane
