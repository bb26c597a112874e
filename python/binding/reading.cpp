// Reading: Reader, its read_each iterator, FileTags and FileTag.

#include <atomic>
#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <type_traits>
#include <variant>
#include <vector>

#include <lorvane/metadata_reader.hpp>
#include <lorvane/tag_item.hpp>

#include <pybind11/stl.h>

#include "common.hpp"
#include "show_command.hpp"

namespace lorvane::python {
namespace {

// "value" and "raw": one text, or a list of texts.
py::object valueObject(const TagValue& value) {
  if (value.isList) {
    py::list texts;
    for (const auto& each : value.texts) {
      texts.append(text(each));
    }
    return texts;
  }
  return text(value.texts.empty() ? std::string() : value.texts.front());
}

py::object numberObject(const TagNumber& number) {
  return std::visit([](auto value) -> py::object { return py::cast(value); }, number.value());
}

std::string_view family0(const FileTag& tag) {
  return std::string_view(tag.group).substr(0, tag.group.find(':'));
}

// The first tag of this catalogue name ("EXIF:Orientation"), tool groups and name
// ("EXIF:IFD0:Orientation") or family 0 group and name.
const FileTag* findTag(const FileTags& file, std::string_view name) {
  for (const FileTag& tag : file.tags) {
    if (tag.item != nullptr && tag.item->name().rawValue() == name) {
      return &tag;
    }
    const auto colon = name.rfind(':');
    if (colon != std::string_view::npos && name.substr(colon + 1) == tag.name &&
        (name.substr(0, colon) == tag.group || name.substr(0, colon) == family0(tag))) {
      return &tag;
    }
  }
  return nullptr;
}

// A JSON value as Python's json module reads it.
py::object pythonObject(const nlohmann::ordered_json& value) {
  using Type = nlohmann::ordered_json::value_t;
  switch (value.type()) {
    case Type::object: {
      py::dict object;
      for (const auto& [key, element] : value.items()) {
        object[text(key)] = pythonObject(element);
      }
      return object;
    }
    case Type::array: {
      py::list array;
      for (const auto& element : value) {
        array.append(pythonObject(element));
      }
      return array;
    }
    case Type::string: return text(value.get_ref<const std::string&>());
    case Type::boolean: return py::bool_(value.get<bool>());
    case Type::number_integer: return py::int_(value.get<std::int64_t>());
    case Type::number_unsigned: return py::int_(value.get<std::uint64_t>());
    case Type::number_float: return py::float_(value.get<double>());
    default: return py::none();
  }
}

// The object `lorvane show --json-lines` writes for the file, made by the program's own code;
// only the file's name is Python's (os.fsdecode), so that it names the file given.
py::dict toDict(const FileTags& file) {
  py::dict object(pythonObject(app::fileObject(file)));
  object["file"] = pathText(file.file);
  return object;
}

// The library's reader behind a lorvane.Reader. A cancel stays, so a read that the caller
// interrupts (Ctrl-C, an abandoned read_each) ends its tools through a cancel and leaves a
// fresh reader for what comes next.
class Reader {
public:
  Reader(const std::string& language, std::size_t jobs, double timeout)
      : options_{.language = python::language(language),
                 .jobs = jobs,
                 .timeout = std::chrono::milliseconds(static_cast<long long>(timeout * 1000))} {
    if (timeout < 0) {
      throw py::value_error("timeout must not be negative (0: no limit)");
    }
    requireTool();
    reader_ = std::make_shared<MetadataReader>(options_);
  }

  // The reader for one read; a ValueError when closed, a RuntimeError while another read of
  // this Reader is under way.
  std::shared_ptr<MetadataReader> begin() {
    std::lock_guard lock(mutex_);
    if (!reader_) {
      throw py::value_error("the Reader is closed");
    }
    if (busy_) {
      throw std::runtime_error(
          "the Reader is already reading (one read at a time; use one Reader per thread)");
    }
    busy_ = true;
    return reader_;
  }

  // The end of a read; `interrupted`: it was cut short, and its reader cancelled.
  void end(bool interrupted) {
    std::lock_guard lock(mutex_);
    busy_ = false;
    if (interrupted && reader_ && !cancelled_) {
      reader_ = std::make_shared<MetadataReader>(options_);
    }
  }

  void cancel() {
    std::lock_guard lock(mutex_);
    cancelled_ = true;
    if (reader_) {
      reader_->cancel();
    }
  }
  bool isCancelled() const { return cancelled_; }

