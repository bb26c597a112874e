#include "tool_reading.hpp"

#include <variant>

#include <lorvane/et_batches.hpp>
#include <lorvane/et_combined_progress.hpp>
#include <lorvane/et_output.hpp>
#include <lorvane/et_process.hpp>
#include <lorvane/text.hpp>

#include "tool_json.hpp"

namespace lorvane::app {
namespace {

// The options of one file's reading; all files of a run form one command of the tool.
auto readingOptions(ETLanguage language) {
  return [language](const std::string& file, ETInput::ArgumentsMaker& maker) {
    maker.additional = {"-json", "-long", "-G0:1"};
    maker.enableSeparator = false;  // lists stay JSON arrays
    maker.extractsBinaries = false;
    maker.extractsEmbedded = false;
    maker.language = language;
    maker.sourcePath = file;
  };
}

void takeOutput(const ETOutput& output, ToolReading& reading) {
  for (const auto& log : output.processLogs) {
    if (const auto* unknown = std::get_if<ETOutput::UnknownLog>(&log)) {
      if (const auto line = nonBlank(unknown->line)) {
        reading.messages.push_back(line->substr(0, line->find_last_not_of("\r\n") + 1));
      }
    }
  }
  std::string text = output.decodeOutData().value_or("");
  if (nonBlank(text)) {
    for (auto& object : parseToolJson(text)) {
      reading.objects.push_back(std::move(object));
    }
  }
  reading.text += text;
}

}  // namespace

ETInput makeReadingInput(const std::vector<std::string>& files, ETLanguage language) {
  ETInput input;
  input.addArguments(files, readingOptions(language));
  return input;
}

ToolReading readWithTool(const std::vector<std::string>& files, ETLanguage language,
                         std::size_t jobs, const std::function<void(double)>& onProgress) {
  ToolReading reading;
  if (jobs == 1) {
    ETInput input = makeReadingInput(files, language);
    if (onProgress) {
      input.onProgressHandler = [&](ETProcess& process) { onProgress(process.output().progress); };
    }
    takeOutput(ETProcess::run(input), reading);
    return reading;
  }
  ETBatches batches = ETBatches::spread(files, jobs, readingOptions(language));
  std::optional<ETCombinedProgress> progress;
  if (onProgress) {
    progress.emplace(batches, onProgress);
  }
  for (const auto& output : ETProcess::runAll(batches.inputs, jobs)) {
    takeOutput(output, reading);
  }
  return reading;
}

}  // namespace lorvane::app
