#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace lorvane::platform {

// A file that holds bytes for the time an outside tool needs a name to read them by: made
// readable by this user alone, in a memory-backed folder where the system has one (/dev/shm),
// else in the temporary folder, named with the given extension, and removed when the object
// dies, whatever happened while it lived. No descriptor of it stays open (none can leak into a
// child). Throws std::system_error when it can't be made or filled.
class PrivateFile {
public:
  // `extension` without its dot, already safe as part of a file name ("jpg"); empty: none.
  PrivateFile(std::span<const std::byte> bytes, std::string_view extension);
  ~PrivateFile();
  PrivateFile(const PrivateFile&) = delete;
  PrivateFile& operator=(const PrivateFile&) = delete;

  const std::string& path() const { return path_; }

  // The folder such files are made in.
  static std::filesystem::path folder();

private:
  std::string path_;
};

}  // namespace lorvane::platform
