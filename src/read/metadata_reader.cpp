#include <lorvane/metadata_reader.hpp>

#include <filesystem>
#include <variant>

#include <lorvane/arguments_maker.hpp>
#include <lorvane/text.hpp>

#include "catalogue/catalogue_texts.hpp"
#include "read/embedded_images.hpp"
#include "read/ordered_runs.hpp"
#include "read/tool_answer.hpp"

namespace lorvane {
namespace detail {

// The run machinery's own line for a command that outlived its time limit.
constexpr std::string_view timeLimitLine = "the tool did not finish within ";

std::vector<std::string> toolMessages(const ETOutput& output) {
  std::vector<std::string> messages;
  for (const auto& log : output.processLogs) {
    if (const auto* unknown = std::get_if<ETOutput::UnknownLog>(&log)) {
      if (nonBlank(unknown->line)) {
        const auto end = unknown->line.find_last_not_of("\r\n");
        messages.push_back(unknown->line.substr(0, end + 1));
      }
    }
  }
  return messages;
}

std::string seconds(std::chrono::milliseconds time) {
  const auto count = time.count();
  return count % 1000 == 0 ? std::to_string(count / 1000) + " s" : std::to_string(count) + " ms";
}

}  // namespace detail

struct MetadataReader::State {
  explicit State(Options chosen) : options(chosen), texts(chosen.language), tools(chosen.jobs) {}

  ETInput makeInput(const std::string& file) const {
    ETInput input;
    input.addArguments([&](ETInput::ArgumentsMaker& maker) {
      maker.additional = {"-json", "-long", "-G0:1"};
      maker.enableSeparator = false;  // lists stay JSON arrays
      maker.extractsBinaries = false;
      maker.extractsEmbedded = false;
      maker.language = options.language;
      maker.sourcePath = file;
    });
    input.keepsInvalidText = true;  // a name that isn't UTF-8 keeps its messages
    if (options.timeout.count() > 0) {
      input.timeLimit = options.timeout;
    }
    return input;
  }

  std::vector<FileTags> makeFiles(const std::string& file, const ETInput& input,
                                  ETOutput&& output) const {
    detail::ToolAnswer answer{output.decodeOutData().value_or(""), detail::toolMessages(output)};
    for (const auto& message : answer.messages) {
      if (message.starts_with(detail::timeLimitLine)) {
        return {{file,
                 "ExifTool did not finish reading it within " + detail::seconds(options.timeout),
                 {}}};
      }
    }
    // The tool is silent about a folder it finds nothing to read in.
    std::error_code error;
    if (answer.messages.empty() && answer.json.find_first_not_of(" \t\r\n") == std::string::npos &&
        std::filesystem::is_directory(file, error)) {
      return {
          {file, "a folder without a file ExifTool reads (folders in it are not searched)", {}}};
    }
    // The last argument is the path the tool got for the file.
    return detail::makeFileTags(file, input.arguments.back(), answer, texts);
  }

  Options options;
  detail::CatalogueTexts texts;
  detail::ToolSlots tools;
};

MetadataReader::MetadataReader() : MetadataReader(Options{}) {}

MetadataReader::MetadataReader(Options options) : state_(std::make_unique<State>(options)) {}

MetadataReader::~MetadataReader() = default;

FileTags MetadataReader::read(const std::string& file) {
  std::error_code error;
  if (std::filesystem::is_directory(file, error)) {
    return {file, "is a folder: readEach reads the files in it", {}};
  }
  FileTags result{file, "cancelled", {}};
  readEach(std::span(&file, 1), [&](FileTags&& read) { result = std::move(read); });
  return result;
}

void MetadataReader::readEach(std::span<const std::string> files,
                              const std::function<void(FileTags&&)>& onFile,
                              const std::function<void(double)>& onProgress) {
  detail::runInOrder<std::vector<FileTags>>(
      state_->tools, true, files.size(),
      [&](std::size_t index) { return state_->makeInput(files[index]); },
      [&](std::size_t index, const ETInput& input, ETOutput&& output) {
        return state_->makeFiles(files[index], input, std::move(output));
      },
      [&](std::vector<FileTags>&& read) {
        for (auto& file : read) {
          onFile(std::move(file));
        }
      },
      onProgress);
}

std::optional<std::vector<std::byte>> MetadataReader::readBinary(const std::string& file,
                                                                 const std::string& tag) {
  auto found =
      detail::extractBinaries(state_->tools, state_->options.timeout, file, {"-G1", "-" + tag});
  if (found.empty()) {
    return std::nullopt;
  }
  return std::move(found.front().bytes);
}

std::optional<EmbeddedImage> MetadataReader::readLargestPreview(const std::string& file) {
  const auto tags = detail::previewTags(state_->tools, state_->options.timeout, file);
  if (tags.empty()) {
    return std::nullopt;
  }
  return detail::largestPicture(
      detail::extractBinaries(state_->tools, state_->options.timeout, file, tags));
}

void MetadataReader::cancel() { state_->tools.cancel(); }

}  // namespace lorvane
