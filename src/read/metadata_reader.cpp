#include <lorvane/metadata_reader.hpp>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <variant>

#include <lorvane/arguments_maker.hpp>
#include <lorvane/text.hpp>

#include "catalogue/catalogue_texts.hpp"
#include "platform/private_file.hpp"
#include "read/embedded_images.hpp"
#include "read/ordered_runs.hpp"
#include "read/sidecars.hpp"
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

  // `sidecars`: those of the file are read with it, a folder's with their files.
  ETInput makeInput(const std::string& file, bool sidecars) const {
    ETInput input;
    input.addArguments([&](ETInput::ArgumentsMaker& maker) {
      maker.additional = {"-json", "-long", "-G0:1"};
      std::error_code error;
      if (sidecars && !std::filesystem::is_directory(file, error)) {
        // Read by the same command, one more small file each; a folder's come with its files.
        for (const auto& sidecar : detail::existingSidecars(file)) {
          maker.additional.push_back(ETInput::ArgumentsMaker::sourceArgument(sidecar));
        }
      }
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

  std::vector<FileTags> makeFiles(const std::string& file, const ETInput& input, ETOutput&& output,
                                  bool sidecars) const {
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
    const std::string& toolPath = input.arguments.back();
    if (sidecars) {
      std::vector<std::string> read = detail::sidecarNames(file);
      std::erase_if(read, [&](const std::string& name) {
        return std::find(input.arguments.begin(), input.arguments.end(),
                         ETInput::ArgumentsMaker::sourceArgument(name)) == input.arguments.end();
      });
      if (!read.empty()) {
        return {detail::makeFileWithSidecars(file, toolPath, read, answer, texts)};
      }
      return detail::mergeFolderSidecars(detail::makeFileTags(file, toolPath, answer, texts));
    }
    return detail::makeFileTags(file, toolPath, answer, texts);
  }

  void readEach(std::span<const std::string> files, const std::function<void(FileTags&&)>& onFile,
                const std::function<void(double)>& onProgress, bool sidecars) {
    detail::runInOrder<std::vector<FileTags>>(
        tools, true, files.size(),
        [&](std::size_t index) { return makeInput(files[index], sidecars); },
        [&](std::size_t index, const ETInput& input, ETOutput&& output) {
          return makeFiles(files[index], input, std::move(output), sidecars);
        },
        [&](std::vector<FileTags>&& read) {
          for (auto& file : read) {
            onFile(std::move(file));
          }
        },
        onProgress);
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

FileTags MetadataReader::readBytes(std::span<const std::byte> bytes, const std::string& nameHint) {
  // Only a plain extension goes into the file's name.
  std::string extension = std::filesystem::path(nameHint).extension().string();
  extension.erase(0, 1);
  if (extension.size() > 16 || !std::all_of(extension.begin(), extension.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
      })) {
    extension.clear();
  }
  std::optional<platform::PrivateFile> file;
  try {
    file.emplace(bytes, extension);
  } catch (const std::system_error& error) {
    return {nameHint, error.what(), {}};
  }
  // The file has no sidecars.
  FileTags result{nameHint, "cancelled", {}};
  state_->readEach(
      std::span(&file->path(), 1), [&](FileTags&& read) { result = std::move(read); }, {}, false);
  result.file = nameHint;
  const std::string name = std::filesystem::path(nameHint).filename().string();
  std::erase_if(result.tags, [&](FileTag& tag) {
    if (tag.group != "File:System") {
      return false;
    }
    if (tag.name == "FileName") {
      tag.value = tag.raw = {{name}, false};
      return false;
    }
    return tag.name != "FileSize";
  });
  return result;
}

void MetadataReader::readEach(std::span<const std::string> files,
                              const std::function<void(FileTags&&)>& onFile,
                              const std::function<void(double)>& onProgress) {
  state_->readEach(files, onFile, onProgress, state_->options.sidecars == SidecarPolicy::merge);
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
