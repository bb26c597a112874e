// Writes when and where the files were taken, and reads it back.
//   lorvane-example-write-capture-time TIME LATITUDE LONGITUDE FILE...
//   lorvane-example-write-capture-time 2026-11-01T10:30:00+02:00 48.8584 2.2945 a.jpg
#include <lorvane/lorvane.hpp>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
  using namespace lorvane;
  const auto time = argc >= 5 ? TagDateTime::parse(argv[1]) : std::nullopt;
  if (!time) {
    std::cerr << "usage: " << argv[0] << " TIME LATITUDE LONGITUDE FILE...\n";
    return 2;
  }
  const GeoLocation where{std::stod(argv[2]), std::stod(argv[3]), std::nullopt, {}};
  const std::vector<std::string> files(argv + 4, argv + argc);

  auto assignments = assignCaptureTime(*time);  // EXIF and XMP dates, sub-seconds, zone
  auto place = assignLocation(where);           // EXIF GPS with its references
  assignments.insert(assignments.end(), place.begin(), place.end());
  MetadataWriter writer({.overwritesOriginal = true});
  for (const FileWriteResult& result : writer.write(assignments, files)) {
    std::cout << result.file << ": " << result.outcome << "\n";  // "updated"
  }

  MetadataReader reader;
  for (const std::string& file : files) {
    const FileTags read = reader.read(file);
    if (auto taken = read.captureTime()) {
      std::cout << file << ": " << taken->time.iso8601() << "\n";
    }
  }
}
