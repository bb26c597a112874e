#include <lorvane/atomic_queue.hpp>
#include <lorvane/et_settings.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <vector>

using lorvane::AtomicQueue;
using lorvane::ETSettings;

TEST(AtomicQueue, ReadersSeeAWriteWholeOrNotAtAll) {
  AtomicQueue atomic;
  // Two fields that one write changes together; a torn read would see them disagree.
  long nonAtomicFirst = 0;
  long nonAtomicSecond = 0;
  std::atomic<bool> torn = false;
  std::atomic<bool> writing = true;

  std::vector<std::thread> readers;
  for (int i = 0; i < 8; ++i) {
    readers.emplace_back([&] {
      do {
        const auto [first, second] =
            atomic.read([&] { return std::pair(nonAtomicFirst, nonAtomicSecond); });
        if (second != -first) {
          torn = true;
        }
      } while (writing);
    });
  }
  for (long value = 1; value <= 1000; ++value) {
    atomic.write([&] {
      nonAtomicFirst = value;
      nonAtomicSecond = -value;
    });
  }
  writing = false;
  for (auto& reader : readers) {
    reader.join();
  }
  EXPECT_FALSE(torn);
  EXPECT_EQ(atomic.read([&] { return nonAtomicFirst; }), 1000);
}

TEST(AtomicQueue, PassesResultsAndFailuresOn) {
  AtomicQueue atomic;
  EXPECT_EQ(atomic.write([] { return std::string("done"); }), "done");
  EXPECT_THROW(atomic.read([]() -> int { throw std::runtime_error("inside"); }),
               std::runtime_error);
  // The guard is free again after a failure.
  EXPECT_EQ(atomic.write([] { return 7; }), 7);
}

TEST(ETSettings, DefaultsPointAtTheBuildResourcesAndTheUserDataFolder) {
  const auto& settings = ETSettings::shared();
  if (std::getenv("LORVANE_RESOURCE_DIR") == nullptr) {
    const auto binaries = settings.binariesFolderURL();
    EXPECT_TRUE(std::filesystem::exists(binaries / "perllib" / "Image" / "ExifTool.pm"));
  }
  const auto backup = settings.backupFolderURL();
  if (std::getenv("XDG_DATA_HOME") == nullptr && std::getenv("HOME") != nullptr) {
    EXPECT_EQ(backup,
              std::filesystem::path(std::getenv("HOME")) / ".local/share/org.lorvane.tag/Backup");
  }
  EXPECT_EQ(settings.quickTimeItemListLevel(), 2);
  EXPECT_EQ(settings.quickTimeUserDataLevel(), 1);
  EXPECT_EQ(settings.quickTimeKeysLevel(), 0);
  EXPECT_TRUE(settings.extraArguments().empty());
}
