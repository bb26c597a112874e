#pragma once

#include <cstddef>

namespace lorvane::platform {

// Asks the system to back a large buffer, not yet touched, with huge pages where it can:
// filling a gigabyte in 4 KiB pages costs a page fault every 4 KiB, which then dominates the
// cost of draining a fast child. A hint only; ignored where the system has no such thing.
void adviseHugePages(const void* data, std::size_t size);

}  // namespace lorvane::platform
