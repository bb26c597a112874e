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
#include "text/utf8.hpp"

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

// The first file of each command and, last, the end: one file first, so that it comes at once,
// then twice as many each time up to `largest`; towards the end no more than a share of what is
// left, so that the tools side by side finish together. A kept tool builds its state anew for
// every command, which one command per file pays for every file.
std::vector<std::size_t> batchStarts(std::size_t count, std::size_t tools, std::size_t largest) {
  std::vector<std::size_t> starts;
  std::size_t size = 1;
  for (std::size_t start = 0; start < count;) {
    starts.push_back(start);
    const std::size_t share = std::max<std::size_t>(1, (count - start) / (2 * tools));
    start += std::min({size, share, count - start});
    size = std::min(2 * size, largest);
  }
  starts.push_back(count);
  return starts;
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

  // One command for the files of `batch`, when each is a regular file and they are several;
  // else nothing to run, and each goes alone.
  ETInput makeBatchInput(std::span<const std::string> batch, bool sidecars) const {
    if (batch.size() == 1) {
      return makeInput(batch.front(), sidecars);
    }
    for (const auto& file : batch) {
      std::error_code error;
      if (!std::filesystem::is_regular_file(file, error)) {
        return {};
      }
    }
    ETInput input = makeInput(batch.front(), false);
    for (const auto& file : batch.subspan(1)) {
      input.arguments.push_back(ETInput::ArgumentsMaker::sourceArgument(file));
    }
    if (input.timeLimit) {
      *input.timeLimit *= static_cast<long>(batch.size());
    }
    return input;
  }

  // Whether the answer to a batch's command gives each file its own part and nothing else: no
  // message (a file gone meanwhile, a time limit, a lost tool), each file named as it was sent.
  static bool answersEachFile(std::span<const std::string> batch,
                              const detail::CommandAnswer& answer) {
    if (answer.input.arguments.empty() || !detail::toolMessages(answer.output).empty()) {
      return false;
    }
    std::vector<std::string> sent;
    sent.reserve(batch.size());
    for (const auto& file : batch) {
      sent.push_back(ETInput::ArgumentsMaker::sourceArgument(file));
    }
    const auto json = decodeUTF8(answer.output.binaryData);
    return json && detail::namesFilesInOrder(*json, sent);
  }

  // Each file's tags, from one command for the whole batch or one for each file.
  std::vector<std::vector<FileTags>> makeBatchFiles(std::span<const std::string> batch,
                                                    std::vector<detail::CommandAnswer>&& answers,
                                                    bool sidecars) const {
    std::vector<std::vector<FileTags>> read;
    if (batch.size() > 1 && answers.size() == 1) {
      auto files =
          detail::makeToolFileTags(answers.front().output.decodeOutData().value_or(""), texts);
      for (std::size_t i = 0; i < batch.size(); ++i) {
        auto& given = read.emplace_back();
        if (i < files.size()) {
          files[i].file = batch[i];
          given.push_back(std::move(files[i]));
        } else {
          given.push_back({batch[i], "ExifTool's output is not the JSON expected", {}});
        }
      }
      return read;
    }
    for (std::size_t i = 0; i < answers.size(); ++i) {
      read.push_back(makeFiles(batch[i], answers[i].input, std::move(answers[i].output), sidecars));
    }
    return read;
  }

  void readEach(std::span<const std::string> files, const std::function<void(FileTags&&)>& onFile,
                const std::function<void(double)>& onProgress, bool sidecars) {
    // A file's sidecars are read by a command of its own.
    const std::vector<std::size_t> starts =
        detail::batchStarts(files.size(), tools.size(), sidecars ? 1 : largestBatch);
    const auto batchOf = [&](std::size_t index) {
      return files.subspan(starts[index], starts[index + 1] - starts[index]);
    };
    std::size_t delivered = 0;
    detail::runInOrder<std::vector<std::vector<FileTags>>>(
        tools, true, starts.size() - 1,
        [&](std::size_t index) { return makeBatchInput(batchOf(index), sidecars); },
        [&](std::size_t index, std::vector<detail::CommandAnswer>&& answers) {
          return makeBatchFiles(batchOf(index), std::move(answers), sidecars);
        },
        [&](std::vector<std::vector<FileTags>>&& read) {
          for (auto& given : read) {
            for (auto& file : given) {
              onFile(std::move(file));
            }
            ++delivered;
            if (onProgress) {
              onProgress(static_cast<double>(delivered) / static_cast<double>(files.size()));
            }
          }
        },
        {},
        [&](std::size_t index, const detail::CommandAnswer& answer) {
          const auto batch = batchOf(index);
          std::vector<ETInput> alone;
          if (batch.size() > 1 && !answersEachFile(batch, answer)) {
            for (const auto& file : batch) {
              alone.push_back(makeInput(file, sidecars));
            }
          }
          return alone;
        },
        // Each tool's command under way and the one sent behind it, and the one delivered.
        3 * tools.size() + 2);
  }

  // Files in one command at most: past some ten the tool's set-up per command is lost in its
  // reading, while the caller waits for a whole command's files at once.
  static constexpr std::size_t largestBatch = 16;

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
