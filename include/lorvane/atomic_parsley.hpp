#pragma once

#include <filesystem>

namespace lorvane {

// The one operation the library offers on MP4-family files, through the tool AtomicParsley
// from ETSettings' binaries folder.
class AtomicParsley {
public:
  // Removes the reverse-DNS atom "iTunMOVI" (domain com.apple.iTunes) from the file, in place
  // and without a backup, and returns when the tool has exited. The tool shares the host's
  // environment and standard streams. Nothing is reported: not a missing tool, not a file
  // the tool could not change, not a file without such an atom.
  static void deleteiTunMOVI(const std::filesystem::path& url);
};

}  // namespace lorvane
