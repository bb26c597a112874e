#pragma once

// Dates and typed values in the forms the tool takes when it writes them.

#include <string>

#include <lorvane/tag_values.hpp>

namespace lorvane {
class TagItem;
}

namespace lorvane::detail {

// "+02:00", "-05:30", "+00:00".
std::string offsetText(int minutes);

// "2026:11:01 10:30:00.123+02:00", "2026:11:01", "2026:11"; without the sub-seconds and the
// zone where `whole` is false.
std::string toolDateText(const TagDateTime& date, bool whole = true);

// The EXIF tags that hold the sub-seconds and the zone of an EXIF date tag
// (DateTimeOriginal: SubSecTimeOriginal, OffsetTimeOriginal); nothing for another tag.
struct DateCompanions {
  const TagItem* subseconds = nullptr;
  const TagItem* offset = nullptr;
};
DateCompanions dateCompanions(const TagItem& date);

}  // namespace lorvane::detail
