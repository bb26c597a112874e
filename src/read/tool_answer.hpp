#pragma once

// From one tool command that read one argument (a file, or a folder) with "-j -l -G0:1" to the
// FileTags of the files it read.

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <lorvane/file_tags.hpp>

#include "catalogue/catalogue_texts.hpp"

namespace lorvane::detail {

// What the tool said in one command: its JSON, and its messages one per entry, without their
// line ends (a message cut by a line feed in a file name comes in two entries, in order).
struct ToolAnswer {
  std::string json;
  std::vector<std::string> messages;
};

// One entry for a file, one per file read for a folder, named as `given` names them (the tool
// was given `toolPath` for it, which may differ: "./-a.jpg" for "-a.jpg"). A file the tool
// couldn't read, or whose JSON is no JSON, comes back as one entry with its error.
std::vector<FileTags> makeFileTags(const std::string& given, std::string_view toolPath,
                                   const ToolAnswer& answer, const CatalogueTexts& texts);

// Every file of an answer that read several files, each named as the tool named it; nothing
// when the answer is no JSON list.
std::vector<FileTags> makeToolFileTags(const std::string& json, const CatalogueTexts& texts);

// Whether the tool's JSON holds a file for each of `sources` and no other, in their order, each
// with that very text as its "SourceFile" (the tool rewrites a name that isn't UTF-8).
bool namesFilesInOrder(std::string_view json, std::span<const std::string> sources);

// A message of the tool about the file it was given as `toolPath`, in the words a user reads:
// "Error: File not found - x.jpg" about x.jpg is "File not found", "Warning: [minor] ..." is
// "[minor] ...".
std::string messageAbout(std::string line, std::string_view toolPath);

}  // namespace lorvane::detail
