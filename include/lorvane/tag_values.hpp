#pragma once

// Values an application can use, made from what the tool read: dates with their zones,
// positions in signed degrees, when a picture was taken, and the pictures inside files.
// FileTag::dateTime() and FileTag::number() (<lorvane/file_tags.hpp>) read one tag;
// FileTags::captureTime() and FileTags::location() join the tags of a file.
//
//   if (auto taken = file.captureTime()) std::cout << taken->time.iso8601();
//   if (auto place = file.location()) std::cout << place->latitude << ',' << place->longitude;

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <lorvane/tag_type.hpp>  // TagNumber, what FileTag::number() gives

namespace lorvane {

// A date as a file holds it: a year alone ("2026"), a year and a month ("2026:11"), a day, or
// a day with its time, sub-seconds and zone.
struct TagDateTime {
  int year = 0;
  unsigned month = 0;  // 1-12; 0 for a year alone
  unsigned day = 0;    // 1-31; 0 for a year or a month alone
  std::optional<int> hour, minute, second;
  std::string subseconds;            // the digits after the point as written ("123", "05")
  std::optional<int> offsetMinutes;  // east of UTC; absent where nothing says the zone

  // "2026-11-01T10:30:00.123+02:00" ("Z" for an offset of 0), "2026-11-01T10:30:00" without an
  // offset, "2026-11-01" for a day, "2026" and "2026-11" for the partial dates.
  std::string iso8601() const;
  // The instant, only where the day, the time and the offset are all known.
  std::optional<std::chrono::sys_time<std::chrono::microseconds>> utc() const;

  // The tool's form "YYYY:MM:DD HH:MM:SS[.sss][Z|+HH:MM]" or ISO 8601 ("2026-11-01T10:30:00Z"),
  // also a day alone and the partial "YYYY" and "YYYY:MM" (or "YYYY-MM"); the seconds may be
  // left out. Nothing for a time alone, an empty date ("0000:00:00 00:00:00"), an impossible
  // one ("2026:02:30") or any text around the date.
  static std::optional<TagDateTime> parse(std::string_view text);

  friend bool operator==(const TagDateTime&, const TagDateTime&) = default;
};

// Where a file says it was taken.
struct GeoLocation {
  double latitude = 0;             // decimal degrees, south negative
  double longitude = 0;            // decimal degrees, west negative
  std::optional<double> altitude;  // metres, below sea level negative
  std::string source;              // the tool group the position came from: "Composite", "XMP"
};

// When a picture or recording was taken, with the tags it was found in.
struct CaptureTime {
  TagDateTime time;
  std::string source;      // the tag whose date it is: "EXIF:DateTimeOriginal"
  std::string zoneSource;  // what gave the offset: "EXIF:OffsetTimeOriginal", "in the value",
                           // "GPS time"; empty where the zone is unknown
};

// A picture inside a file, as the tool extracts it.
struct EmbeddedImage {
  std::string tag;  // "PreviewImage", "ThumbnailImage", "JpgFromRaw", ...
  std::vector<std::byte> bytes;
};

}  // namespace lorvane
