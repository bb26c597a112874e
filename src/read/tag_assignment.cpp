#include <lorvane/tag_assignment.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <ostream>
#include <sstream>
#include <string_view>

#include <lorvane/tag_name.hpp>
#include <lorvane/tag_stream.hpp>
#include <lorvane/tool_groups.hpp>

#include "catalogue/alternatives.hpp"
#include "catalogue/catalogue_texts.hpp"
#include "read/tool_dates.hpp"

namespace lorvane {
namespace {

using Reason = AssignmentRefusal::Reason;

std::vector<std::string> words(std::string_view text) {
  std::vector<std::string> result;
  std::istringstream in{std::string(text)};
  for (std::string word; in >> word;) {
    result.push_back(word);
  }
  return result;
}

// The raw choice a text names: the entry itself, the label of one in the catalogue's language
// (or one alternative of a joined label), or, cut back by the catalogue's rule, the front of it.
std::optional<std::string> findChoice(const TagItem& item, std::string_view text,
                                      const detail::CatalogueTexts& texts) {
  const auto choices = item.choices();
  if (std::find(choices.begin(), choices.end(), text) != choices.end()) {
    return std::string(text);
  }
  for (std::size_t i = 0; i < choices.size(); ++i) {
    if (detail::isAlternative(texts.label(item, i), text)) {
      return std::string(choices[i]);
    }
  }
  if (const auto position = item.index(text)) {
    return std::string(choices[*position]);
  }
  return std::nullopt;
}

std::optional<long double> parseNumber(std::string_view text, bool allowsFloats) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
  }
  if (allowsFloats) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
      return std::nullopt;
    }
    return value;
  }
  if (text.starts_with('-')) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size()
               ? std::optional<long double>(value)
               : std::nullopt;
  }
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size()
             ? std::optional<long double>(value)
             : std::nullopt;
}

long double asLongDouble(const TagNumber& number) {
  return std::visit([](auto value) { return static_cast<long double>(value); }, number.value());
}

// Why one number doesn't fit the tag's type, or nothing when it does. A rational also takes
// the form "1/250".
std::optional<Reason> checkNumber(const TagItem& item, std::string_view text) {
  const TagType type = item.type();
  std::optional<long double> value;
  if (const auto slash = text.find('/'); type.isRational() && slash != std::string_view::npos) {
    const auto numerator = parseNumber(text.substr(0, slash), false);
    const auto denominator = parseNumber(text.substr(slash + 1), false);
    if (numerator && denominator && *denominator != 0) {
      value = *numerator / *denominator;
    }
  } else {
    value = parseNumber(text, type.allowsFloats());
  }
  if (!value) {
    return Reason::notANumber;
  }
  const auto minimum = type.minimumNumberValue();
  const auto maximum = type.maximumNumberValue();
  if ((minimum && *value < asLongDouble(*minimum)) ||
      (maximum && *value > asLongDouble(*maximum))) {
    return Reason::outOfRange;
  }
  return std::nullopt;
}

// The values of one NAME=VALUE for its tag, or why they don't fit.
std::variant<TagAssignment, AssignmentRefusal> checkValue(const TagItem& item,
                                                          std::string_view name,
                                                          std::string_view text,
                                                          const detail::CatalogueTexts& texts) {
  TagAssignment assignment{&item, {}, true, {}};
  const auto refusal = [&](Reason reason, std::string_view value) {
    return AssignmentRefusal{reason, std::string(name), std::string(value), &item, 0, 0};
  };
  if (text.empty()) {
    return assignment;
  }
  if (!item.choices().empty()) {
    if (const auto choice = findChoice(item, text, texts)) {
      assignment.values.push_back(*choice);
      return assignment;
    }
    return refusal(Reason::notAChoice, text);
  }
  const TagType type = item.type();
  if (type.isDateTime() || type.isDateOnly()) {
    // An EXIF date holds a day and its time; its zone and sub-seconds go to tags of their own.
    const auto date = TagDateTime::parse(text);
    const bool isExif = item.stream().rawValue() == "EXIF";
    if (!date || (isExif && type.isDateTime() && !date->hour)) {
      return refusal(Reason::notADate, text);
    }
    const auto companions = detail::dateCompanions(item);
    assignment.values.push_back(detail::toolDateText(*date, companions.offset == nullptr));
    assignment.isRaw = false;  // the tool reads dates in their printed form
    return assignment;
  }
  if (!type.isNumber()) {
    assignment.values.emplace_back(text);
    assignment.isRaw = false;  // the tool reads dates and such in their printed form
    return assignment;
  }
  const auto numbers = words(text);
  const int count = item.count();
  const std::size_t allowed = count < 0    ? numbers.size()
                              : count == 0 ? 1
                                           : static_cast<std::size_t>(count);
  if (numbers.empty() || numbers.size() > allowed) {
    auto tooMany = refusal(Reason::tooManyValues, text);
    tooMany.allowedValues = allowed;
    tooMany.givenValues = numbers.size();
    return tooMany;
  }
  for (const auto& number : numbers) {
    if (const auto why = checkNumber(item, number)) {
      return refusal(*why, number);
    }
  }
  assignment.values.emplace_back(text);
  return assignment;
}

