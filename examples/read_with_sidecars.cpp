// Reads files with their XMP sidecars, or data from standard input, and prints where each XMP
// tag came from.
//   lorvane-example-read-with-sidecars FILE...
//   some-command | lorvane-example-read-with-sidecars - NAME.EXT
#include <lorvane/lorvane.hpp>

#include <iostream>
#include <iterator>
#include <string>
#include <vector>

namespace {

void print(const lorvane::FileTags& file) {
  std::cout << file.file << (file.error ? ": " + *file.error : "") << "\n";
  for (const std::string& sidecar : file.sidecars) {
    std::cout << "  with sidecar " << sidecar << "\n";
  }
  for (const std::string& warning : file.warnings) {
    std::cout << "  warning: " << warning << "\n";
  }
  for (const lorvane::FileTag& tag : file.tags) {
    if (tag.group.starts_with("XMP")) {
      // A sidecar's tag stands before the file's own tag of the same name.
      std::cout << "  " << tag.group << ":" << tag.name << " = " << tag.value.joined() << "  ("
                << (tag.origin.empty() ? "the file" : tag.origin) << ")\n";
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  using namespace lorvane;
  if (argc < 2) {
    std::cerr << "usage: " << argv[0] << " FILE... | - NAME.EXT\n";
    return 2;
  }
  MetadataReader reader({.sidecars = SidecarPolicy::merge});
  if (std::string(argv[1]) == "-") {
    // The bytes go through a private temporary file that the reader removes in any case.
    const std::string text(std::istreambuf_iterator<char>(std::cin), {});
    const auto* data = reinterpret_cast<const std::byte*>(text.data());
    print(reader.readBytes({data, text.size()}, argc > 2 ? argv[2] : "-"));
    return 0;
  }
  const std::vector<std::string> files(argv + 1, argv + argc);
  reader.readEach(files, [](FileTags&& file) { print(file); });
  return 0;
}
