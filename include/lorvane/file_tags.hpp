#pragma once

// What a file holds, as ExifTool read it and as the catalogue names it: per file, one entry per
// tag the tool reported, with the printed and the raw value exactly as the tool wrote them (no
// number passes through a double), the catalogue's entry where it has the tag, and a title in
// the reader's language. MetadataReader makes these.

#include <optional>
#include <string>
#include <vector>

#include <lorvane/tag_values.hpp>

namespace lorvane {

// Only pointed to here: its header pulls in the whole generated catalogue, which a unit that
// only reads or writes files needn't compile.
class TagItem;

// A value as text: one text, or the elements of a list.
struct TagValue {
  std::vector<std::string> texts;
  bool isList = false;

  // The elements joined as the tool's own "-sep ', '" output joins them.
  std::string joined() const;
  friend bool operator==(const TagValue&, const TagValue&) = default;
};

struct FileTag {
  std::string group;              // the tool's family 0 and 1 groups, "EXIF:IFD0"
  std::string family1;            // "IFD0"; empty where the tool printed one group
  std::string name;               // the tool's tag name, "Orientation"
  const TagItem* item = nullptr;  // the catalogue's entry, if it has the tag
  std::string section;            // the catalogue stream, or the group the tag belongs to
  std::string title;              // the catalogue's title, else the tool's description
  TagValue value;                 // the tool's printed value
  TagValue raw;                   // the raw value; equal to value where the tool gave none
  std::string label;              // the catalogue's label, only where the tool printed none
  std::string origin = {};        // empty for the file itself, else the sidecar it came from

  // The raw value as a date, for every value the tool writes as one, whatever the catalogue
  // says of the tag (TagDateTime::parse); a year or a month alone only where the catalogue
  // says the tag holds a date. Nothing for a list, a time alone or an empty date.
  std::optional<TagDateTime> dateTime() const;
  // The raw value where it is one number: an integer exactly (an int64 kind, a uint64 one
  // beyond it), anything else as a float64. Nothing for a list, text, "inf" or "undef".
  std::optional<TagNumber> number() const;
};

struct FileTags {
  std::string file;                  // as the caller named it (a folder's files by their path)
  std::optional<std::string> error;  // why the file could not be read, or the tool's error
  std::vector<FileTag> tags;         // in the tool's order
  // The sidecars whose XMP tags were read with the file (MetadataReader::Options::sidecars),
  // and what went wrong beside the file's own reading, such as a sidecar that could not be read.
  std::vector<std::string> sidecars = {};
  std::vector<std::string> warnings = {};

  // When the picture or recording was taken: the first of these that holds a whole day,
  // never a file system's date.
  //   1. Composite:SubSecDateTimeOriginal (the tool's join of the three below)
  //   2. EXIF:DateTimeOriginal with EXIF:SubSecTimeOriginal and EXIF:OffsetTimeOriginal
  //   3. XMP:DateTimeOriginal, then XMP:DateCreated
  //   4. QuickTime:CreationDate (Apple's, with its zone in the value)
  //   5. QuickTime:CreateDate, which the format keeps in UTC (zoneSource "UTC by the format")
  //   6. EXIF:CreateDate with EXIF:SubSecTimeDigitized and EXIF:OffsetTimeDigitized, then
  //      XMP:CreateDate, XMP:DateTimeDigitized
  // The zone is the one of the value, or of its offset tag; where none says it, the GPS date
  // and time (UTC) against the local time gives it when the two lie within 14 hours, rounded
  // to 15 minutes (zoneSource "GPS time"); otherwise it stays unknown.
  std::optional<CaptureTime> captureTime() const;
  // Where it was taken: the tool's composite GPS position (with the altitude's reference where
  // the composite altitude has no sign), else EXIF's GPS tags with their references, XMP's
  // ("48,51.504N" or degrees), QuickTime's GPSCoordinates ("-33.5 -70.25 -12" or ISO 6709
  // "+48.8584+002.2945+035.000/"). A position of 0,0 with no other GPS tag is none.
  std::optional<GeoLocation> location() const;
};

}  // namespace lorvane
