#include "resource_folder.hpp"

#include <string_view>

#include "environment.hpp"
#include "platform/library_location.hpp"

namespace lorvane {
namespace {

bool isInside(const std::filesystem::path& path, const std::filesystem::path& folder) {
  const auto relative = path.lexically_relative(folder);
  return !relative.empty() && *relative.begin() != "..";
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
  // share/lorvane sits two levels below the build tree's root.
  if (isInside(*library, buildFolder.parent_path().parent_path())) {
    return buildFolder;
  }
  const auto besideLibrary =
      (library->parent_path() / LORVANE_RESOURCE_DIR_FROM_LIBRARY).lexically_normal();
  std::error_code error;
  if (std::filesystem::is_directory(besideLibrary, error)) {
    return besideLibrary;
  }
  return LORVANE_INSTALL_RESOURCE_DIR;
}

}  // namespace lorvane
