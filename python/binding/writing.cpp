// Writing: Writer, WriteResult and Refusal.

#include <cmath>
#include <memory>
#include <mutex>
#include <variant>
#include <vector>

#include <lorvane/metadata_writer.hpp>
#include <lorvane/tag_assignment.hpp>

#include <pybind11/stl.h>

#include "common.hpp"
#include "set_command.hpp"

namespace lorvane::python {
namespace {

std::string_view reasonName(AssignmentRefusal::Reason reason) {
  using Reason = AssignmentRefusal::Reason;
  switch (reason) {
    case Reason::unknownTag: return "unknown_tag";
    case Reason::notWritable: return "not_writable";
    case Reason::notAChoice: return "not_a_choice";
    case Reason::notANumber: return "not_a_number";
    case Reason::outOfRange: return "out_of_range";
    case Reason::tooManyValues: return "too_many_values";
    case Reason::namedTwice: return "named_twice";
    case Reason::deleteAndValues: return "delete_and_values";
    case Reason::notADate: return "not_a_date";
  }
  return "refused";
}

std::string_view outcomeName(FileWriteResult::Outcome outcome) {
  using Outcome = FileWriteResult::Outcome;
  switch (outcome) {
    case Outcome::updated: return "updated";
    case Outcome::unchanged: return "unchanged";
    case Outcome::refused: return "refused";
    case Outcome::failed: return "failed";
  }
  return "failed";
}

std::string valueText(py::handle value) {
  return py::isinstance<py::str>(value) ? value.cast<std::string>()
                                        : py::str(value).cast<std::string>();
}

// {"NAME": value} (None deletes, a list or tuple gives each value) or ["NAME=VALUE", ...], as
// the "NAME=VALUE" texts the catalogue checks.
std::vector<std::string> assignmentTexts(py::handle assignments) {
  std::vector<std::string> texts;
  if (py::isinstance<py::dict>(assignments)) {
    for (const auto& [key, value] : assignments.cast<py::dict>()) {
      const std::string name = valueText(key);
      if (value.is_none()) {
        texts.push_back(name + "=");
      } else if (py::isinstance<py::list>(value) || py::isinstance<py::tuple>(value)) {
        for (const auto& each : value) {
          texts.push_back(name + "=" + valueText(each));
        }
      } else {
        texts.push_back(name + "=" + valueText(value));
      }
    }
    return texts;
  }
  if (py::isinstance<py::str>(assignments)) {
    throw py::type_error("assignments: a dict or a list of \"NAME=VALUE\" texts, not one text");
  }
  for (const auto& each : assignments) {
    texts.push_back(each.cast<std::string>());
  }
  return texts;
}

// One path (str, bytes, os.PathLike) or an iterable of them.
std::vector<std::string> pathList(py::handle paths) {
  if (py::isinstance<py::str>(paths) || py::isinstance<py::bytes>(paths) ||
      py::hasattr(paths, "__fspath__")) {
    return {path(paths)};
  }
  std::vector<std::string> files;
  for (const auto& each : paths) {
    files.push_back(path(each));
  }
  return files;
}

// (latitude, longitude) or (latitude, longitude, altitude): degrees, south and west negative;
// metres.
GeoLocation geoLocation(py::handle location) {
  const auto numbers = location.cast<std::vector<double>>();
  if (numbers.size() < 2 || numbers.size() > 3 || !(std::abs(numbers[0]) <= 90) ||
      !(std::abs(numbers[1]) <= 180)) {
    throw py::value_error(
        "location: (latitude, longitude[, altitude]), degrees within ±90 and ±180, metres");
  }
  GeoLocation place{numbers[0], numbers[1], std::nullopt, {}};
  if (numbers.size() == 3) {
    place.altitude = numbers[2];
  }
  return place;
}

class Writer {
public:
  Writer(bool overwriteOriginal, std::size_t jobs, double timeout)
      : options_{.overwritesOriginal = overwriteOriginal,
                 .jobs = jobs,
                 .timeout = std::chrono::milliseconds(static_cast<long long>(timeout * 1000))} {
    if (timeout < 0) {
      throw py::value_error("timeout must not be negative (0: no limit)");
    }
    requireTool();
    writer_ = std::make_shared<MetadataWriter>(options_);
  }

