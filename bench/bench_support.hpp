#pragma once

// What every benchmark program reports its figures with.

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <fstream>
#include <string>
#include <vector>

namespace lorvane::bench {

inline double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

// The machine's load averages over 1, 5 and 15 minutes, so that a figure comes with its noise.
inline std::string loadAverage() {
  std::ifstream in("/proc/loadavg");
  std::string one, five, fifteen;
  in >> one >> five >> fifteen;
  return one + " " + five + " " + fifteen;
}

// Processor seconds of this process and of its waited-for children (the tools included, once
// they have ended): it hardly depends on the machine's load, as wall-clock time does.
inline double processorSeconds() {
  double total = 0;
  for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage usage{};
    getrusage(who, &usage);
    for (const timeval& time : {usage.ru_utime, usage.ru_stime}) {
      total += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    }
  }
  return total;
}

// Wall-clock and processor seconds of one piece of work.
struct Cost {
  double wall = 0;
  double processor = 0;
};

inline Cost costOf(const std::function<void()>& work) {
  const double processorBefore = processorSeconds();
  const auto start = std::chrono::steady_clock::now();
  work();
  return {std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
          processorSeconds() - processorBefore};
}

}  // namespace lorvane::bench
