#include "show_command.hpp"

#include <algorithm>
#include <functional>
#include <ostream>

#include "file_tags.hpp"
#include "tag_table.hpp"
#include "tool_reading.hpp"

namespace lorvane::app {
namespace {

void drawProgress(std::ostream& err, double progress) {
  constexpr int width = 40;
  const int filled = std::clamp(static_cast<int>(progress * width + 0.5), 0, width);
  err << "\r[" << std::string(static_cast<std::size_t>(filled), '#')
      << std::string(static_cast<std::size_t>(width - filled), ' ') << "] "
      << static_cast<int>(progress * 100 + 0.5) << "%" << std::flush;
}

}  // namespace

int runShow(const ShowRequest& request, std::ostream& out, std::ostream& err) {
  std::function<void(double)> onProgress;
  if (request.drawsProgress && request.files.size() > 1) {
    onProgress = [&err](double progress) { drawProgress(err, progress); };
  }
  const auto clearProgress = [&] {
    if (onProgress) {
      err << "\r" << std::string(48, ' ') << "\r" << std::flush;
    }
  };
  if (request.printsToolJson) {
    const ToolReading reading = readWithTool(request.files, request.language, onProgress);
    clearProgress();
    int status = 0;
    for (const auto& message : messagesAboutNoFile(request.files, reading)) {
      err << "lorvane: " << message << "\n";
      status = 1;
    }
    out << reading.text;
    return reading.messages.empty() ? status : 1;
  }
  const FilesRead read = readFileTags(request.files, request.language, request.jobs, onProgress);
  clearProgress();
  int status = 0;
  for (const auto& message : read.messages) {
    err << "lorvane: " << message << "\n";
    status = 1;
  }
  const auto& files = read.files;
  if (request.printsJson) {
    out << makeFileTagsJson(files).dump(2, ' ', false,
                                        nlohmann::ordered_json::error_handler_t::replace)
        << "\n";
  }
  for (const auto& file : files) {
    if (!request.printsJson && !(file.error && file.tags.empty())) {
      printTagTable(out, file, TableStyle{request.dimsRawValues});
    }
    if (file.error) {
      err << "lorvane: " << file.file << ": " << *file.error << "\n";
      status = 1;
    }
  }
  return status;
}

}  // namespace lorvane::app
