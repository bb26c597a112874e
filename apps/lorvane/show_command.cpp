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
  // The tool's own JSON of several runs would be several arrays: it comes from one run.
  const ToolReading reading = readWithTool(request.files, request.language,
                                           request.printsToolJson ? 1 : request.jobs, onProgress);
  if (onProgress) {
    err << "\r" << std::string(48, ' ') << "\r" << std::flush;
  }

  int status = 0;
  for (const auto& message : messagesAboutNoFile(request.files, reading)) {
    err << "lorvane: " << message << "\n";
    status = 1;
  }
  if (request.printsToolJson) {
    out << reading.text;
    return reading.messages.empty() ? status : 1;
  }
  const auto files = makeFileTags(request.files, reading);
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
