#include "assignment.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <sstream>

#include <lorvane/tag_name.hpp>

#include "alternatives.hpp"

namespace lorvane::app {
namespace {

constexpr std::size_t listedLabels = 20;

// Built by appends: GCC 12 at -O3 takes "'" + std::string(...) for an overlapping copy.
std::string quoted(std::string_view text) {
  std::string result = "'";
  result.append(text).append("'");
  return result;
}

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
std::optional<std::string> findChoice(const TagItem& item, std::string_view text) {
  const auto choices = item.choices();
  if (std::find(choices.begin(), choices.end(), text) != choices.end()) {
    return std::string(text);
  }
  for (std::size_t i = 0; i < choices.size(); ++i) {
    if (isAlternative(item.localizedChoice(i), text)) {
      return std::string(choices[i]);
    }
  }
  if (const auto position = item.index(text)) {
    return std::string(choices[*position]);
  }
  return std::nullopt;
}

std::string choiceList(const TagItem& item) {
  std::string list;
  const auto choices = item.choices();
  for (std::size_t i = 0; i < choices.size() && i < listedLabels; ++i) {
    list.append("\n    ").append(choices[i]).append(" = ").append(item.localizedChoice(i));
  }
  if (choices.size() > listedLabels) {
    list.append("\n    ... and ")
        .append(std::to_string(choices.size() - listedLabels))
        .append(" more (lorvane tags --choices ")
        .append(item.name().rawValue())
        .append(")");
  }
  return list;
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
std::optional<std::string> checkNumber(const TagItem& item, std::string_view text) {
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
    return quoted(text) + " is not " + (type.allowsFloats() ? "a number" : "a whole number") +
           " (" + std::string(type.rawValue()) + ")";
  }
  const auto minimum = type.minimumNumberValue();
  const auto maximum = type.maximumNumberValue();
  if ((minimum && *value < asLongDouble(*minimum)) ||
      (maximum && *value > asLongDouble(*maximum))) {
    return quoted(text) + " is outside the range of " + std::string(type.rawValue()) + ", " +
           minimum->description() + " to " + maximum->description();
  }
  return std::nullopt;
}

// The values of one NAME=VALUE for its tag, or why they don't fit.
std::variant<Assignment, std::string> checkValue(const TagItem& item, std::string_view text) {
  Assignment assignment{&item, {}, true};
  if (text.empty()) {
    return assignment;
  }
  if (!item.choices().empty()) {
    if (const auto choice = findChoice(item, text)) {
      assignment.values.push_back(*choice);
      return assignment;
    }
    return quoted(text) + " is not among its values:" + choiceList(item);
  }
  const TagType type = item.type();
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
    return "takes " +
           (allowed == 1 ? std::string("one value")
                         : "at most " + std::to_string(allowed) + " values") +
           ", not " + std::to_string(numbers.size()) + " (" + quoted(text) + ")";
  }
  for (const auto& number : numbers) {
    if (auto why = checkNumber(item, number)) {
      return *why;
    }
  }
  assignment.values.emplace_back(text);
  return assignment;
}

}  // namespace

std::vector<std::string> Assignment::toolArguments() const {
  const std::string name(item->name().rawValue());
  if (values.empty()) {
    return {"-" + name + "="};
  }
  std::vector<std::string> arguments;
  for (const auto& value : values) {
    arguments.push_back("-" + name + (isRaw ? "#=" : "=") + value);
  }
  return arguments;
}

std::variant<std::vector<Assignment>, std::vector<Refusal>> checkAssignments(
    const std::vector<std::string>& texts) {
  std::vector<Assignment> assignments;
  std::vector<Refusal> refusals;
  for (const auto& text : texts) {
    const auto equals = text.find('=');
    const std::string_view name = std::string_view(text).substr(0, equals);
    const std::string_view value = equals == std::string::npos
                                       ? std::string_view()
                                       : std::string_view(text).substr(equals + 1);
    const auto parsed = TagName::parse(name);
    const TagItem* item = parsed ? TagItem::find(*parsed) : nullptr;
    if (item == nullptr) {
      refusals.push_back(
          {quoted(name) + " is no tag of the catalogue (lorvane tags " + std::string(name) + ")"});
      continue;
    }
    if (!item->isWritable()) {
      refusals.push_back({quoted(name) + " is not writable"});
      continue;
    }
    auto checked = checkValue(*item, value);
    if (auto* why = std::get_if<std::string>(&checked)) {
      refusals.push_back({std::string(name) + ": " + *why});
      continue;
    }
    auto& assignment = std::get<Assignment>(checked);
    const auto earlier = std::find_if(assignments.begin(), assignments.end(),
                                      [&](const Assignment& a) { return a.item == item; });
    if (earlier == assignments.end()) {
      assignments.push_back(std::move(assignment));
    } else if (!item->isList()) {
      refusals.push_back({quoted(name) + " takes one value and is named more than once"});
    } else if (earlier->values.empty() || assignment.values.empty()) {
      refusals.push_back({quoted(name) + " can't be deleted and given values at once"});
    } else {
      earlier->values.insert(earlier->values.end(), assignment.values.begin(),
                             assignment.values.end());
    }
  }
  if (!refusals.empty()) {
    return refusals;
  }
  return assignments;
}

}  // namespace lorvane::app
