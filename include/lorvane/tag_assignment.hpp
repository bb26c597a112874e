#pragma once

// "NAME=VALUE" checked against the catalogue before anything is written: the tag known and
// writable, the value among its choices (raw, or a label in the chosen language), a number of
// its type within its range, no more values than its count, a date where the tag holds one.
// assignCaptureTime and assignLocation make the assignments of a typed value.
//
//   auto checked = checkAssignments({"EXIF:Orientation=Rotate 90 CW"}, ETLanguage::english);
//   if (auto* assignments = std::get_if<std::vector<TagAssignment>>(&checked)) { ... }

#include <cstddef>
#include <iosfwd>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include <lorvane/et_language.hpp>
#include <lorvane/tag_values.hpp>

namespace lorvane {

// Only pointed to here: its header pulls in the whole generated catalogue, which a unit that
// only reads or writes files needn't compile.
class TagItem;

// One tag to write: its values (raw values of the tool) or, with none, its deletion.
struct TagAssignment {
  const TagItem* item = nullptr;
  std::vector<std::string> values;  // empty: delete the tag
  bool isRaw = true;                // the values go to the tool as raw values ("-TAG#=")
  // The name the tool gets, as it was given ("EXIF:ExifIFD:DateTimeOriginal", or bare,
  // "DateTimeOriginal", for the tool to choose the group); empty: the item's name.
  std::string toolName;

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
    notADate,         // a date tag's `value` is no date ("YYYY:MM:DD HH:MM:SS" or ISO 8601)
  };
  Reason reason = Reason::unknownTag;
  std::string name;               // NAME as given
  std::string value;              // the VALUE as given, or the number in it that is refused
  const TagItem* item = nullptr;  // the tag, once known
  std::size_t allowedValues = 0;
  std::size_t givenValues = 0;
};

// "unknownTag", "notADate", ...: the enumerator's own name.
std::string_view to_string(AssignmentRefusal::Reason reason);
std::ostream& operator<<(std::ostream& out, AssignmentRefusal::Reason reason);

// Checks all assignments ("NAME=VALUE", the texts as given): each VALUE empty (delete), a raw
// value or a label of the tag's choices in `language`, for a date tag a date
// ("YYYY:MM:DD HH:MM:SS[.sss][+HH:MM]" or ISO 8601; the tool gets its own form), or for another
// tag without choices a number of its type (a rational also as "1/250") or any text. An EXIF
// date given with sub-seconds or a zone also writes its SubSecTime* and OffsetTime* tags. NAME
// is a catalogue name ("EXIF:DateTimeOriginal"), a name as the reader reports it, with its
// family-1 group ("EXIF:ExifIFD:DateTimeOriginal"), or a bare tag name ("DateTimeOriginal"),
// which the tool writes to the group it prefers. A list tag named several times takes every
// value; another tag only one. Either every assignment, or every refusal.
std::variant<std::vector<TagAssignment>, std::vector<AssignmentRefusal>> checkAssignments(
    std::span<const std::string> texts, ETLanguage language);

// When a picture was taken, for MetadataWriter::write: EXIF's DateTimeOriginal and CreateDate
// with OffsetTimeOriginal/OffsetTimeDigitized and SubSecTimeOriginal/SubSecTimeDigitized
// where the time has them (EXIF only with a time of day), and XMP's DateTimeOriginal with its
// zone. Read back, FileTags::captureTime() gives the same time.
std::vector<TagAssignment> assignCaptureTime(const TagDateTime& time);

// Where it was taken, for MetadataWriter::write: EXIF's GPS latitude and longitude with their
// references, and the altitude with its reference where there is one.
std::vector<TagAssignment> assignLocation(const GeoLocation& place);

}  // namespace lorvane
