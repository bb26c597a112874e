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
      py::object exception = py::handle(toolNotFoundType)("no ExifTool found in " + folder.string() + " (no " + name + ")");
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
