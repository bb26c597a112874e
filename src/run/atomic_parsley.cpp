#include <lorvane/atomic_parsley.hpp>

#include <lorvane/et_settings.hpp>

#include "platform/child_process.hpp"

namespace lorvane {

void AtomicParsley::deleteiTunMOVI(const std::filesystem::path& url) {
  // The empty value of "--rDNSatom" is an argument of its own: it is what tells the tool to
  // remove the atom rather than set it. A child that can't be started is dropped quietly, and
  // the exit status is of no interest. The platform's "utility" quality of service has no
  // POSIX twin, so the tool runs at the host's priority.
  platform::ChildProcess tool({
      .executable = ETSettings::shared().binariesFolderURL() / "atomicparsley",
      .arguments = {url.string(), "--rDNSatom", "", "name=iTunMOVI", "domain=com.apple.iTunes",
                    "--overWrite"},
  });
  tool.waitForExit();
}

}  // namespace lorvane
