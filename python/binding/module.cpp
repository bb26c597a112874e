// The extension module lorvane._lorvane; the package lorvane re-exports its names.

#include <chrono>
#include <condition_variable>
#include <exception>
#include <filesystem>
#include <mutex>
#include <thread>

#include <lorvane/et_settings.hpp>
#include <lorvane/version.hpp>

#include "common.hpp"

namespace lorvane::python {
namespace {

// Made once and kept for the life of the process: a static py::object would be released after
// the interpreter is gone.
PyObject* toolNotFoundType = nullptr;
PyObject* assignmentType = nullptr;

}  // namespace

py::str text(std::string_view utf8) {
  PyObject* object =
      PyUnicode_DecodeUTF8(utf8.data(), static_cast<Py_ssize_t>(utf8.size()), "replace");
  if (object == nullptr) {
    throw py::error_already_set();
  }
  return py::reinterpret_steal<py::str>(object);
}

py::str pathText(std::string_view path) {
  PyObject* object =
      PyUnicode_DecodeFSDefaultAndSize(path.data(), static_cast<Py_ssize_t>(path.size()));
  if (object == nullptr) {
    throw py::error_already_set();
  }
  return py::reinterpret_steal<py::str>(object);
}

std::string path(py::handle object) {
  PyObject* bytes = nullptr;
  if (PyUnicode_FSConverter(object.ptr(), &bytes) == 0) {
    throw py::error_already_set();
  }
  const auto owned = py::reinterpret_steal<py::bytes>(bytes);
  return std::string(owned);
}

ETLanguage language(const std::string& name) {
  if (auto found = ETLanguage::fromExifToolValue(name)) {
    return *found;
  }
  if (auto found = ETLanguage::fromRawValue(name)) {
    return *found;
  }
  std::string choices;
  for (const ETLanguage& each : ETLanguage::allCases()) {
    choices.append(choices.empty() ? "" : ", ").append(each.exifToolValue());
  }
  throw py::value_error("unknown language '" + name + "' (one of " + choices + ")");
}

void requireTool() {
  const std::filesystem::path folder = ETSettings::shared().binariesFolderURL();
  std::error_code error;
  for (const char* name : {"perl", "exiftool"}) {
    if (!std::filesystem::is_regular_file(folder / name, error)) {
      py::object exception = py::handle(toolNotFoundType)("no ExifTool found in " +
                                                          folder.string() + " (no " + name + ")");
      exception.attr("folder") = pathText(folder.string());
      PyErr_SetObject(toolNotFoundType, exception.ptr());
      throw py::error_already_set();
    }
  }
}

void runWithoutGil(const std::function<void()>& work, const std::function<void()>& cancel) {
  std::mutex mutex;
  std::condition_variable ended;
  bool done = false;
  std::exception_ptr failure;
  std::thread worker([&] {
    try {
      work();
    } catch (...) {
      failure = std::current_exception();
    }
    std::lock_guard lock(mutex);
    done = true;
    ended.notify_all();
  });
  const auto join = [&] {
    py::gil_scoped_release released;
    worker.join();
  };
  for (;;) {
    {
      py::gil_scoped_release released;
      std::unique_lock lock(mutex);
      // Signals reach Python only when this thread holds the GIL and asks.
      if (ended.wait_for(lock, std::chrono::milliseconds(50), [&] { return done; })) {
        break;
      }
    }
    if (PyErr_CheckSignals() != 0) {
      cancel();
      join();
      throw py::error_already_set();
    }
  }
  join();
  if (failure) {
    std::rethrow_exception(failure);
  }
}

py::object dateTimeObject(const TagDateTime& date, bool wholeDateTime) {
  if (date.month == 0 || date.day == 0) {
    return py::none();
  }
  const py::module_ datetime = py::module_::import("datetime");
  if (!date.hour && !wholeDateTime) {
    return datetime.attr("date")(date.year, date.month, date.day);
  }
  // The digits after the point as microseconds: "5" is 500000, "1234567" is 123456.
  std::string digits = date.subseconds.substr(0, 6);
  digits.resize(6, '0');
  py::object zone = py::none();
  if (date.offsetMinutes) {
    zone = datetime.attr("timezone")(
        datetime.attr("timedelta")(py::arg("minutes") = *date.offsetMinutes));
  }
  try {
    return datetime.attr("datetime")(date.year, date.month, date.day, date.hour.value_or(0),
                                     date.minute.value_or(0), date.second.value_or(0),
                                     std::stoi(digits), zone);
  } catch (py::error_already_set& error) {
    if (!error.matches(PyExc_ValueError)) {
      throw;
    }
    return py::none();
  }
}

TagDateTime tagDateTime(py::handle date) {
  const py::module_ datetime = py::module_::import("datetime");
  if (!py::isinstance(date, datetime.attr("date"))) {
    throw py::type_error("capture_time: a datetime.datetime or datetime.date");
  }
  TagDateTime result;
  result.year = date.attr("year").cast<int>();
  result.month = date.attr("month").cast<unsigned>();
  result.day = date.attr("day").cast<unsigned>();
  if (py::isinstance(date, datetime.attr("datetime"))) {
    result.hour = date.attr("hour").cast<int>();
    result.minute = date.attr("minute").cast<int>();
    result.second = date.attr("second").cast<int>();
    if (const int micro = date.attr("microsecond").cast<int>(); micro != 0) {
      std::string digits = std::to_string(1'000'000 + micro).substr(1);
      result.subseconds = digits.substr(0, digits.find_last_not_of('0') + 1);
    }
    const py::object offset = date.attr("utcoffset")();
    if (!offset.is_none()) {
      result.offsetMinutes = static_cast<int>(offset.attr("total_seconds")().cast<double>() / 60);
    }
  }
  return result;
}

py::object toolNotFoundError() { return py::reinterpret_borrow<py::object>(toolNotFoundType); }
py::object assignmentError() { return py::reinterpret_borrow<py::object>(assignmentType); }

void addErrors(py::module_& module) {
  toolNotFoundType = PyErr_NewExceptionWithDoc(
      "lorvane.ToolNotFoundError",
      "No ExifTool (with its Perl) in the library's binaries folder; ``.folder`` is the "
      "folder looked in.",
      PyExc_FileNotFoundError, nullptr);
  assignmentType = PyErr_NewExceptionWithDoc(
      "lorvane.AssignmentError",
      "Some assignments were refused, so nothing was written; ``.refusals`` is a list of "
      "Refusal, one per refused assignment.",
      PyExc_ValueError, nullptr);
  if (toolNotFoundType == nullptr || assignmentType == nullptr) {
    throw py::error_already_set();
  }
  module.attr("ToolNotFoundError") = toolNotFoundError();
  module.attr("AssignmentError") = assignmentError();
}

}  // namespace lorvane::python

PYBIND11_MODULE(_lorvane, module) {
  using namespace lorvane::python;
  module.doc() = "ExifTool's tags of files, with Lorvane's catalogue of titles, labels and types.";
  module.attr("__version__") = LORVANE_VERSION_STRING;
  addErrors(module);
  addCatalogue(module);
  addReading(module);
  addWriting(module);
}
