#include "platform/library_location.hpp"

#include <dlfcn.h>
#if defined(__GLIBC__)
#include <link.h>
#endif

#include <cstdint>
#include <string>

namespace lorvane::platform {
namespace {

#if defined(__GLIBC__)
// glibc's dladdr() walks every dynamic symbol of the object to name the nearest one, and the
// catalogue exports some 20,000: over 100 us. Which object holds an address is all we want,
// and the loaded objects' segments tell that at once.
struct Search {
  std::uintptr_t address;
  std::optional<std::string> file;
};

int findObject(dl_phdr_info* info, std::size_t, void* data) {
  auto* search = static_cast<Search*>(data);
  for (int index = 0; index < info->dlpi_phnum; ++index) {
    const auto& segment = info->dlpi_phdr[index];
    const std::uintptr_t start = info->dlpi_addr + segment.p_vaddr;
    if (segment.p_type == PT_LOAD && search->address >= start &&
        search->address - start < segment.p_memsz) {
      search->file = info->dlpi_name;
      return 1;
    }
  }
  return 0;
}

std::optional<std::string> loadedFile(const void* address) {
  Search search{reinterpret_cast<std::uintptr_t>(address), std::nullopt};
  dl_iterate_phdr(&findObject, &search);
  // The program itself has no name in the list of loaded objects.
  if (search.file && search.file->empty()) {
    search.file = "/proc/self/exe";
  }
  return search.file;
}
#else
std::optional<std::string> loadedFile(const void* address) {
  Dl_info info{};
  if (dladdr(address, &info) == 0 || info.dli_fname == nullptr || info.dli_fname[0] == '\0') {
    return std::nullopt;
  }
  return info.dli_fname;
}
#endif

}  // namespace

std::optional<std::string> libraryLocation() {
  // Any function of ours will do to name the loaded object we belong to.
  const auto file = loadedFile(reinterpret_cast<const void*>(&libraryLocation));
  if (!file || file->empty()) {
    return std::nullopt;
  }
  // As the loader named it, which costs no system call; normalising it and resolving its
  // symbolic links are the caller's to do where it matters.
  return file;
}

}  // namespace lorvane::platform
