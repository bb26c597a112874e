// When and where a file says it was taken, joined from the tags the tool read.

#include <array>
#include <charconv>
#include <cmath>
#include <variant>

#include <lorvane/file_tags.hpp>

namespace lorvane {
namespace {

using namespace std::chrono;

bool inGroup(const FileTag& tag, std::string_view family0) {
  return tag.group.starts_with(family0) &&
         (tag.group.size() == family0.size() || tag.group[family0.size()] == ':');
}

// The first tag of this name in this family-0 group.
const FileTag* findTag(const FileTags& file, std::string_view family0, std::string_view name) {
  for (const auto& tag : file.tags) {
    if (tag.name == name && inGroup(tag, family0)) {
      return &tag;
    }
  }
  return nullptr;
}

std::string nameOf(const FileTag& tag) {
  return tag.group.substr(0, tag.group.find(':')) + ":" + tag.name;
}

std::optional<double> numberOf(const FileTag* tag) {
  const auto number = tag != nullptr ? tag->number() : std::nullopt;
  if (!number) {
    return std::nullopt;
  }
  return std::visit([](auto value) { return static_cast<double>(value); }, number->value());
}

std::string rawText(const FileTag* tag) { return tag != nullptr ? tag->raw.joined() : ""; }

// An offset tag's value, "+02:00", read as the zone of a date would be.
std::optional<int> offsetOf(const FileTag* tag) {
  if (tag == nullptr) {
    return std::nullopt;
  }
  const auto date = TagDateTime::parse("2000:01:01 00:00:00" + rawText(tag));
  return date ? date->offsetMinutes : std::nullopt;
}

// One place a capture time may be read from, in the order FileTags::captureTime documents.
struct DateSource {
  std::string_view family0;
  std::string_view name;
  std::string_view subseconds;  // the tag of its sub-seconds, if it has one
  std::string_view offset;      // the tag of its offset, if it has one
};

constexpr std::array dateSources{
    DateSource{"Composite", "SubSecDateTimeOriginal", "", "OffsetTimeOriginal"},
    DateSource{"EXIF", "DateTimeOriginal", "SubSecTimeOriginal", "OffsetTimeOriginal"},
    DateSource{"XMP", "DateTimeOriginal", "", ""},
    DateSource{"XMP", "DateCreated", "", ""},
    DateSource{"QuickTime", "CreationDate", "", ""},
    DateSource{"QuickTime", "CreateDate", "", ""},
    DateSource{"EXIF", "CreateDate", "SubSecTimeDigitized", "OffsetTimeDigitized"},
    DateSource{"XMP", "CreateDate", "", ""},
    DateSource{"XMP", "DateTimeDigitized", "", ""},
};

std::optional<CaptureTime> readSource(const FileTags& file, const DateSource& source) {
  const FileTag* tag = findTag(file, source.family0, source.name);
  const auto date = tag != nullptr ? tag->dateTime() : std::nullopt;
  if (!date) {
    return std::nullopt;
  }
  CaptureTime result{*date, nameOf(*tag), {}};
  TagDateTime& time = result.time;
  if (time.hour && time.second && time.subseconds.empty() && !source.subseconds.empty()) {
    const std::string digits = rawText(findTag(file, "EXIF", source.subseconds));
    const auto start = digits.find_first_not_of(' ');
    if (start != std::string::npos &&
        digits.find_first_not_of("0123456789", start) == std::string::npos) {
      time.subseconds = digits.substr(start);
    }
  }
  // The offset tag that the tool's composite joined, or that belongs to the EXIF date.
  const FileTag* offsetTag = source.offset.empty() ? nullptr : findTag(file, "EXIF", source.offset);
  if (time.offsetMinutes) {
    result.zoneSource = source.family0 == "Composite" && offsetTag != nullptr &&
                                offsetOf(offsetTag) == time.offsetMinutes
                            ? nameOf(*offsetTag)
                            : "in the value";
  } else if (time.hour) {
    if (const auto offset = offsetOf(offsetTag)) {
      time.offsetMinutes = offset;
      result.zoneSource = nameOf(*offsetTag);
    } else if (source.family0 == "QuickTime" && source.name == "CreateDate") {
      time.offsetMinutes = 0;
      result.zoneSource = "UTC by the format";
    }
  }
  return result;
}

// The GPS receiver's date and time, which is UTC.
std::optional<TagDateTime> gpsTime(const FileTags& file) {
  std::optional<TagDateTime> time;
  for (std::string_view group : {"Composite", "XMP"}) {
    if (const FileTag* tag = findTag(file, group, "GPSDateTime"); tag != nullptr && !time) {
      time = tag->dateTime();
    }
  }
  if (!time) {
    const FileTag* date = findTag(file, "EXIF", "GPSDateStamp");
    const FileTag* clock = findTag(file, "EXIF", "GPSTimeStamp");
    if (date != nullptr && clock != nullptr) {
      time = TagDateTime::parse(rawText(date) + " " + rawText(clock));
    }
  }
  if (!time || !time->hour) {
    return std::nullopt;
  }
  if (!time->offsetMinutes) {
    time->offsetMinutes = 0;
  }
  return time;
}

// The zone a local time was in, from the GPS time (UTC) of the same moment: only where the
// two lie within 14 hours, as every zone on earth does, to the nearest 15 minutes.
std::optional<int> zoneFromGps(const TagDateTime& local, const TagDateTime& gps) {
  TagDateTime asUtc = local;
  asUtc.offsetMinutes = 0;
  const auto localInstant = asUtc.utc();
  const auto gpsInstant = gps.utc();
  if (!localInstant || !gpsInstant) {
    return std::nullopt;
  }
  const auto difference = duration_cast<seconds>(*localInstant - *gpsInstant).count();
  if (std::abs(difference) > 14 * 3600) {
    return std::nullopt;
  }
  const auto quarters = std::lround(static_cast<double>(difference) / 900.0);
  return static_cast<int>(quarters * 15);
}

// "48,51.504N", "48,51,30.24N" or plain signed degrees.
std::optional<double> xmpCoordinate(const FileTag* tag) {
  if (const auto number = numberOf(tag)) {
    return number;
  }
  std::string text = rawText(tag);
  if (text.empty()) {
    return std::nullopt;
  }
  const char hemisphere = text.back();
  const double sign = hemisphere == 'S' || hemisphere == 'W' ? -1 : 1;
  if (hemisphere == 'N' || hemisphere == 'S' || hemisphere == 'E' || hemisphere == 'W') {
    text.pop_back();
  }
  double degrees = 0;
  double scale = 1;
  std::size_t start = 0;
  for (int part = 0; part < 3 && start <= text.size(); ++part) {
    const auto end = std::min(text.find(',', start), text.size());
    double value = 0;
    const auto [stop, error] = std::from_chars(text.data() + start, text.data() + end, value);
    if (error != std::errc() || stop != text.data() + end) {
      return std::nullopt;
    }
    degrees += value / scale;
    scale *= 60;
    start = end + 1;
  }
  if (start <= text.size()) {
    return std::nullopt;  // more than three parts
  }
  return sign * degrees;
}

// QuickTime's "-33.5 -70.25 -12" (as the tool gives it) or ISO 6709's
// "+48.8584+002.2945+035.000/": latitude, longitude and maybe altitude.
std::vector<double> coordinates(std::string text) {
  if (text.ends_with('/')) {
    text.pop_back();
    // Each number starts with its sign.
    for (std::size_t i = 1; i < text.size(); ++i) {
      if (text[i] == '+' || text[i] == '-') {
        text.insert(i++, " ");
      }
    }
  }
  std::vector<double> numbers;
  std::size_t start = text.find_first_not_of(' ');
  while (start != std::string::npos) {
    const auto end = std::min(text.find(' ', start), text.size());
    if (text[start] == '+') {
      ++start;
    }
    double value = 0;
    const auto [stop, error] = std::from_chars(text.data() + start, text.data() + end, value);
    if (error != std::errc() || stop != text.data() + end || !std::isfinite(value)) {
      return {};
    }
    numbers.push_back(value);
    start = text.find_first_not_of(' ', end);
  }
  return numbers;
}

// A position read from one group's latitude, longitude and altitude with their references.
std::optional<GeoLocation> fromGroup(const FileTags& file, std::string_view group) {
  const FileTag* latitudeTag = findTag(file, group, "GPSLatitude");
  const FileTag* longitudeTag = findTag(file, group, "GPSLongitude");
  auto latitude = group == "XMP" ? xmpCoordinate(latitudeTag) : numberOf(latitudeTag);
  auto longitude = group == "XMP" ? xmpCoordinate(longitudeTag) : numberOf(longitudeTag);
  if (!latitude || !longitude) {
    return std::nullopt;
  }
  // A reference makes an unsigned value signed; one already signed keeps its sign.
  if (rawText(findTag(file, group, "GPSLatitudeRef")) == "S") {
    latitude = -std::abs(*latitude);
  }
  if (rawText(findTag(file, group, "GPSLongitudeRef")) == "W") {
    longitude = -std::abs(*longitude);
  }
  GeoLocation place{*latitude, *longitude, numberOf(findTag(file, group, "GPSAltitude")),
                    std::string(group)};
  if (place.altitude && rawText(findTag(file, group, "GPSAltitudeRef")) == "1") {
    place.altitude = -std::abs(*place.altitude);
  }
  return place;
}

std::optional<GeoLocation> fromQuickTime(const FileTags& file) {
  for (const auto& tag : file.tags) {
    if (tag.name != "GPSCoordinates" || !inGroup(tag, "QuickTime")) {
      continue;
    }
    const auto numbers = coordinates(tag.raw.joined());
    if (numbers.size() == 2 || numbers.size() == 3) {
      GeoLocation place{numbers[0], numbers[1], std::nullopt, "QuickTime"};
      if (numbers.size() == 3) {
        place.altitude = numbers[2];
      }
      return place;
    }
  }
  return std::nullopt;
}

// Whether the file has a GPS tag beyond the position itself: then 0,0 is a real place.
bool hasOtherGpsTag(const FileTags& file) {
  for (const auto& tag : file.tags) {
    if (tag.name.starts_with("GPS") && tag.name != "GPSLatitude" && tag.name != "GPSLongitude" &&
        tag.name != "GPSLatitudeRef" && tag.name != "GPSLongitudeRef" &&
        tag.name != "GPSPosition" && tag.name != "GPSVersionID" && tag.name != "GPSCoordinates") {
      return true;
    }
  }
  return false;
}

}  // namespace

std::optional<CaptureTime> FileTags::captureTime() const {
  std::optional<CaptureTime> partial;
  std::optional<CaptureTime> found;
  for (const auto& source : dateSources) {
    auto candidate = readSource(*this, source);
    if (candidate && candidate->time.day != 0) {
      found = std::move(candidate);
      break;
    }
    if (candidate && !partial) {
      partial = std::move(candidate);
    }
  }
  if (!found) {
    return partial;
  }
  if (!found->time.offsetMinutes && found->time.hour) {
    if (const auto gps = gpsTime(*this)) {
      if (const auto offset = zoneFromGps(found->time, *gps)) {
        found->time.offsetMinutes = offset;
        found->zoneSource = "GPS time";
      }
    }
  }
  return found;
}

std::optional<GeoLocation> FileTags::location() const {
  std::optional<GeoLocation> place;
  if (auto composite = fromGroup(*this, "Composite")) {
    place = std::move(composite);
  } else if (auto exif = fromGroup(*this, "EXIF")) {
    place = std::move(exif);
  } else if (auto xmp = fromGroup(*this, "XMP")) {
    place = std::move(xmp);
  } else {
    place = fromQuickTime(*this);
  }
  if (!place || std::abs(place->latitude) > 90 || std::abs(place->longitude) > 180 ||
      (place->latitude == 0 && place->longitude == 0 && !hasOtherGpsTag(*this))) {
    return std::nullopt;
  }
  return place;
}

}  // namespace lorvane
