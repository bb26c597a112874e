#include "platform/memory.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace lorvane::platform {

void adviseHugePages(const void* data, std::size_t size) {
#ifdef MADV_HUGEPAGE
  const auto pageSize = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto start = reinterpret_cast<std::uintptr_t>(data);
  const auto alignedStart = (start + pageSize - 1) & ~(pageSize - 1);
  const auto end = (start + size) & ~(pageSize - 1);
  if (alignedStart < end) {
    madvise(reinterpret_cast<void*>(alignedStart), end - alignedStart, MADV_HUGEPAGE);
  }
#else
  (void)data;
  (void)size;
#endif
}

}  // namespace lorvane::platform
