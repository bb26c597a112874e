#pragma once

// What every benchmark program reports its figures with.

#include <algorithm>
#include <cstddef>
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

}  // namespace lorvane::bench
