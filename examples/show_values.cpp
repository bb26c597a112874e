// Shows when and where a file was taken, and the pictures inside it.
//   lorvane-example-show-values FILE
#include <lorvane/lorvane.hpp>
#include <iostream>

int main(int argc, char** argv) {
  using namespace lorvane;
  if (argc != 2) {
    std::cerr << "usage: " << argv[0] << " FILE\n";
    return 2;
  }

  MetadataReader reader;
  FileTags file = reader.read(argv[1]);
  if (auto taken = file.captureTime()) {
    std::cout << taken->time.iso8601()                     // "2026-11-01T10:30:00.123+02:00"
              << " from " << taken->source                 // "Composite:SubSecDateTimeOriginal"
              << ", zone: " << taken->zoneSource << "\n";  // "EXIF:OffsetTimeOriginal"
    if (auto utc = taken->time.utc()) {                    // where the zone is known
      std::cout << utc->time_since_epoch().count() << " microseconds since 1970\n";
    }
  }
  if (auto place = file.location()) {
    std::cout << place->latitude << ", " << place->longitude  // south and west negative
              << " (" << place->altitude.value_or(0) << " m) from " << place->source << "\n";
  }

  if (auto thumbnail = reader.readBinary(argv[1], "ThumbnailImage")) {
    std::cout << "thumbnail: " << thumbnail->size() << " bytes\n";  // as exiftool -b gives it
  }
  if (auto preview = reader.readLargestPreview(argv[1])) {
    std::cout << "largest picture: " << preview->tag << ", " << preview->bytes.size() << " bytes\n";
  }
}
