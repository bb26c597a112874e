// Writes one tag, given by its catalogue name and a label or raw value, to every file.
//   lorvane-example-write-tag NAME=VALUE FILE...
#include <lorvane/lorvane.hpp>
#include <iostream>

int main(int argc, char** argv) {
  using namespace lorvane;
  if (argc < 3) {
    std::cerr << "usage: " << argv[0] << " NAME=VALUE FILE...\n";
    return 2;
  }

  // Checked against the catalogue first: nothing is written when the assignment is refused.
  const std::vector<std::string> texts = {argv[1]};
  const auto checked = checkAssignments(texts, ETLanguage::english);
  if (const auto* refusals = std::get_if<std::vector<AssignmentRefusal>>(&checked)) {
    std::cerr << refusals->front().name << ": refused by the catalogue\n";
    return 1;
  }
  MetadataWriter writer({.overwritesOriginal = true});
  const std::vector<std::string> files(argv + 2, argv + argc);
  int status = 0;
  for (const FileWriteResult& result :
       writer.write(std::get<std::vector<TagAssignment>>(checked), files)) {
    // Updated only where the tool said it wrote that very file.
    const bool written = result.outcome == FileWriteResult::Outcome::updated;
    std::cout << result.file << (written ? ": written" : ": not written") << "\n";
    for (const std::string& message : result.messages) {
      std::cout << "  " << message << "\n";
    }
    status = written ? status : 1;
  }
  return status;
}
