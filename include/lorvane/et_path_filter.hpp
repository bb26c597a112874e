#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace lorvane {

// Selects files by the suffix of their name, on two sides: as "-ext" arguments that let the
// tool pick the files (ArgumentsMaker::filePathFilter), and as a filter over the application's
// own list of paths. Every suffix comes from the caller; an empty list lets everything through.
class ETPathFilter {
public:
  // Suffixes without a dot, in the caller's order; repeats are kept.
  static ETPathFilter suffix(std::vector<std::string> suffixes);

  const std::vector<std::string>& suffixes() const { return suffixes_; }

  // "-ext" and the suffix for each suffix, in order, unchanged: the tool does its own
  // letter case matching.
  std::vector<std::string> arguments() const;

  // The paths whose extension (the text behind the last dot of the file name) is one of the
  // suffixes, compared after full Unicode upper-casing; input order and repeats are kept.
  std::vector<std::filesystem::path> filter(std::span<const std::filesystem::path> urls) const;

  // Same suffixes at the same positions, letter case counting; canonically equivalent
  // spellings of a suffix are equal.
  friend bool operator==(const ETPathFilter& a, const ETPathFilter& b);

private:
  explicit ETPathFilter(std::vector<std::string> suffixes) : suffixes_(std::move(suffixes)) {}

  std::vector<std::string> suffixes_;
};

}  // namespace lorvane
