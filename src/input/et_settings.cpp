#include <lorvane/et_settings.hpp>

#include <optional>
#include <system_error>

#include "platform/environment.hpp"
#include "input/resource_folder.hpp"

namespace lorvane {
namespace {

std::filesystem::path temporaryFolder() {
  std::error_code error;
  auto folder = std::filesystem::temp_directory_path(error);
  return error ? std::filesystem::path("/tmp") : folder;
}

// Where an application keeps its data for this user, the XDG way; nothing when unknown.
std::optional<std::filesystem::path> userDataFolder() {
  if (auto folder = environmentValue("XDG_DATA_HOME")) {
    return std::filesystem::path(*folder);
  }
  if (auto home = environmentValue("HOME")) {
    return std::filesystem::path(*home) / ".local" / "share";
  }
  return std::nullopt;
}

}  // namespace

ETSettings& ETSettings::shared() {
  static ETSettings instance;
  return instance;
}

ETSettings::ETSettings() : nonAtomicBinariesFolderURL(resourceFolder() / "binaries") {
  const auto dataFolder = userDataFolder();
  nonAtomicBackupFolderURL = dataFolder ? *dataFolder / "org.lorvane.tag/Backup"
                                        : temporaryFolder();
}

std::filesystem::path ETSettings::binariesFolderURL() const {
  return atomic.read([&] { return nonAtomicBinariesFolderURL; });
}

void ETSettings::setBinariesFolderURL(std::filesystem::path url) {
  atomic.write([&] { nonAtomicBinariesFolderURL = std::move(url); });
}

std::filesystem::path ETSettings::backupFolderURL() const {
  return atomic.read([&] { return nonAtomicBackupFolderURL; });
}

void ETSettings::setBackupFolderURL(std::filesystem::path url) {
  atomic.write([&] { nonAtomicBackupFolderURL = std::move(url); });
}

std::int64_t ETSettings::quickTimeItemListLevel() const {
  return atomic.read([&] { return nonAtomicQuickTimeItemListLevel; });
}

void ETSettings::setQuickTimeItemListLevel(std::int64_t level) {
  atomic.write([&] { nonAtomicQuickTimeItemListLevel = level; });
}

std::int64_t ETSettings::quickTimeUserDataLevel() const {
  return atomic.read([&] { return nonAtomicQuickTimeUserDataLevel; });
}

void ETSettings::setQuickTimeUserDataLevel(std::int64_t level) {
  atomic.write([&] { nonAtomicQuickTimeUserDataLevel = level; });
}

std::int64_t ETSettings::quickTimeKeysLevel() const {
  return atomic.read([&] { return nonAtomicQuickTimeKeysLevel; });
}

void ETSettings::setQuickTimeKeysLevel(std::int64_t level) {
  atomic.write([&] { nonAtomicQuickTimeKeysLevel = level; });
}

std::vector<std::string> ETSettings::extraArguments() const {
  return atomic.read([&] { return nonAtomicExtraArguments; });
}

void ETSettings::setExtraArguments(std::vector<std::string> arguments) {
  atomic.write([&] { nonAtomicExtraArguments = std::move(arguments); });
}

}  // namespace lorvane
