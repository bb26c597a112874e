// The tool's long JSON ("-j -l -G0:1") made into each file's tags, as MetadataReader does it
// with every answer of the tool. Any text comes back as the file's tags or as its error, never
// as a throw. A document shaped as the tool
// writes one, with the fuzzer's names, texts and number tokens, comes back whole: every file
// in order, every tag under its groups and name, and every value, number or text, exactly as
// written, digit for digit.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include <lorvane/file_tags.hpp>

#include "catalogue/catalogue_texts.hpp"
#include "fuzz_check.hpp"
#include "read/tool_answer.hpp"
#include "text/utf8.hpp"

namespace {

using lorvane::TagValue;
using lorvane::fuzz::require;

const lorvane::detail::CatalogueTexts english(lorvane::ETLanguage::english);

// The tool writes only UTF-8: a text that isn't loses its non-ASCII bytes.
std::string utf8(std::string text) {
  if (!lorvane::isValidUTF8(text)) {
    std::erase_if(text, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
  }
  return text;
}

// A JSON string literal of a UTF-8 text.
std::string quoted(const std::string& text) {
  std::string literal = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      literal += '\\';
      literal += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      static constexpr char hex[] = "0123456789abcdef";
      literal += "\\u00";
      literal += hex[(c >> 4) & 0xF];
      literal += hex[c & 0xF];
    } else {
      literal += c;
    }
  }
  return literal + "\"";
}

std::string digits(FuzzedDataProvider& provider, bool leadingZero) {
  std::string text;
  const auto count = provider.ConsumeIntegralInRange<int>(1, 30);
  for (int i = 0; i < count; ++i) {
    const auto digit = provider.ConsumeIntegralInRange<int>(i == 0 && !leadingZero ? 1 : 0, 9);
    text += static_cast<char>('0' + digit);
  }
  return text;
}

// A number token of JSON's grammar, as the tool prints "5.00000", "-0", "1e-07" or
// "18446744073709551616".
std::string numberToken(FuzzedDataProvider& provider) {
  std::string token = provider.ConsumeBool() ? "-" : "";
  token += provider.ConsumeBool() ? "0" : digits(provider, false);
  if (provider.ConsumeBool()) {
    token += "." + digits(provider, true);
  }
  if (provider.ConsumeBool()) {
    token += provider.ConsumeBool() ? "e" : "E";
    token += provider.PickValueInArray({"", "+", "-"});
    token += digits(provider, true);
  }
  return token;
}

// One scalar: its JSON text, and the text the reading must give back.
std::pair<std::string, std::string> scalar(FuzzedDataProvider& provider) {
  switch (provider.ConsumeIntegralInRange(0, 2)) {
    case 0: {
      const std::string token = numberToken(provider);
      return {token, token};
    }
    case 1: {
      const bool value = provider.ConsumeBool();
      return {value ? "true" : "false", value ? "true" : "false"};
    }
    default: {
      const std::string text = utf8(provider.ConsumeRandomLengthString(40));
      return {quoted(text), text};
    }
  }
}

// A value, a scalar or a list of them: its JSON text, and what the reading must give back.
std::pair<std::string, TagValue> value(FuzzedDataProvider& provider) {
  TagValue expected;
  if (!provider.ConsumeBool()) {
    auto [json, text] = scalar(provider);
    expected.texts.push_back(text);
    return {json, expected};
  }
  expected.isList = true;
  std::string json = "[";
  const auto count = provider.ConsumeIntegralInRange(0, 4);
  for (int i = 0; i < count; ++i) {
    auto [element, text] = scalar(provider);
    json += (i == 0 ? "" : ",") + element;
    expected.texts.push_back(text);
  }
  return {json + "]", expected};
}

// A group or tag name: no colon (the tool's names have none), never empty.
std::string namePart(FuzzedDataProvider& provider, std::string_view fallback) {
  std::string text = utf8(provider.ConsumeRandomLengthString(12));
  std::erase(text, ':');
  std::erase(text, '\0');
  return text.empty() ? std::string(fallback) : text;
}

struct ExpectedTag {
  std::string group, name;
  TagValue value, raw;
};

void checkShapedDocument(FuzzedDataProvider& provider) {
  std::vector<std::string> files;
  std::vector<std::vector<ExpectedTag>> expected;
  std::string json = "[";
  const auto fileCount = provider.ConsumeIntegralInRange(1, 3);
  for (int f = 0; f < fileCount; ++f) {
    const std::string file =
        "folder/f" + std::to_string(f) + "-" + utf8(provider.ConsumeRandomLengthString(16));
    json += (f == 0 ? "{" : ",{") + std::string("\"SourceFile\":") + quoted(file);
    files.push_back(file);
    expected.emplace_back();
    const auto tagCount = provider.ConsumeIntegralInRange(0, 6);
    for (int t = 0; t < tagCount && provider.remaining_bytes() > 0; ++t) {
      ExpectedTag tag;
      tag.group = namePart(provider, "EXIF");
      if (provider.ConsumeBool()) {
        tag.group += ":" + namePart(provider, "IFD0");
      }
      tag.name = namePart(provider, "Tag") + std::to_string(t);  // the tool's keys are unique
      json += "," + quoted(tag.group + ":" + tag.name) + ":{";
      const std::string description = utf8(provider.ConsumeRandomLengthString(20));
      json += "\"id\":" + std::to_string(t) + ",\"desc\":" + quoted(description);
      auto [valueJson, valueText] = value(provider);
      json += ",\"val\":" + valueJson;
      tag.value = valueText;
      tag.raw = valueText;
      if (provider.ConsumeBool()) {
        auto [rawJson, rawText] = value(provider);
        json += ",\"num\":" + rawJson;
        tag.raw = rawText;
      }
      json += "}";
      expected.back().push_back(tag);
    }
    json += "}";
  }
  json += "]";

  // The tool read the folder "./folder" for the argument "folder".
  const auto read = lorvane::detail::makeFileTags("folder", "folder", {json, {}}, english);
  require(read.size() == files.size(), "one entry per file");
  for (std::size_t f = 0; f < files.size(); ++f) {
    require(read[f].file == files[f] && !read[f].error, "each file in its place, read");
    require(read[f].tags.size() == expected[f].size(), "every tag of the file arrives");
    for (std::size_t t = 0; t < expected[f].size(); ++t) {
      const auto& tag = read[f].tags[t];
      require(tag.group == expected[f][t].group && tag.name == expected[f][t].name,
              "a tag keeps its groups and name");
      require(tag.value == expected[f][t].value, "a value arrives exactly as written");
      require(tag.raw == expected[f][t].raw, "a raw value arrives exactly as written");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // The bytes as the tool's output, as they stand, with its message about the file.
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto read =
      lorvane::detail::makeFileTags("a.jpg", "a.jpg", {text, {"Warning: odd - a.jpg"}}, english);
  require(!read.empty(), "the file has an entry");
  for (const auto& file : read) {
    require(file.file.starts_with("a.jpg"), "every entry is the file or lies in it");
  }
  // The same bytes as the choices of a document shaped as the tool's.
  FuzzedDataProvider provider(data, size);
  checkShapedDocument(provider);
  return 0;
}
