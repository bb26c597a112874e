#include "tool_reading.hpp"

#include <variant>

#include <lorvane/et_output.hpp>
#include <lorvane/et_process.hpp>
#include <lorvane/text.hpp>

#include "tool_json.hpp"

namespace lorvane::app {

ETInput makeReadingInput(const std::vector<std::string>& files, ETLanguage language) {
  ETInput input;
  input.addArguments(files, [&](const std::string& file, ETInput::ArgumentsMaker& maker) {
    maker.additional = {"-json", "-long", "-G0:1"};
    maker.enableSeparator = false;  // lists stay JSON arrays
    maker.extractsBinaries = false;
    maker.extractsEmbedded = false;
    maker.language = language;
    maker.sourcePath = file;
  });
  return input;
}

ToolReading readWithTool(const std::vector<std::string>& files, ETLanguage language,
                         const ETInput::Handler& onProgress) {
  ETInput input = makeReadingInput(files, language);
  input.onProgressHandler = onProgress;
  const ETOutput output = ETProcess::run(input);

  ToolReading reading;
  for (const auto& log : output.processLogs) {
    if (const auto* unknown = std::get_if<ETOutput::UnknownLog>(&log)) {
      if (const auto line = nonBlank(unknown->line)) {
        reading.messages.push_back(line->substr(0, line->find_last_not_of("\r\n") + 1));
      }
    }
  }
  reading.text = output.decodeOutData().value_or("");
  if (nonBlank(reading.text)) {
    for (auto& object : parseToolJson(reading.text)) {
      reading.objects.push_back(std::move(object));
    }
  }
  return reading;
}

}  // namespace lorvane::app
