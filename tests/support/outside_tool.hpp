#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace lorvane::test {

// Environment variables to set, or to remove when mapped to nothing.
using EnvironmentChanges = std::map<std::string, std::optional<std::string>>;

// Runs a program to its end, with this process's environment plus `changes` and its standard
// error, and gives what it wrote to standard output. Throws std::runtime_error when the
// program can't be started.
std::string programOutput(const std::filesystem::path& program,
                          const std::vector<std::string>& arguments,
                          const EnvironmentChanges& changes = {});

// programOutput for a program of ETSettings' binaries folder ("exiftool", "atomicparsley"):
// lets a test prepare or inspect files without going through the code under test.
std::string outsideToolOutput(const std::string& name, const std::vector<std::string>& arguments);

// The value of one tag as ExifTool prints it with "-s3" (value only), without the line end;
// empty when the file has no such tag.
std::string exifToolValue(const std::filesystem::path& file, const std::string& tag);

}  // namespace lorvane::test
