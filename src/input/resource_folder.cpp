#include "input/resource_folder.hpp"

#include <optional>
#include <string_view>

#include "platform/environment.hpp"
#include "platform/library_location.hpp"

namespace lorvane {
namespace {

// Whether a file's name lies inside a folder's, by their text alone. Only for a file name that
// lexical normalisation would leave as it is, absolute and without "." or ".." parts.
bool isInside(std::string_view file, std::string_view folder) {
  const bool plain = file.starts_with('/') && file.find("/.") == std::string_view::npos &&
                     file.find("//") == std::string_view::npos;
  return plain && file.size() > folder.size() && file.starts_with(folder) &&
         file[folder.size()] == '/';
}

}  // namespace

std::string resourceFolderName() {
  if (auto overridden = environmentValue("LORVANE_RESOURCE_DIR")) {
    return *overridden;
  }
  const std::string buildFolder = LORVANE_BUILD_RESOURCE_DIR;
  // share/lorvane sits two levels below the build tree's root.
  const std::string_view buildRoot =
      std::string_view(buildFolder).substr(0, buildFolder.rfind('/', buildFolder.rfind('/') - 1));
  const auto library = platform::libraryLocation();
  if (!library) {
    // Can't tell where we were loaded from: a build tree that still exists is the better guess.
    std::error_code error;
    return std::filesystem::is_directory(buildFolder, error) ? buildFolder
                                                             : LORVANE_INSTALL_RESOURCE_DIR;
  }
  // The loader's name of the library mostly leads there without touching the file system: as
  // it stands, normalised, and only where neither does with its symbolic links resolved (a
  // linked lib folder, say).
  if (isInside(*library, buildRoot)) {
    return buildFolder;
  }
  const auto folderOf = [&](const std::filesystem::path& file) -> std::optional<std::string> {
    if (isInside(file.native(), buildRoot)) {
      return buildFolder;
    }
    const auto besideLibrary =
        (file.parent_path() / LORVANE_RESOURCE_DIR_FROM_LIBRARY).lexically_normal();
    std::error_code error;
    if (std::filesystem::is_directory(besideLibrary, error)) {
      return besideLibrary.native();
    }
    return std::nullopt;
  };
  std::error_code error;
  if (auto folder = folderOf(std::filesystem::absolute(*library, error).lexically_normal())) {
    return *folder;
  }
  if (auto folder = folderOf(std::filesystem::weakly_canonical(*library, error));
      folder && !error) {
    return *folder;
  }
  return LORVANE_INSTALL_RESOURCE_DIR;
}

std::filesystem::path resourceFolder() { return resourceFolderName(); }

}  // namespace lorvane