  // Ends the tools; a read under way is cancelled.
  void close() {
    std::shared_ptr<MetadataReader> closing;
    {
      std::lock_guard lock(mutex_);
      closing = std::move(reader_);
      if (closing && busy_) {
        closing->cancel();
      }
    }
    py::gil_scoped_release released;
    closing.reset();
  }

  FileTags read(py::handle path) {
    const std::string file = python::path(path);
    return run([&](MetadataReader& reader) { return reader.read(file); });
  }

  py::object readBinary(py::handle path, const std::string& tag) {
    const std::string file = python::path(path);
    const auto bytes = run([&](MetadataReader& reader) { return reader.readBinary(file, tag); });
    if (!bytes) {
      return py::none();
    }
    return py::bytes(reinterpret_cast<const char*>(bytes->data()), bytes->size());
  }

  std::optional<EmbeddedImage> readLargestPreview(py::handle path) {
    const std::string file = python::path(path);
    return run([&](MetadataReader& reader) { return reader.readLargestPreview(file); });
  }

private:
  // One call of the library's reader, on a thread of its own while this one waits.
  template <class Work>
  auto run(const Work& work) -> std::invoke_result_t<const Work&, MetadataReader&> {
    const auto reader = begin();
    std::optional<std::invoke_result_t<const Work&, MetadataReader&>> result;
    try {
      runWithoutGil([&] { result.emplace(work(*reader)); }, [&] { reader->cancel(); });
    } catch (...) {
      end(true);
      throw;
    }
    end(false);
    return std::move(*result);
  }

  MetadataReader::Options options_;
  std::mutex mutex_;
  std::shared_ptr<MetadataReader> reader_;
  bool busy_ = false;
  std::atomic<bool> cancelled_{false};
};

// read_each: the paths go to the library's reader in chunks, on a thread of its own, while the
// caller takes the files one by one. The caller's thread pulls the next chunk from the iterable
// as soon as the thread has taken the last one, so the tools never wait for Python; the files
// read and not yet taken are bounded too, so memory stays flat however many paths come.
class ReadEach {
public:
  ReadEach(std::shared_ptr<Reader> owner, py::iterable paths)
      : owner_(std::move(owner)), paths_(py::iter(paths)) {}
  ReadEach(const ReadEach&) = delete;
  ReadEach& operator=(const ReadEach&) = delete;
  ~ReadEach() {
    if (worker_.joinable()) {
      stop();
    }
  }

  FileTags next() {
    if (state_ == State::ended) {
      throw py::stop_iteration();
    }
    if (state_ == State::unstarted) {
      reader_ = owner_->begin();
      state_ = State::running;
      worker_ = std::thread([this] { work(); });
    }
    for (;;) {
      feed();
      {
        py::gil_scoped_release released;
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, std::chrono::milliseconds(50),
                          [&] { return !results_.empty() || finished_ || wantsChunk(); });
        if (!results_.empty()) {
          FileTags file = std::move(results_.front());
          results_.pop_front();
          changed_.notify_all();
          return file;
        }
        if (finished_) {
          break;
        }
      }
      if (PyErr_CheckSignals() != 0) {
        stop();
        throw py::error_already_set();
      }
    }
    worker_.join();
    state_ = State::ended;
    owner_->end(false);
    if (failure_) {
      std::rethrow_exception(failure_);
    }
    if (pathError_) {
      py::error_already_set error = std::move(*pathError_);
      pathError_.reset();
      throw error;
    }
    throw py::stop_iteration();
  }

  // Ends the reading before its end: the tools at work are stopped.
  void close() {
    if (state_ == State::running) {
      stop();
    }
    state_ = State::ended;
  }

private:
  enum class State { unstarted, running, ended };
  static constexpr std::size_t firstChunk = 16;
  static constexpr std::size_t largestChunk = 512;

  bool wantsChunk() const { return chunks_.empty() && !pathsEnded_; }

