#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace lorvane::test {

// Runs a program of ETSettings' binaries folder ("exiftool", "atomicparsley") directly, with
// the host's environment and standard error, and gives what it wrote to standard output.
// Lets a test prepare or inspect files without going through the code under test.
// Throws std::runtime_error when the program can't be started.
std::string outsideToolOutput(const std::string& name, const std::vector<std::string>& arguments);

// The value of one tag as ExifTool prints it with "-s3" (value only), without the line end;
// empty when the file has no such tag.
std::string exifToolValue(const std::filesystem::path& file, const std::string& tag);

}  // namespace lorvane::test
