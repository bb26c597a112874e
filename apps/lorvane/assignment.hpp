#pragma once

// `lorvane set`'s NAME=VALUE, checked against the catalogue before anything is written.

#include <string>
#include <variant>
#include <vector>

#include <lorvane/tag_item.hpp>

namespace lorvane::app {

// One tag to write: its values (raw values of the tool) or, with none, its deletion.
struct Assignment {
  const TagItem* item = nullptr;
  std::vector<std::string> values;  // empty: delete the tag
  bool isRaw = true;                // the values go to the tool as raw values ("-TAG#=")

  // The tool's arguments: "-EXIF:Orientation#=6", "-XMP:Title=", ...
  std::vector<std::string> toolArguments() const;
};

// Why an assignment was refused, as a sentence for the user.
struct Refusal {
  std::string message;
};

// Checks all assignments ("NAME=VALUE", the text as given): each NAME a writable catalogue tag,
// each VALUE empty (delete), a raw value or a label of the tag's choices in the catalogue's
// language, a number of the tag's type and within its range, no more values than its count.
// A list tag named several times takes every value; another tag only one.
std::variant<std::vector<Assignment>, std::vector<Refusal>> checkAssignments(
    const std::vector<std::string>& texts);

}  // namespace lorvane::app