  // Pulls the next chunk of paths while the thread has none waiting; an error of the iterable
  // ends the paths and comes out after the files before it.
  void feed() {
    {
      std::lock_guard lock(mutex_);
      if (!wantsChunk()) {
        return;
      }
    }
    std::vector<std::string> chunk;
    bool ended = false;
    try {
      while (chunk.size() < chunkSize_) {
        PyObject* item = PyIter_Next(paths_.ptr());
        if (item == nullptr) {
          if (PyErr_Occurred() != nullptr) {
            throw py::error_already_set();
          }
          ended = true;
          break;
        }
        chunk.push_back(path(py::reinterpret_steal<py::object>(item)));
      }
    } catch (py::error_already_set& error) {
      pathError_.emplace(std::move(error));
      ended = true;
    }
    // Small at first, so the first file comes at once; larger later, so the tools seldom run
    // out of work at a chunk's end.
    chunkSize_ = std::min(chunkSize_ * 2, largestChunk);
    std::lock_guard lock(mutex_);
    if (!chunk.empty()) {
      chunks_.push_back(std::move(chunk));
    }
    pathsEnded_ = pathsEnded_ || ended;
    changed_.notify_all();
  }

  struct Stopped {};

  void work() {
    try {
      for (;;) {
        std::vector<std::string> chunk;
        {
          std::unique_lock lock(mutex_);
          changed_.wait(lock, [&] { return stopped_ || !chunks_.empty() || pathsEnded_; });
          if (stopped_ || chunks_.empty() || owner_->isCancelled()) {
            break;
          }
          chunk = std::move(chunks_.front());
          chunks_.pop_front();
          changed_.notify_all();
        }
        reader_->readEach(chunk, [&](FileTags&& file) {
          std::unique_lock lock(mutex_);
          changed_.wait(lock, [&] { return stopped_ || results_.size() < resultLimit_; });
          if (stopped_) {
            throw Stopped{};
          }
          results_.push_back(std::move(file));
          changed_.notify_all();
        });
      }
    } catch (const Stopped&) {
    } catch (...) {
      failure_ = std::current_exception();
    }
    std::lock_guard lock(mutex_);
    finished_ = true;
    changed_.notify_all();
  }

  // The tools are stopped and the thread waited for; the Reader gets a fresh reader.
  void stop() {
    reader_->cancel();
    {
      std::lock_guard lock(mutex_);
      stopped_ = true;
      changed_.notify_all();
    }
    {
      py::gil_scoped_release released;
      worker_.join();
    }
    state_ = State::ended;
    owner_->end(true);
  }

  std::shared_ptr<Reader> owner_;
  py::iterator paths_;
  std::shared_ptr<MetadataReader> reader_;
  State state_ = State::unstarted;
  std::size_t chunkSize_ = firstChunk;
  std::thread worker_;
  std::optional<py::error_already_set> pathError_;

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::vector<std::string>> chunks_;
  bool pathsEnded_ = false;
  std::deque<FileTags> results_;
  std::size_t resultLimit_ = 64;
  bool stopped_ = false;
  bool finished_ = false;
  std::exception_ptr failure_;
};

}  // namespace

