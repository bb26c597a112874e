#include "set_command.hpp"

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
  }
  return singleQuoted(name) + " was refused";
}

int runSet(const SetRequest& request, std::ostream& out, std::ostream& err) {
  const auto checked = checkAssignments(request.assignments, request.language);
  if (const auto* refusals = std::get_if<std::vector<AssignmentRefusal>>(&checked)) {
    for (const auto& refusal : *refusals) {
      err << "lorvane: " << refusalSentence(refusal) << "\n";
    }
    err << "lorvane: nothing was written\n";
    return 1;
  }
  MetadataWriter writer(
      {.overwritesOriginal = request.overwritesOriginal, .jobs = 1, .timeout = request.timeout});
  // The files written before a signal are reported; the others are left as they were.
  const interruption::CancelRegistration cancelOnSignal([&writer] { writer.cancel(); });
  int status = 0;
  writer.write(std::get<std::vector<TagAssignment>>(checked), request.files,
               [&](const FileWriteResult& result) {
                 using Outcome = FileWriteResult::Outcome;
                 const std::string file = escapeControls(result.file, LineFeeds::escaped);
                 switch (result.outcome) {
                   case Outcome::updated:
                     for (const auto& note : result.messages) {
                       out << file << ": " << note << "\n";
                     }
                     out << file << ": updated";
                     if (!result.movedTo.empty()) {
                       out << ", moved to " << result.movedTo;
                     }
                     if (result.original) {
                       out << " (the original is kept as "
                           << escapeControls(*result.original, LineFeeds::escaped) << ")";
                     }
                     out << "\n";
                     break;
                   case Outcome::unchanged:
                     out << file << ": unchanged, it already was as asked\n";
                     break;
                   case Outcome::refused:
                   case Outcome::failed:
                     for (const auto& message : result.messages) {
                       err << file << ": not written: " << message << "\n";
                     }
                     if (result.messages.empty()) {
                       err << file << ": not written\n";
                     }
                     status = 1;
                     break;
                 }
               });
  return status;
}

}  // namespace lorvane::app
