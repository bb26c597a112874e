#pragma once

// The binary tags of one file as the tool extracts them ("-b"), read on a reader's kept tools.

#include <chrono>
#include <string>
#include <vector>

#include <lorvane/tag_values.hpp>

#include "read/ordered_runs.hpp"

namespace lorvane::detail {

// Every tag the tool extracts of one file for these arguments ("-ThumbnailImage", or
// "-Preview:all"), by its name without groups (the arguments may ask for them, "-G1"), with the
// bytes "exiftool -b" writes of it; a tag that extracts nothing is left out.
std::vector<EmbeddedImage> extractBinaries(ToolSlots& tools, std::chrono::milliseconds timeout,
                                           const std::string& file,
                                           const std::vector<std::string>& tagArguments);

// The largest JPEG or PNG picture among them, if any.
std::optional<EmbeddedImage> largestPicture(std::vector<EmbeddedImage> images);

// The arguments that name the previews, thumbnails and other pictures a file holds, by their
// groups ("-IFD1:ThumbnailImage"), for extractBinaries; nothing where the file holds none.
std::vector<std::string> previewTags(ToolSlots& tools, std::chrono::milliseconds timeout,
                                     const std::string& file);

}  // namespace lorvane::detail