void addReading(py::module_& module) {
  py::class_<GeoLocation>(module, "GeoLocation", "Where a file says it was taken.")
      .def_readonly("latitude", &GeoLocation::latitude, "Decimal degrees, south negative.")
      .def_readonly("longitude", &GeoLocation::longitude, "Decimal degrees, west negative.")
      .def_property_readonly(
          "altitude",
          [](const GeoLocation& place) -> py::object {
            return place.altitude ? py::object(py::float_(*place.altitude))
                                  : py::object(py::none());
          },
          "Metres, below sea level negative; None where unknown.")
      .def_property_readonly(
          "source", [](const GeoLocation& place) { return text(place.source); },
          "The tool group the position came from: \"Composite\", \"XMP\", ...")
      .def("__repr__", [](const GeoLocation& place) {
        return py::str("<lorvane.GeoLocation {}, {}{} from {}>")
            .format(place.latitude, place.longitude,
                    place.altitude ? py::str(", {} m").format(*place.altitude) : py::str(""),
                    text(place.source));
      });

  py::class_<EmbeddedImage>(module, "EmbeddedImage", "A picture inside a file.")
      .def_property_readonly(
          "tag", [](const EmbeddedImage& image) { return text(image.tag); },
          "The tag it was extracted from: \"PreviewImage\", \"ThumbnailImage\", ...")
      .def_property_readonly(
          "data",
          [](const EmbeddedImage& image) {
            return py::bytes(reinterpret_cast<const char*>(image.bytes.data()), image.bytes.size());
          },
          "The picture's bytes (JPEG or PNG).")
      .def("__repr__", [](const EmbeddedImage& image) {
        return py::str("<lorvane.EmbeddedImage {}: {} bytes>")
            .format(text(image.tag), image.bytes.size());
      });

  py::class_<FileTag>(module, "FileTag", "One tag of a file as the tool read it.")
      .def_property_readonly(
          "group", [](const FileTag& tag) { return text(tag.group); },
          "The tool's family 0 and 1 groups: \"EXIF:IFD0\".")
      .def_property_readonly(
          "name", [](const FileTag& tag) { return text(tag.name); },
          "The tool's tag name: \"Orientation\".")
      .def_property_readonly(
          "title", [](const FileTag& tag) { return text(tag.title); },
          "The catalogue's title in the reader's language, else the tool's description.")
      .def_property_readonly(
          "value", [](const FileTag& tag) { return valueObject(tag.value); },
          "The tool's printed value: a str, or a list of str for a list.")
      .def_property_readonly(
          "raw", [](const FileTag& tag) { return valueObject(tag.raw); },
          "The raw value (as the tool's -n gives it): a str, or a list of str for a list.")
      .def_property_readonly(
          "label",
          [](const FileTag& tag) -> py::object {
            return tag.label.empty() ? py::object(py::none()) : py::object(text(tag.label));
          },
          "The catalogue's label of the value where the tool printed none, else None.")
      .def_property_readonly(
          "tag", [](const FileTag& tag) { return tag.item; }, py::return_value_policy::reference,
          "The catalogue's Tag, or None where the catalogue doesn't know the tag.")
      .def_property_readonly(
          "number",
          [](const FileTag& tag) -> py::object {
            const auto number = tag.number();
            return number ? numberObject(*number) : py::object(py::none());
          },
          "The raw value where it is one number: an int exactly, else a float; None for a "
          "list, text, \"inf\" or \"undef\".")
      .def_property_readonly(
          "datetime",
          [](const FileTag& tag) -> py::object {
            const auto date = tag.dateTime();
            return date ? dateTimeObject(*date) : py::object(py::none());
          },
          "The raw value as a date: datetime.datetime (aware where the value or the tool says "
          "its offset), datetime.date for a day alone; None for anything else (also a year or "
          "a month alone).")
      .def("__repr__", [](const FileTag& tag) {
        return py::str("<lorvane.FileTag {}:{} = {!r}>")
            .format(text(tag.group), text(tag.name), valueObject(tag.value));
      });

  py::class_<FileTags>(module, "FileTags", "What the tool read of one file.")
      .def_property_readonly(
          "file", [](const FileTags& file) { return pathText(file.file); },
          "The path as it was given (a folder's files by their path).")
      .def_property_readonly(
          "error",
          [](const FileTags& file) -> py::object {
            return file.error ? py::object(text(*file.error)) : py::object(py::none());
          },
          "Why the file could not be read, or the tool's error; None when all went well.")
      .def_property_readonly(
          "tags",
          [](const FileTags& file) {
            py::list tags;
            for (const FileTag& tag : file.tags) {
              tags.append(py::cast(tag));
            }
            return tags;
          },
          "The tags (FileTag), in the tool's order.")
      .def_property_readonly(
          "capture_time",
          [](const FileTags& file) -> py::object {
            const auto taken = file.captureTime();
            return taken ? dateTimeObject(taken->time, true) : py::object(py::none());
          },
          "When the picture or recording was taken, as a datetime.datetime: aware where its "
          "offset is known (the value's, its offset tag's, or from the GPS time), naive "
          "otherwise; None without one. Never a file system's date.")
      .def_property_readonly(
          "capture_time_source",
          [](const FileTags& file) -> py::object {
            const auto taken = file.captureTime();
            return taken ? py::object(text(taken->source)) : py::object(py::none());
          },
          "The tag capture_time comes from (\"EXIF:DateTimeOriginal\"), or None.")
      .def_property_readonly(
          "capture_time_zone_source",
          [](const FileTags& file) -> py::object {
            const auto taken = file.captureTime();
            return taken && !taken->zoneSource.empty() ? py::object(text(taken->zoneSource))
                                                       : py::object(py::none());
          },
          "What gave capture_time its offset (\"EXIF:OffsetTimeOriginal\", \"GPS time\", ...), "
          "or None.")
      .def_property_readonly(
          "location", [](const FileTags& file) { return file.location(); },
          "Where it was taken (GeoLocation), or None.")
      .def(
          "__getitem__",
          [](const FileTags& file, const std::string& name) {
            if (const FileTag* tag = findTag(file, name)) {
              return *tag;
            }
            throw py::key_error(name);
          },
          py::arg("name"),
          "The first tag of this catalogue name (\"EXIF:Orientation\") or tool group and name "
          "(\"EXIF:IFD0:Orientation\"); KeyError if there is none.")
      .def(
          "get",
          [](const FileTags& file, const std::string& name, py::object fallback) -> py::object {
            const FileTag* tag = findTag(file, name);
            return tag != nullptr ? py::cast(*tag) : fallback;
          },
          py::arg("name"), py::arg("default") = py::none(),
          "As file_tags[name], with `default` where there is no such tag.")
      .def("__contains__", [](const FileTags& file,
                              const std::string& name) { return findTag(file, name) != nullptr; })
      .def("__len__", [](const FileTags& file) { return file.tags.size(); })
      .def("to_dict", &toDict,
           "The object `lorvane show --json-lines` writes for the file: file, error (only with "
           "one) and tags, each with group, name, stream (None outside the catalogue), title, "
           "value and raw.")
      .def(
          "to_json", [](const FileTags& file) { return text(app::fileLine(file)); },
          "to_dict() as the JSON text `lorvane show --json-lines` writes for the file (without "
          "the line end): cheaper than json.dumps(to_dict()) for a JSON Lines index.")
      .def("__repr__", [](const FileTags& file) {
        return py::str("<lorvane.FileTags {!r}: {} tags{}>")
            .format(pathText(file.file), file.tags.size(),
                    file.error ? text(", error: " + *file.error) : py::str(""));
      });

  py::class_<ReadEach>(module, "ReadEach",
                       "The iterator of Reader.read_each: FileTags in the paths' order.")
      .def("__iter__", [](py::object self) { return self; })
      .def("__next__", &ReadEach::next)
      .def("close", &ReadEach::close, "Stops the reading here; the tools at work are ended.")
      .def("__enter__", [](py::object self) { return self; })
      .def("__exit__", [](ReadEach& each, const py::args&) {
        each.close();
        return false;
      });

  py::class_<Reader, std::shared_ptr<Reader>>(
      module, "Reader",
      "Reads files' tags with ExifTools kept running side by side. A context manager: leaving "
      "it ends the tools. One read at a time; use a Reader per thread.")
      .def(py::init<const std::string&, std::size_t, double>(), py::arg("language") = "en",
           py::arg("jobs") = 0, py::arg("timeout") = 60.0,
           "language: of the tool's printed values and descriptions and of the catalogue's "
           "titles and labels (lorvane.languages()). jobs: tools side by side, 0 for one per "
           "core. timeout: the longest the tool may take over one file, in seconds (then that "
           "file gets an error and the others go on with a fresh tool); 0 for no limit. Raises "
           "ToolNotFoundError without an ExifTool.")
      .def("read", &Reader::read, py::arg("path"),
           "The tags of one file; a file the tool could not read has its error in .error.")
      .def(
          "read_each",
          [](std::shared_ptr<Reader> reader, py::iterable paths) {
            return std::make_unique<ReadEach>(std::move(reader), std::move(paths));
          },
          py::arg("paths"),
          "An iterator of FileTags, one per path of `paths` (any iterable of str or "
          "os.PathLike, a generator too) in their order, each as soon as it and all before it "
          "are read; a folder gives the files the tool reads in it. Memory stays flat in the "
          "number of paths. A file that can't be read has its .error; Ctrl-C ends the tools.")
      .def("read_binary", &Reader::readBinary, py::arg("path"), py::arg("tag"),
           "The bytes of one binary tag (\"ThumbnailImage\", \"PreviewImage\", \"JpgFromRaw\", "
           "\"ICC_Profile\", also with its groups), exactly what `exiftool -b -TAG FILE` writes; "
           "None where the tool extracts nothing.")
      .def("read_largest_preview", &Reader::readLargestPreview, py::arg("path"),
           "The largest JPEG or PNG picture the tool extracts from the file (previews, "
           "thumbnails, a RAW file's JpgFromRaw, cover art) as an EmbeddedImage, or None.")
      .def("cancel", &Reader::cancel,
           "From any thread: ends the tools at work; read_each ends soon after. A cancelled "
           "Reader stays cancelled.")
      .def("close", &Reader::close, "Ends the tools; the Reader can't read any more.")
      .def("__enter__", [](py::object self) { return self; })
      .def("__exit__", [](Reader& reader, const py::args&) {
        reader.close();
        return false;
      });
}

}  // namespace lorvane::python
