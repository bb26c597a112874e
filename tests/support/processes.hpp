#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace lorvane::test {

// A process as /proc/PID/stat shows it: "pid (name) state ppid pgrp ...".
struct ProcessStatus {
  int pid = 0;
  char state = 0;  // 'Z' for a zombie
  int parent = 0;
  int group = 0;
};

// The process now, or nothing when it is gone altogether (neither running nor a zombie).
std::optional<ProcessStatus> processStatus(int pid);

// Every process there is now; one that ends meanwhile may be left out.
std::vector<ProcessStatus> allProcesses();

// A file of /proc, or nothing when its process ended while it was read.
std::string procFile(const std::filesystem::path& file);

// How many entries a folder has, such as /proc/self/fd.
std::size_t entriesIn(const std::filesystem::path& folder);

}  // namespace lorvane::test