  py::list write(py::handle assignments, py::handle paths, const std::string& languageName,
                 py::handle captureTime, py::handle location) {
    const auto texts = assignmentTexts(assignments);
    const auto checked = checkAssignments(texts, language(languageName));
    if (const auto* refusals = std::get_if<std::vector<AssignmentRefusal>>(&checked)) {
      std::string message;
      py::list refused;
      for (const auto& refusal : *refusals) {
        message.append(message.empty() ? "" : "; ").append(app::refusalSentence(refusal));
        refused.append(py::cast(refusal));
      }
      py::object error = assignmentError()(text(message + " (nothing was written)"));
      error.attr("refusals") = refused;
      PyErr_SetObject(assignmentError().ptr(), error.ptr());
      throw py::error_already_set();
    }
    auto checkedAssignments = std::get<std::vector<TagAssignment>>(checked);
    if (!captureTime.is_none()) {
      const auto typed = assignCaptureTime(tagDateTime(captureTime));
      checkedAssignments.insert(checkedAssignments.end(), typed.begin(), typed.end());
    }
    if (!location.is_none()) {
      const auto typed = assignLocation(geoLocation(location));
      checkedAssignments.insert(checkedAssignments.end(), typed.begin(), typed.end());
    }
    const auto files = pathList(paths);
    std::shared_ptr<MetadataWriter> writer;
    {
      std::lock_guard lock(mutex_);
      if (!writer_) {
        throw py::value_error("the Writer is closed");
      }
      if (busy_) {
        throw std::runtime_error("the Writer is already writing (one write at a time)");
      }
      busy_ = true;
      writer = writer_;
    }
    std::vector<FileWriteResult> results;
    try {
      runWithoutGil([&] { results = writer->write(checkedAssignments, files); },
                    [&] { writer->cancel(); });
    } catch (...) {
      // A cancel stays: what comes next gets a fresh writer.
      std::lock_guard lock(mutex_);
      busy_ = false;
      if (writer_ && !cancelled_) {
        writer_ = std::make_shared<MetadataWriter>(options_);
      }
      throw;
    }
    {
      std::lock_guard lock(mutex_);
      busy_ = false;
    }
    py::list written;
    for (auto& result : results) {
      written.append(py::cast(std::move(result)));
    }
    return written;
  }

  void cancel() {
    std::lock_guard lock(mutex_);
    cancelled_ = true;
    if (writer_) {
      writer_->cancel();
    }
  }

