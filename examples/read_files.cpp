// Shows the EXIF tags of each file as soon as it is read, with kept ExifTools side by side.
//   lorvane-example-read-files FILE...
#include <lorvane/lorvane.hpp>
#include <iostream>

int main(int argc, char** argv) {
  using namespace lorvane;

  const std::vector<std::string> files(argv + 1, argv + argc);
  MetadataReader reader({.language = ETLanguage::english, .jobs = 2});
  reader.readEach(files, [](FileTags&& file) {  // in the files' order, one file at a time
    std::cout << file.file << (file.error ? ": " + *file.error : "") << "\n";
    for (const FileTag& tag : file.tags) {
      if (tag.item != nullptr && tag.item->stream() == TagStream::streamEXIF()) {
        // The tool's printed value, or the catalogue's label where the tool printed a number.
        std::cout << "  " << tag.title << ": "
                  << (tag.label.empty() ? tag.value.joined() : tag.label) << "\n";
      }
    }
  });
}
