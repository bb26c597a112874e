// Writes NAME=VALUE assignments into each file's XMP sidecar, never into the file, and keeps
// the sidecar's older version in a backup folder.
//   lorvane-example-write-sidecar BACKUP_FOLDER NAME=VALUE -- FILE...
#include <lorvane/lorvane.hpp>

#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv) {
  using namespace lorvane;
  std::vector<std::string> texts;
  int next = 2;
  for (; next < argc && std::string(argv[next]) != "--"; ++next) {
    texts.emplace_back(argv[next]);
  }
  if (argc < 3 || next + 1 >= argc) {
    std::cerr << "usage: " << argv[0] << " BACKUP_FOLDER NAME=VALUE... -- FILE...\n";
    return 2;
  }
  const auto checked = checkAssignments(texts, ETLanguage::english);
  if (std::holds_alternative<std::vector<AssignmentRefusal>>(checked)) {
    std::cerr << "refused by the catalogue\n";
    return 1;
  }
  MetadataWriter writer({.backups = BackupPolicy::folder,
                         .backupFolder = argv[1],
                         .target = WriteTarget::sidecar});
  const std::vector<std::string> files(argv + next + 1, argv + argc);
  int status = 0;
  for (const FileWriteResult& result :
       writer.write(std::get<std::vector<TagAssignment>>(checked), files)) {
    const auto& sidecar = *result.sidecar;  // always there when writing to sidecars
    const bool written = sidecar.outcome == FileWriteResult::Outcome::updated;
    std::cout << result.file << ": sidecar " << sidecar.path
              << (sidecar.created ? " created" : written ? " written" : " not written");
    if (sidecar.original) {
      std::cout << ", its older version kept as " << *sidecar.original;
    }
    std::cout << "\n";
    for (const std::string& message : result.messages) {
      std::cout << "  " << message << "\n";
    }
    status = written || sidecar.outcome == FileWriteResult::Outcome::unchanged ? status : 1;
  }
  return status;
}
