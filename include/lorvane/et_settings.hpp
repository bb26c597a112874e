#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <lorvane/atomic_queue.hpp>

namespace lorvane {

// The settings of every run in this process, held in memory only. Each property is read and
// written on its own, through the one guard; getters hand out copies. Nothing is validated and
// no folder is created or checked.
//
// Defaults, worked out on first use:
// - binariesFolderURL: "binaries" in the library's resource folder (the build tree's
//   share/lorvane, the installed one, or $LORVANE_RESOURCE_DIR);
// - backupFolderURL: "org.lorvane.tag/Backup" in the user's data folder ($XDG_DATA_HOME, else
//   $HOME/.local/share), or the temporary folder itself when neither is known;
// - the QuickTime levels 2 (item list), 1 (user data) and 0 (keys); no extra arguments.
class ETSettings {
public:
  // The one instance; made on first use, also when first uses race.
  static ETSettings& shared();

  ETSettings(const ETSettings&) = delete;
  ETSettings& operator=(const ETSettings&) = delete;

  // Holds "perl", "exiftool", "perllib" and "atomicparsley".
  std::filesystem::path binariesFolderURL() const;
  void setBinariesFolderURL(std::filesystem::path url);

  // Its subfolder "Writing" is named to the tool as EXIFTOOL_SANDBOX_DIRECTORY.
  std::filesystem::path backupFolderURL() const;
  void setBackupFolderURL(std::filesystem::path url);

  // Given to the tool in decimal as EXIFTOOL_QUICKTIME_ITEM_LIST_LEVEL.
  std::int64_t quickTimeItemListLevel() const;
  void setQuickTimeItemListLevel(std::int64_t level);

  // Given to the tool in decimal as EXIFTOOL_QUICKTIME_USER_DATA_LEVEL.
  std::int64_t quickTimeUserDataLevel() const;
  void setQuickTimeUserDataLevel(std::int64_t level);

  // Given to the tool in decimal as EXIFTOOL_QUICKTIME_KEYS_LEVEL.
  std::int64_t quickTimeKeysLevel() const;
  void setQuickTimeKeysLevel(std::int64_t level);

  // Appended behind "-q" by every ArgumentsMaker that adds the default settings.
  std::vector<std::string> extraArguments() const;
  void setExtraArguments(std::vector<std::string> arguments);

private:
  ETSettings();

  mutable AtomicQueue atomic;
  std::filesystem::path nonAtomicBinariesFolderURL;
  std::filesystem::path nonAtomicBackupFolderURL;
  std::int64_t nonAtomicQuickTimeItemListLevel = 2;
  std::int64_t nonAtomicQuickTimeUserDataLevel = 1;
  std::int64_t nonAtomicQuickTimeKeysLevel = 0;
  std::vector<std::string> nonAtomicExtraArguments;
};

}  // namespace lorvane
