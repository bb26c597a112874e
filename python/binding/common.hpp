#pragma once

// What the parts of the Python module share: texts and paths between C++ and Python, the
// language a caller names, the library's tools checked before the first use, and work that runs
// while the caller's thread waits without the GIL yet still answers Ctrl-C.

#include <functional>
#include <string>
#include <string_view>

#include <pybind11/pybind11.h>

#include <lorvane/et_language.hpp>
#include <lorvane/tag_values.hpp>

namespace lorvane::python {

namespace py = pybind11;

// Library text (UTF-8) as a Python str; a byte that isn't UTF-8 becomes U+FFFD.
py::str text(std::string_view utf8);
// A path as Python names it (os.fsdecode): a byte that isn't UTF-8 survives as a surrogate and
// comes back unchanged through path().
py::str pathText(std::string_view path);
// A str, bytes or os.PathLike as the bytes of the path (os.fsencode).
std::string path(py::handle object);

// "en", "de", "zh_cn" (the tool's codes) or "english", "german" (the library's own words);
// anything else is a ValueError naming the choices.
ETLanguage language(const std::string& name);

// Raises ToolNotFoundError, naming the folder, when the binaries folder has no ExifTool.
void requireTool();

// Runs `work` on a thread of its own while this one waits without the GIL, so other Python
// threads run. A signal's Python handler runs meanwhile; when it raises (KeyboardInterrupt),
// `cancel` is called, the work is waited for and the exception comes out here. What `work`
// throws comes out here too.
void runWithoutGil(const std::function<void()>& work, const std::function<void()>& cancel);

// A date as datetime.datetime (aware where its offset is known) or, without a time of day,
// datetime.date, or as datetime.datetime at midnight with `wholeDateTime`; None for a year
// or a month alone, and for what Python's datetime can't hold (a leap second).
py::object dateTimeObject(const TagDateTime& date, bool wholeDateTime = false);
// A datetime.datetime or datetime.date as the library's date.
TagDateTime tagDateTime(py::handle date);

// The parts of the module, each adding its names.
void addErrors(py::module_& module);
void addCatalogue(py::module_& module);
void addReading(py::module_& module);
void addWriting(py::module_& module);

// The exception types, made by addErrors.
py::object toolNotFoundError();
py::object assignmentError();

}  // namespace lorvane::python
