#include "tool_reading.hpp"

#include <exception>
#include <iterator>
#include <optional>
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

ToolReading takeOutput(const ETOutput& output) {
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

// One run's share of the files, made into tags by the run's end handler.
struct BatchResult {
  std::vector<std::vector<FileTags>> perArgument;
  std::vector<std::string> messages;
  std::exception_ptr failure;  // the run machinery would keep it as a line: it goes to the caller
};

}  // namespace

ETInput makeReadingInput(const std::vector<std::string>& files, ETLanguage language) {
  ETInput input;
  input.addArguments(files, readingOptions(language));
  return input;
}

ToolReading readWithTool(const std::vector<std::string>& files, ETLanguage language,
                         const std::function<void(double)>& onProgress) {
  ETInput input = makeReadingInput(files, language);
  if (onProgress) {
    input.onProgressHandler = [&](ETProcess& process) { onProgress(process.output().progress); };
  }
  return takeOutput(ETProcess::run(input));
}

FilesRead readFileTags(const std::vector<std::string>& files, ETLanguage language, std::size_t jobs,
                       const std::function<void(double)>& onProgress) {
  ETBatches batches = ETBatches::spread(files, jobs, readingOptions(language));
  std::vector<BatchResult> results(batches.inputs.size());
  for (std::size_t k = 0; k < batches.inputs.size(); ++k) {
    batches.inputs[k].onEndHandler = [&files, &batches, &results, k](ETProcess& process) {
      try {
        std::vector<std::string> batchFiles;
        for (const std::size_t place : batches.places[k]) {
          batchFiles.push_back(files[place]);
        }
        const ToolReading reading = takeOutput(process.output());
        results[k].perArgument = makeFileTagsPerArgument(batchFiles, reading);
        results[k].messages = messagesAboutNoFile(batchFiles, reading);
      } catch (...) {
        results[k].failure = std::current_exception();
      }
    };
  }
  std::optional<ETCombinedProgress> progress;
  if (onProgress) {
    progress.emplace(batches, onProgress);
  }
  ETProcess::runAll(batches.inputs, jobs);

  std::vector<std::vector<FileTags>> perArgument(files.size());
  FilesRead read;
  for (std::size_t k = 0; k < results.size(); ++k) {
    if (results[k].failure) {
      std::rethrow_exception(results[k].failure);
    }
    for (std::size_t j = 0; j < batches.places[k].size(); ++j) {
      perArgument[batches.places[k][j]] = std::move(results[k].perArgument[j]);
    }
    std::move(results[k].messages.begin(), results[k].messages.end(),
              std::back_inserter(read.messages));
  }
  for (auto& group : perArgument) {
    std::move(group.begin(), group.end(), std::back_inserter(read.files));
  }
  return read;
}

}  // namespace lorvane::app
