#pragma once

// "NAME=VALUE" checked against the catalogue before anything is written: the tag known and
// writable, the value among its choices (raw, or a label in the chosen language), a number of
// its type within its range, no more values than its count.
//
//   auto checked = checkAssignments({"EXIF:Orientation=Rotate 90 CW"}, ETLanguage::english);
//   if (auto* assignments = std::get_if<std::vector<TagAssignment>>(&checked)) { ... }

#include <cstddef>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include <lorvane/et_language.hpp>
namespace lorvane {

// Only pointed to here: its header pulls in the whole generated catalogue, which a unit that
// only reads or writes files needn't compile.
class TagItem;

// One tag to write: its values (raw values of the tool) or, with none, its deletion.
struct TagAssignment {
  const TagItem* item = nullptr;
  std::vector<std::string> values;  // empty: delete the tag
  bool isRaw = true;                // the values go to the tool as raw values ("-TAG#=")

  // The tool's arguments: "-EXIF:Orientation#=6", "-XMP:Title=", ...
  std::vector<std::string> toolArguments() const;
};

// Why one NAME=VALUE was refused, with what an application needs to say so in its own words.
struct AssignmentRefusal {
  enum class Reason {
    unknownTag,       // NAME is no tag of the catalogue
    notWritable,      // the tool can't write the tag
    notAChoice,       // `value` is neither a raw value nor a label of item's choices
    notANumber,       // `value` is no number of the tag's type (item->type())
    outOfRange,       // `value` lies outside the range of the tag's type
    tooManyValues,    // more numbers than the tag takes (`allowedValues`, `givenValues`)
    namedTwice,       // a tag that takes one value is named more than once
    deleteAndValues,  // a list tag both deleted and given values
  };
  Reason reason = Reason::unknownTag;
  std::string name;               // NAME as given
  std::string value;              // the VALUE as given, or the number in it that is refused
  const TagItem* item = nullptr;  // the tag, once known
  std::size_t allowedValues = 0;
  std::size_t givenValues = 0;
};

// Checks all assignments ("NAME=VALUE", the texts as given): each VALUE empty (delete), a raw
// value or a label of the tag's choices in `language`, or for a tag without choices a number
// of its type (a rational also as "1/250") or any text. A list tag named several times takes
// every value; another tag only one. Either every assignment, or every refusal.
std::variant<std::vector<TagAssignment>, std::vector<AssignmentRefusal>> checkAssignments(
    std::span<const std::string> texts, ETLanguage language);

}  // namespace lorvane
