#pragma once

// Reads files' tags with kept ExifTools side by side and hands each file over as soon as it and
// every file before it are read.
//
//   MetadataReader reader({.language = ETLanguage::german, .jobs = 2});
//   reader.readEach(files, [](FileTags&& file) { show(file); });

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <lorvane/et_language.hpp>
#include <lorvane/file_tags.hpp>
#include <lorvane/tag_values.hpp>

namespace lorvane {

// Whether reading a file also reads the XMP sidecars beside it.
enum class SidecarPolicy {
  ignore,  // the file alone
  // FILE.xmp and then FILE's name with .xmp for its extension, where they exist: their XMP tags
  // stand with the file's (FileTag::origin), each before the file's own tag of the same name
  merge,
};

class MetadataReader {
public:
  struct Options {
    // Of the tool's printed values and descriptions, and of the catalogue's titles and labels
    // (read from this language's tables, whatever the process's own language).
    ETLanguage language = ETLanguage::local();
    // Tools side by side; 0: one per hardware thread.
    std::size_t jobs = 0;
    // Longest time the tool may take over one file before that file gets an error and the
    // others go on with a fresh tool; zero: no limit. Files read by one command share their
    // limits; one that passes them is read again file by file, each with its own.
    std::chrono::milliseconds timeout{60'000};
    // A folder's sidecars are then read with their files, never as files of their own.
    SidecarPolicy sidecars = SidecarPolicy::ignore;
  };

  MetadataReader();
  explicit MetadataReader(Options options);
  ~MetadataReader();
  MetadataReader(const MetadataReader&) = delete;
  MetadataReader& operator=(const MetadataReader&) = delete;

  // One file's tags; a file the tool could not read comes back with its error. A folder is
  // not one file: it comes back with an error that says so (readEach reads its files).
  FileTags read(const std::string& file);

  // Tags of data that has no file of its own (an upload, a part of an archive): the bytes are
  // put in a file readable by this user alone (in a memory-backed folder where the system has
  // one), named with the extension of `nameHint` for the tool to know the format by where the
  // bytes alone don't tell, read with the same tools, time limit and cancel as read(), and
  // removed whatever happens. FileTags::file is `nameHint`; the tool's File:System tags that
  // describe that file (folder, dates, permissions) are left out, its FileName is the hint's.
  FileTags readBytes(std::span<const std::byte> bytes, const std::string& nameHint);

  // Calls onFile once per file of `files`, in their order, each as soon as it and all before it
  // are read; a folder gives the files the tool reads in it, by their paths. onProgress (if
  // any) gets the share of files done. Both are called on the caller's thread, one call at a
  // time; memory holds the files in flight, never the whole list. Returns when every file is
  // delivered, or once cancel() was called (the files before the cancel are delivered, the
  // others never). What onFile or onProgress throws ends the reading and comes out here.
  void readEach(std::span<const std::string> files, const std::function<void(FileTags&&)>& onFile,
                const std::function<void(double)>& onProgress = {});

  // The bytes of one binary tag ("ThumbnailImage", "PreviewImage", "JpgFromRaw", "Picture",
  // "ICC_Profile", also with its groups), exactly what "exiftool -b -TAG FILE" writes; nothing
  // where the tool extracts nothing (no such tag, or one listed that holds no data).
  std::optional<std::vector<std::byte>> readBinary(const std::string& file, const std::string& tag);

  // The largest JPEG or PNG picture the tool extracts from the file (previews, thumbnails, a
  // RAW file's JpgFromRaw, cover art), for an application that wants something to show.
  std::optional<EmbeddedImage> readLargestPreview(const std::string& file);

  // From any thread: ends the tools at work; readEach returns soon after. A cancelled reader
  // stays cancelled.
  void cancel();

private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace lorvane
