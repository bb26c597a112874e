#include "resource_folder.hpp"

#include <optional>
#include <string_view>

#include "environment.hpp"
#include "platform/library_location.hpp"

namespace lorvane {
namespace {

// Both paths lexically normal: a plain comparison of their text, which costs far less on the
// first touch of a catalogue tag than walking their components.
bool isInside(const std::filesystem::path& path, const std::filesystem::path& folder) {
  const std::string_view file = path.native();
  const std::string_view root = folder.native();
  return file.size() > root.size() && file.starts_with(root) &&
         (root.ends_with('/') || file[root.size()] == '/');
}

}  // namespace

std::filesystem::path resourceFolder() {
  if (auto overridden = environmentValue("LORVANE_RESOURCE_DIR")) {
    return *overridden;
  }
  const std::filesystem::path buildFolder = LORVANE_BUILD_RESOURCE_DIR;
  const auto library = platform::libraryLocation();
  if (!library) {
    // Can't tell where we were loaded from: a build tree that still exists is the better guess.
    std::error_code error;
    return std::filesystem::is_directory(buildFolder, error) ? buildFolder
                                                             : LORVANE_INSTALL_RESOURCE_DIR;
  }
  const auto folderOf = [&](const std::filesystem::path& file) -> std::optional<std::filesystem::path> {
    // share/lorvane sits two levels below the build tree's root.
    if (isInside(file, buildFolder.parent_path().parent_path())) {
      return buildFolder;
    }
    const auto besideLibrary =
        (file.parent_path() / LORVANE_RESOURCE_DIR_FROM_LIBRARY).lexically_normal();
    std::error_code error;
    if (std::filesystem::is_directory(besideLibrary, error)) {
      return besideLibrary;
    }
    return std::nullopt;
  };
  // The loader's name of the library mostly leads there without touching the file system;
  // only where it doesn't are its symbolic links resolved (a linked lib folder, say).
  if (auto folder = folderOf(*library)) {
    return *folder;
  }
  std::error_code error;
  if (auto folder = folderOf(std::filesystem::weakly_canonical(*library, error)); folder && !error) {
    return *folder;
  }
  return LORVANE_INSTALL_RESOURCE_DIR;
}

}  // namespace lorvane
