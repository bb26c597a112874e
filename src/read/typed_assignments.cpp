// Typed values (a capture time, a place) as the assignments that write them.

#include <charconv>
#include <cmath>
#include <cstdlib>

#include <lorvane/tag_assignment.hpp>
#include <lorvane/tag_item.hpp>
#include <lorvane/tag_name.hpp>

#include "read/tool_dates.hpp"

namespace lorvane {
namespace detail {
namespace {

std::string twoDigits(int value) {
  return std::string{static_cast<char>('0' + value / 10 % 10), static_cast<char>('0' + value % 10)};
}

const TagItem& item(std::string_view name) {
  const TagItem* found = TagItem::find(*TagName::parse(name));
  if (found == nullptr) {
    std::abort();  // the catalogue always has these EXIF and XMP tags
  }
  return *found;
}

// The shortest text that reads back as the same double.
std::string numberText(double value) {
  char text[32];
  const auto [end, error] = std::to_chars(text, text + sizeof text, value);
  return error == std::errc() ? std::string(text, end) : std::to_string(value);
}

}  // namespace

std::string offsetText(int minutes) {
  const int size = std::abs(minutes);
  return (minutes < 0 ? "-" : "+") + twoDigits(size / 60) + ":" + twoDigits(size % 60);
}

std::string toolDateText(const TagDateTime& date, bool whole) {
  std::string text = std::to_string(date.year);
  text.insert(0, text.size() < 4 ? 4 - text.size() : 0, '0');
  if (date.month != 0) {
    text += ":" + twoDigits(static_cast<int>(date.month));
  }
  if (date.day != 0) {
    text += ":" + twoDigits(static_cast<int>(date.day));
  }
  if (date.hour) {
    text += " " + twoDigits(*date.hour) + ":" + twoDigits(date.minute.value_or(0)) + ":" +
            twoDigits(date.second.value_or(0));
    if (whole && !date.subseconds.empty()) {
      text += "." + date.subseconds;
    }
    if (whole && date.offsetMinutes) {
      text += offsetText(*date.offsetMinutes);
    }
  }
  return text;
}

DateCompanions dateCompanions(const TagItem& date) {
  if (date.stream().rawValue() != "EXIF") {
    return {};
  }
  const auto key = date.key().rawValue();
  const std::string_view suffix = key == "DateTimeOriginal" ? "Original"
                                  : key == "CreateDate"     ? "Digitized"
                                  : key == "ModifyDate"     ? ""
                                                            : "-";
  if (suffix == "-") {
    return {};
  }
  return {&item("EXIF:SubSecTime" + std::string(suffix)),
          &item("EXIF:OffsetTime" + std::string(suffix))};
}

}  // namespace detail

std::vector<TagAssignment> assignCaptureTime(const TagDateTime& time) {
  std::vector<TagAssignment> assignments;
  // The tool reads dates in their printed form ("2026:11:01 10:30:00+02:00").
  const auto add = [&](const TagItem& item, std::string value) {
    assignments.push_back({&item, {std::move(value)}, false, {}});
  };
  if (time.hour && time.day != 0) {
    for (const char* name : {"EXIF:DateTimeOriginal", "EXIF:CreateDate"}) {
      const TagItem& date = detail::item(name);
      add(date, detail::toolDateText(time, false));
      const auto companions = detail::dateCompanions(date);
      if (!time.subseconds.empty()) {
        add(*companions.subseconds, time.subseconds);
      }
      if (time.offsetMinutes) {
        add(*companions.offset, detail::offsetText(*time.offsetMinutes));
      }
    }
  }
  add(detail::item("XMP:DateTimeOriginal"), detail::toolDateText(time));
  return assignments;
}

std::vector<TagAssignment> assignLocation(const GeoLocation& place) {
  // Raw values: the references as letters and numbers ("S", "1"), the degrees unsigned. The
  // printed form of a reference is read as a label, and "1" is none of GPSAltitudeRef's.
  std::vector<TagAssignment> assignments;
  const auto add = [&](std::string_view name, std::string value) {
    assignments.push_back({&detail::item(name), {std::move(value)}, true, {}});
  };
  add("EXIF:GPSLatitude", detail::numberText(std::abs(place.latitude)));
  add("EXIF:GPSLatitudeRef", place.latitude < 0 ? "S" : "N");
  add("EXIF:GPSLongitude", detail::numberText(std::abs(place.longitude)));
  add("EXIF:GPSLongitudeRef", place.longitude < 0 ? "W" : "E");
  if (place.altitude) {
    add("EXIF:GPSAltitude", detail::numberText(std::abs(*place.altitude)));
    add("EXIF:GPSAltitudeRef", *place.altitude < 0 ? "1" : "0");
  }
  return assignments;
}

}  // namespace lorvane