  void close() {
    std::shared_ptr<MetadataWriter> closing;
    {
      std::lock_guard lock(mutex_);
      closing = std::move(writer_);
      if (closing && busy_) {
        closing->cancel();
      }
    }
    py::gil_scoped_release released;
    closing.reset();
  }

private:
  MetadataWriter::Options options_;
  std::mutex mutex_;
  std::shared_ptr<MetadataWriter> writer_;
  bool busy_ = false;
  bool cancelled_ = false;
};

}  // namespace

void addWriting(py::module_& module) {
  py::class_<AssignmentRefusal>(module, "Refusal", "Why one assignment was refused.")
      .def_property_readonly(
          "tag", [](const AssignmentRefusal& refusal) { return text(refusal.name); },
          "The tag's name as given.")
      .def_property_readonly(
          "value", [](const AssignmentRefusal& refusal) { return text(refusal.value); },
          "The value as given, or the number in it that was refused.")
      .def_property_readonly(
          "reason",
          [](const AssignmentRefusal& refusal) { return text(reasonName(refusal.reason)); },
          "One of \"unknown_tag\", \"not_writable\", \"not_a_choice\", \"not_a_number\", "
          "\"out_of_range\", \"too_many_values\", \"named_twice\", \"delete_and_values\".")
      .def_property_readonly(
          "message",
          [](const AssignmentRefusal& refusal) { return text(app::refusalSentence(refusal)); },
          "The refusal in a sentence, as `lorvane set` says it.")
      .def_readonly("allowed_values", &AssignmentRefusal::allowedValues,
                    "For too_many_values: how many values the tag takes.")
      .def_readonly("given_values", &AssignmentRefusal::givenValues,
                    "For too_many_values: how many were given.")
      .def("__repr__", [](const AssignmentRefusal& refusal) {
        return py::str("<lorvane.Refusal {}: {}>")
            .format(text(reasonName(refusal.reason)), text(app::refusalSentence(refusal)));
      });

  py::class_<FileWriteResult>(module, "WriteResult", "What became of one file.")
      .def_property_readonly(
          "file", [](const FileWriteResult& result) { return pathText(result.file); },
          "The path as given.")
      .def_property_readonly(
          "outcome",
          [](const FileWriteResult& result) { return text(outcomeName(result.outcome)); },
          "\"updated\", \"unchanged\" (it already was as asked), \"refused\" (see messages) or "
          "\"failed\" (no answer about the file: the tool died, hung or was cancelled).")
      .def_property_readonly(
          "messages",
          [](const FileWriteResult& result) {
            py::list messages;
            for (const auto& message : result.messages) {
              messages.append(text(message));
            }
            return messages;
          },
          "Why it was refused or failed; the tool's notes beside an update.")
      .def_property_readonly(
          "original",
          [](const FileWriteResult& result) -> py::object {
            return result.original ? py::object(pathText(*result.original))
                                   : py::object(py::none());
          },
          "Where the file as it was before is kept (FILE_original), or None.")
      .def_property_readonly(
          "moved_to",
          [](const FileWriteResult& result) -> py::object {
            return result.movedTo.empty() ? py::object(py::none())
                                          : py::object(pathText(result.movedTo));
          },
          "Where the tool moved the file, or None.")
      .def("__repr__", [](const FileWriteResult& result) {
        return py::str("<lorvane.WriteResult {!r}: {}>")
            .format(pathText(result.file), text(outcomeName(result.outcome)));
      });

  py::class_<Writer>(module, "Writer",
                     "Writes tags to files with kept ExifTools. A context manager: leaving it ends "
                     "the tools.")
      .def(py::init<bool, std::size_t, double>(), py::arg("overwrite_original") = false,
           py::arg("jobs") = 1, py::arg("timeout") = 60.0,
           "overwrite_original: keep no FILE_original beside a written file. jobs: tools side by "
           "side, 0 for one per core. timeout: the longest the tool may take over one file, in "
           "seconds; 0 for no limit. Raises ToolNotFoundError without an ExifTool.")
      .def("write", &Writer::write, py::arg("assignments"), py::arg("paths"),
           py::arg("language") = "en", py::kw_only(), py::arg("capture_time") = py::none(),
           py::arg("location") = py::none(),
           "Writes every assignment to each file: `assignments` a dict {\"EXIF:Orientation\": "
           "\"Rotate 90 CW\", \"XMP:Subject\": [\"a\", \"b\"], \"XMP:Title\": None} (None "
           "deletes) or a list of \"NAME=VALUE\" texts; a value is a raw value, a label in "
           "`language`, or a number of the tag's type. Any refused assignment raises "
           "AssignmentError and nothing is written. capture_time (a datetime.datetime, its "
           "offset written where it is aware, or a datetime.date) and location ((latitude, "
           "longitude[, altitude]) in degrees and metres) write typed values to the tags that "
           "hold them. Returns a WriteResult per file, in order.")
      .def("cancel", &Writer::cancel,
           "From any thread: ends the tools at work; write returns soon after, without the "
           "files not yet written. A cancelled Writer stays cancelled.")
      .def("close", &Writer::close, "Ends the tools; the Writer can't write any more.")
      .def("__enter__", [](py::object self) { return self; })
      .def("__exit__", [](Writer& writer, const py::args&) {
        writer.close();
        return false;
      });
}

}  // namespace lorvane::python