// The tag a name means: a catalogue name, a name with the tool's groups as the reader reports
// it, or a bare name, found where the tool would write it (EXIF, IPTC, XMP, then any stream).
const TagItem* findTag(std::string_view name) {
  if (const auto parsed = TagName::parse(name)) {
    if (const TagItem* item = TagItem::find(*parsed)) {
      return item;
    }
  }
  if (name.find(':') != std::string_view::npos) {
    return findToolTag(name);
  }
  for (std::string_view stream : {"EXIF", "IPTC", "XMP"}) {
    if (const TagItem* item = TagItem::find(TagName(stream, name))) {
      return item;
    }
  }
  for (const TagStream& stream : TagStream::allCases()) {
    if (const TagItem* item = TagItem::find(TagName(stream.rawValue(), name))) {
      return item;
    }
  }
  return nullptr;
}

// The assignments of the sub-seconds and the zone given with an EXIF date, which the date's
// own tag can't hold.
std::vector<TagAssignment> dateCompanionAssignments(const TagItem& item, std::string_view text) {
  const auto companions = detail::dateCompanions(item);
  const auto date = companions.offset != nullptr ? TagDateTime::parse(text) : std::nullopt;
  std::vector<TagAssignment> assignments;
  if (date && !date->subseconds.empty()) {
    assignments.push_back({companions.subseconds, {date->subseconds}, false, {}});
  }
  if (date && date->offsetMinutes) {
    assignments.push_back(
        {companions.offset, {detail::offsetText(*date->offsetMinutes)}, false, {}});
  }
  return assignments;
}

}  // namespace

std::string_view to_string(AssignmentRefusal::Reason reason) {
  switch (reason) {
    case Reason::unknownTag: return "unknownTag";
    case Reason::notWritable: return "notWritable";
    case Reason::notAChoice: return "notAChoice";
    case Reason::notANumber: return "notANumber";
    case Reason::outOfRange: return "outOfRange";
    case Reason::tooManyValues: return "tooManyValues";
    case Reason::namedTwice: return "namedTwice";
    case Reason::deleteAndValues: return "deleteAndValues";
    case Reason::notADate: return "notADate";
  }
  return "unknown";
}

std::ostream& operator<<(std::ostream& out, AssignmentRefusal::Reason reason) {
  return out << to_string(reason);
}

std::vector<std::string> TagAssignment::toolArguments() const {
  const std::string name = toolName.empty() ? std::string(item->name().rawValue()) : toolName;
  if (values.empty()) {
    return {"-" + name + "="};
  }
  std::vector<std::string> arguments;
  for (const auto& value : values) {
    arguments.push_back("-" + name + (isRaw ? "#=" : "=") + value);
  }
  return arguments;
}

std::variant<std::vector<TagAssignment>, std::vector<AssignmentRefusal>> checkAssignments(
    std::span<const std::string> texts, ETLanguage language) {
  const detail::CatalogueTexts catalogueTexts(language);
  std::vector<TagAssignment> assignments;
  std::vector<AssignmentRefusal> refusals;
  for (const auto& text : texts) {
    const auto equals = text.find('=');
    const std::string_view name = std::string_view(text).substr(0, equals);
    const std::string_view value = equals == std::string::npos
                                       ? std::string_view()
                                       : std::string_view(text).substr(equals + 1);
    const auto refuse = [&](Reason reason, const TagItem* item) {
      refusals.push_back({reason, std::string(name), std::string(value), item, 0, 0});
    };
    const TagItem* item = findTag(name);
    if (item == nullptr) {
      refuse(Reason::unknownTag, nullptr);
      continue;
    }
    if (!item->isWritable()) {
      refuse(Reason::notWritable, item);
      continue;
    }
    auto checked = checkValue(*item, name, value, catalogueTexts);
    if (auto* refusal = std::get_if<AssignmentRefusal>(&checked)) {
      refusals.push_back(std::move(*refusal));
      continue;
    }
    auto& assignment = std::get<TagAssignment>(checked);
    // A name with the tool's groups, or a bare one, goes to the tool as it was given.
    if (name != item->name().rawValue()) {
      assignment.toolName = std::string(name);
    }
    std::vector<TagAssignment> group = dateCompanionAssignments(*item, value);
    group.insert(group.begin(), std::move(assignment));
    for (auto& one : group) {
      const TagItem* tag = one.item;
      const auto earlier = std::find_if(assignments.begin(), assignments.end(),
                                        [&](const TagAssignment& a) { return a.item == tag; });
      if (earlier == assignments.end()) {
        assignments.push_back(std::move(one));
      } else if (!tag->isList()) {
        refuse(Reason::namedTwice, tag);
      } else if (earlier->values.empty() || one.values.empty()) {
        refuse(Reason::deleteAndValues, tag);
      } else {
        earlier->values.insert(earlier->values.end(), one.values.begin(), one.values.end());
      }
    }
  }
  if (!refusals.empty()) {
    return refusals;
  }
  return assignments;
}

}  // namespace lorvane
