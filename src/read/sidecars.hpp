#pragma once

// XMP sidecars: the files beside a file that hold the edits an application made to it without
// touching its bytes, and the XMP counterparts of the tags written to them.

#include <span>
#include <string>
#include <variant>
#include <vector>

#include <lorvane/file_tags.hpp>
#include <lorvane/tag_assignment.hpp>

#include "catalogue/catalogue_texts.hpp"
#include "read/tool_answer.hpp"

namespace lorvane::detail {

// The names a sidecar of `file` may have, in the order they stand before each other:
// "photo.cr2.xmp" (darktable and others), then "photo.xmp" (Lightroom and others). Never
// `file` itself.
std::vector<std::string> sidecarNames(const std::string& file);

// Of sidecarNames, those that exist and are no folder.
std::vector<std::string> existingSidecars(const std::string& file);

// The file's tags and, behind them, each read sidecar's XMP tags, marked with the sidecar's
// path: a tag the file has too stands before the file's (a sidecar read earlier before a
// later one), the others after the file's tags. A sidecar with an error, or that is no XMP,
// becomes a warning of the file.
void mergeSidecar(FileTags& file, FileTags&& sidecar);

// `file` (given to the tool as `toolPath`) with its `sidecars` merged in, from one command
// that read them all: each message goes to the file it ends with, the rest to `file`.
FileTags makeFileWithSidecars(const std::string& file, std::string_view toolPath,
                              const std::vector<std::string>& sidecars, const ToolAnswer& answer,
                              const CatalogueTexts& texts);

// Of a folder's files as the tool read them, each file's sidecars merged into it and no more
// files of their own; the others as they were, in order.
std::vector<FileTags> mergeFolderSidecars(std::vector<FileTags>&& files);

// The tool's arguments that write `assignments` to a sidecar: XMP ones as they are, EXIF and
// IPTC ones to their writable XMP counterparts in the catalogue; or why one can't be.
std::variant<std::vector<std::string>, std::string> sidecarArguments(
    std::span<const TagAssignment> assignments);

}  // namespace lorvane::detail
