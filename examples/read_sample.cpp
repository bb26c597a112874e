#include <lorvane/lorvane.hpp>
#include <iostream>

int main() {
  using namespace lorvane;

  // Read a picture's EXIF tags as raw values, one option per named field.
  ETInput input;
  input.addArguments([](ETInput::ArgumentsMaker& maker) {
    maker.additional = {"-EXIF:all", "-s"};
    maker.enableRawValues = true;
    maker.extractsBinaries = false;  // on by default: values would come as bare bytes
    maker.sourcePath = "tests/data/sample.jpg";
  });
  ETOutput output = ETProcess::run(input);  // blocks until the tool has exited; never throws
  output.throwIfErrors();                   // ETError with the lines the tool complained in
  std::cout << output.decodeOutData().value_or("");

  // What the catalogue knows of one of them, in the user's language.
  const TagItem& orientation = TagItem::itemEXIFOrientation();
  std::cout << orientation.localizedTitle() << ": "                           // "EXIF Orientation"
            << orientation.localizedChoice(*orientation.index("6")) << "\n";  // "Rotate 90 CW"
}
