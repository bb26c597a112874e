#include "read/embedded_images.hpp"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include <lorvane/arguments_maker.hpp>

#include "read/tool_json.hpp"

namespace lorvane::detail {
namespace {

// The tool's "base64:" values: standard alphabet, padded.
std::optional<std::vector<std::byte>> decodeBase64(std::string_view text) {
  static constexpr std::array<signed char, 256> values = [] {
    std::array<signed char, 256> table{};
    table.fill(-1);
    constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t i = 0; i < alphabet.size(); ++i) {
      table[static_cast<unsigned char>(alphabet[i])] = static_cast<signed char>(i);
    }
    return table;
  }();
  while (text.ends_with('=')) {
    text.remove_suffix(1);
  }
  std::vector<std::byte> bytes;
  bytes.reserve(text.size() * 3 / 4);
  unsigned buffer = 0;
  int bits = 0;
  for (const char c : text) {
    const int value = values[static_cast<unsigned char>(c)];
    if (value < 0) {
      return std::nullopt;
    }
    buffer = (buffer << 6) | static_cast<unsigned>(value);
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      bytes.push_back(static_cast<std::byte>((buffer >> bits) & 0xFF));
    }
  }
  return bytes;
}

bool startsWith(const std::vector<std::byte>& bytes, std::initializer_list<unsigned char> head) {
  return bytes.size() >= head.size() &&
         std::equal(head.begin(), head.end(), bytes.begin(),
                    [](unsigned char a, std::byte b) { return std::byte{a} == b; });
}

}  // namespace

namespace {

// The tags of one file the tool prints in JSON for these arguments, by the names it gives
// them, with their values as text; with `binary`, binary data as "base64:..." instead of a
// note of its size.
std::vector<std::pair<std::string, std::string>> toolValues(
    ToolSlots& tools, std::chrono::milliseconds timeout, const std::string& file,
    const std::vector<std::string>& tagArguments, bool binary) {
  std::vector<std::pair<std::string, std::string>> values;
  if (tools.isCancelled()) {
    return values;
  }
  ETInput input;
  input.addArguments([&](ETInput::ArgumentsMaker& maker) {
    // In JSON a binary comes as "base64:..." text, so no byte of it can be mistaken for the
    // end of the command's output.
    maker.additional = {"-json"};
    maker.additional.insert(maker.additional.end(), tagArguments.begin(), tagArguments.end());
    maker.extractsBinaries = binary;
    maker.enableSeparator = false;
    maker.extractsEmbedded = false;
    maker.sourcePath = file;
  });
  input.keepsInvalidText = true;
  if (timeout.count() > 0) {
    input.timeLimit = timeout;
  }
  // A cancel given after the look above and before the tool starts stops it here. One command
  // needs no thread of its own: the caller's runs it on the reader's first tool.
  input.onStartHandler = [&tools](ETProcess& process) {
    if (tools.isCancelled()) {
      process.cancel();
    }
  };
  const ETOutput output = tools.take(1).front()->run(input);
  const auto json = nlohmann::ordered_json::parse(
      withQuotedNumbers(output.decodeOutData().value_or("")), nullptr, false);
  if (json.is_array() && !json.empty() && json.front().is_object()) {
    for (const auto& [key, value] : json.front().items()) {
      if (key != "SourceFile") {
        values.emplace_back(key, scalarText(value));
      }
    }
  }
  return values;
}

}  // namespace

std::vector<EmbeddedImage> extractBinaries(ToolSlots& tools, std::chrono::milliseconds timeout,
                                           const std::string& file,
                                           const std::vector<std::string>& tagArguments) {
  std::vector<EmbeddedImage> images;
  for (auto& [key, text] : toolValues(tools, timeout, file, tagArguments, true)) {
    std::vector<std::byte> bytes;
    if (text.starts_with("base64:")) {
      auto decoded = decodeBase64(std::string_view(text).substr(7));
      if (!decoded) {
        continue;
      }
      bytes = std::move(*decoded);
    } else {
      const auto* first = reinterpret_cast<const std::byte*>(text.data());
      bytes.assign(first, first + text.size());
    }
    if (!bytes.empty()) {
      images.push_back({key.substr(key.rfind(':') + 1), std::move(bytes)});
    }
  }
  return images;
}

std::vector<std::string> previewTags(ToolSlots& tools, std::chrono::milliseconds timeout,
                                     const std::string& file) {
  // Some previews come with "-b" only when named ("PhotoshopThumbnail"), some show only when
  // named at all (a RAW file's "JpgFromRaw"): the first command finds their names, by group.
  std::vector<std::string> arguments = {
      "-a", "-G1", "-Preview:all", "-JpgFromRaw", "-PreviewImage", "-OtherImage", "-Picture"};
  std::vector<std::string> names = {"-a", "-G1"};
  for (const auto& [key, text] : toolValues(tools, timeout, file, arguments, false)) {
    if (text.starts_with("(Binary data ")) {
      names.push_back("-" + key);
    }
  }
  return names.size() > 2 ? names : std::vector<std::string>{};
}

std::optional<EmbeddedImage> largestPicture(std::vector<EmbeddedImage> images) {
  std::optional<EmbeddedImage> largest;
  for (auto& image : images) {
    const bool isPicture = startsWith(image.bytes, {0xFF, 0xD8, 0xFF}) ||
                           startsWith(image.bytes, {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'});
    if (isPicture && (!largest || image.bytes.size() > largest->bytes.size())) {
      largest = std::move(image);
    }
  }
  return largest;
}

}  // namespace lorvane::detail
