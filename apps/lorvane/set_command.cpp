#include "set_command.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <ostream>
#include <variant>

#include <lorvane/metadata_writer.hpp>
#include <lorvane/tag_assignment.hpp>
#include <lorvane/tag_item.hpp>

#include "interruption.hpp"
#include "tag_table.hpp"

namespace lorvane::app {
namespace {

constexpr std::size_t listedLabels = 20;

// Built by appends: GCC 12 at -O3 takes "'" + std::string(...) for an overlapping copy.
std::string singleQuoted(std::string_view text) {
  std::string result = "'";
  result.append(text).append("'");
  return result;
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

}  // namespace

std::string refusalSentence(const AssignmentRefusal& refusal) {
  using Reason = AssignmentRefusal::Reason;
  const std::string& name = refusal.name;
  switch (refusal.reason) {
    case Reason::unknownTag:
      return singleQuoted(name) + " is no tag of the catalogue (lorvane tags " + name + ")";
    case Reason::notWritable: return singleQuoted(name) + " is not writable";
    case Reason::notAChoice:
      return name + ": " + singleQuoted(refusal.value) +
             " is not among its values:" + choiceList(*refusal.item);
    case Reason::notANumber: {
      const TagType type = refusal.item->type();
      return name + ": " + singleQuoted(refusal.value) + " is not " +
             (type.allowsFloats() ? "a number" : "a whole number") + " (" +
             std::string(type.rawValue()) + ")";
    }
    case Reason::outOfRange: {
      const TagType type = refusal.item->type();
      return name + ": " + singleQuoted(refusal.value) + " is outside the range of " +
             std::string(type.rawValue()) + ", " + type.minimumNumberValue()->description() +
             " to " + type.maximumNumberValue()->description();
    }
    case Reason::tooManyValues:
      return name + ": takes " +
             (refusal.allowedValues == 1
                  ? std::string("one value")
                  : "at most " + std::to_string(refusal.allowedValues) + " values") +
             ", not " + std::to_string(refusal.givenValues) + " (" + singleQuoted(refusal.value) +
             ")";
    case Reason::namedTwice:
      return singleQuoted(name) + " takes one value and is named more than once";
    case Reason::deleteAndValues:
      return singleQuoted(name) + " can't be deleted and given values at once";
    case Reason::notADate:
      return name + ": " + singleQuoted(refusal.value) +
             " is no date (YYYY:MM:DD HH:MM:SS[.sss][+HH:MM], or ISO 8601 such as "
             "2026-11-01T10:30:00+02:00)";
  }
  return singleQuoted(name) + " was refused";
}

namespace {

// One line per note and one for what became of a file (or its sidecar, under `what`); 1 when
// it was not written.
int report(std::ostream& out, std::ostream& err, const std::string& what,
           FileWriteResult::Outcome outcome, const std::vector<std::string>& messages,
           const std::string& movedTo, const std::optional<std::string>& original, bool created) {
  using Outcome = FileWriteResult::Outcome;
  switch (outcome) {
    case Outcome::updated:
      for (const auto& note : messages) {
        out << what << ": " << note << "\n";
      }
      out << what << (created ? ": created" : ": updated");
      if (!movedTo.empty()) {
        out << ", moved to " << movedTo;
      }
      if (original) {
        out << " (the original is kept as " << escapeControls(*original, LineFeeds::escaped) << ")";
      }
      out << "\n";
      return 0;
    case Outcome::unchanged: out << what << ": unchanged, it already was as asked\n"; return 0;
    case Outcome::refused:
    case Outcome::failed:
      for (const auto& message : messages) {
        err << what << ": not written: " << message << "\n";
      }
      if (messages.empty()) {
        err << what << ": not written\n";
      }
      return 1;
  }
  return 1;
}

// "48.8584,2.2945" or "48.8584,2.2945,35": degrees (south and west negative), metres.
std::optional<GeoLocation> parseLocation(std::string_view text) {
  std::vector<double> numbers;
  for (std::size_t start = 0; start <= text.size();) {
    const auto end = std::min(text.find(',', start), text.size());
    const auto part = text.substr(start, end - start);
    const char* first = part.data() + (part.starts_with('+') ? 1 : 0);
    double number = 0;
    const auto [stop, error] = std::from_chars(first, part.data() + part.size(), number);
    if (part.empty() || error != std::errc() || stop != part.data() + part.size() ||
        !std::isfinite(number)) {
      return std::nullopt;
    }
    numbers.push_back(number);
    start = end + 1;
  }
  if (numbers.size() < 2 || numbers.size() > 3 || std::abs(numbers[0]) > 90 ||
      std::abs(numbers[1]) > 180) {
    return std::nullopt;
  }
  GeoLocation place{numbers[0], numbers[1], std::nullopt, {}};
  if (numbers.size() == 3) {
    place.altitude = numbers[2];
  }
  return place;
}

// The assignments of --capture-time and --location, or nothing after saying what is wrong.
std::optional<std::vector<TagAssignment>> typedAssignments(const SetRequest& request,
                                                           std::ostream& err) {
  std::vector<TagAssignment> assignments;
  bool valid = true;
  if (request.captureTime) {
    const auto time = TagDateTime::parse(*request.captureTime);
    if (time && time->day != 0) {
      assignments = assignCaptureTime(*time);
    } else {
      err << "lorvane: --capture-time: " << singleQuoted(*request.captureTime)
          << " is no date (2026-11-01T10:30:00+02:00, 2026:11:01 10:30:00.123, 2026-11-01)\n";
      valid = false;
    }
  }
  if (request.location) {
    if (const auto place = parseLocation(*request.location)) {
      const auto more = assignLocation(*place);
      assignments.insert(assignments.end(), more.begin(), more.end());
    } else {
      err << "lorvane: --location: " << singleQuoted(*request.location)
          << " is no place (LATITUDE,LONGITUDE[,ALTITUDE] in degrees and metres, south and "
             "west negative: -33.5,-70.25,12)\n";
      valid = false;
    }
  }
  return valid ? std::optional(std::move(assignments)) : std::nullopt;
}

}  // namespace

int runSet(const SetRequest& request, std::ostream& out, std::ostream& err) {
  const auto checked = checkAssignments(request.assignments, request.language);
  const auto* refusals = std::get_if<std::vector<AssignmentRefusal>>(&checked);
  if (refusals != nullptr) {
    for (const auto& refusal : *refusals) {
      err << "lorvane: " << refusalSentence(refusal) << "\n";
    }
  }
  const auto typed = typedAssignments(request, err);
  if (refusals != nullptr || !typed) {
    err << "lorvane: nothing was written\n";
    return 1;
  }
  auto assignments = std::get<std::vector<TagAssignment>>(checked);
  assignments.insert(assignments.end(), typed->begin(), typed->end());
  MetadataWriter writer({.overwritesOriginal = request.overwritesOriginal,
                         .backups = request.backups,
                         .backupFolder = request.backupFolder,
                         .target = request.target,
                         .jobs = 1,
                         .timeout = request.timeout});
  // The files written before a signal are reported; the others are left as they were.
  const interruption::CancelRegistration cancelOnSignal([&writer] { writer.cancel(); });
  int status = 0;
  writer.write(assignments, request.files, [&](const FileWriteResult& result) {
    const std::string file = escapeControls(result.file, LineFeeds::escaped);
    if (request.target != WriteTarget::sidecar || !result.sidecar) {
      status = std::max(status, report(out, err, file, result.outcome, result.messages,
                                       result.movedTo, result.original, false));
    }
    if (result.sidecar) {
      const auto& sidecar = *result.sidecar;
      status = std::max(
          status,
          report(out, err, file + ": sidecar " + escapeControls(sidecar.path, LineFeeds::escaped),
                 sidecar.outcome, sidecar.messages, {}, sidecar.original, sidecar.created));
    }
  });
  return status;
}

}  // namespace lorvane::app
