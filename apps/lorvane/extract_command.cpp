#include "extract_command.hpp"

#include <filesystem>
#include <fstream>
#include <ostream>

#include <lorvane/metadata_reader.hpp>

#include "interruption.hpp"
#include "tag_table.hpp"

namespace lorvane::app {
namespace {

bool startsWith(const std::vector<std::byte>& bytes, std::string_view head) {
  return bytes.size() >= head.size() &&
         std::equal(head.begin(), head.end(), bytes.begin(),
                    [](char a, std::byte b) { return static_cast<std::byte>(a) == b; });
}

// The file name's extension by what the bytes are.
std::string_view extensionOf(const std::vector<std::byte>& bytes) {
  if (startsWith(bytes, "\xFF\xD8\xFF")) {
    return ".jpg";
  }
  if (startsWith(bytes, "\x89PNG\r\n\x1A\n")) {
    return ".png";
  }
  if (startsWith(bytes, std::string_view("II*\0", 4)) ||
      startsWith(bytes, std::string_view("MM\0*", 4))) {
    return ".tif";
  }
  return ".bin";
}

}  // namespace

int runExtract(const ExtractRequest& request, std::ostream& out, std::ostream& err) {
  MetadataReader reader({.language = ETLanguage::english, .jobs = 1, .timeout = request.timeout});
  const interruption::CancelRegistration cancelOnSignal([&reader] { reader.cancel(); });
  std::error_code error;
  std::filesystem::create_directories(request.folder, error);
  int status = 0;
  for (const auto& file : request.files) {
    if (interruption::signalNumber() != 0) {
      break;
    }
    const std::string shown = escapeControls(file, LineFeeds::escaped);
    std::optional<EmbeddedImage> image;
    if (request.tag) {
      if (auto bytes = reader.readBinary(file, *request.tag)) {
        // A group in the name ("EXIF:ThumbnailImage") stays out of the file's name.
        image = EmbeddedImage{request.tag->substr(request.tag->rfind(':') + 1), std::move(*bytes)};
      }
    } else {
      image = reader.readLargestPreview(file);
    }
    if (!image) {
      err << shown << ": " << (request.tag ? "no " + *request.tag : std::string("no preview"))
          << "\n";
      status = 1;
      continue;
    }
    const std::filesystem::path target = std::filesystem::path(request.folder) /
                                         (std::filesystem::path(file).stem().string() + "_" +
                                          image->tag + std::string(extensionOf(image->bytes)));
    std::ofstream stream(target, std::ios::binary | std::ios::trunc);
    stream.write(reinterpret_cast<const char*>(image->bytes.data()),
                 static_cast<std::streamsize>(image->bytes.size()));
    stream.close();
    if (!stream) {
      err << shown << ": can't write " << escapeControls(target.string(), LineFeeds::escaped)
          << "\n";
      status = 1;
      continue;
    }
    out << shown << ": " << escapeControls(target.string(), LineFeeds::escaped) << "\n";
  }
  return status;
}

}  // namespace lorvane::app
