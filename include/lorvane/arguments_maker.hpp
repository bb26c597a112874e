#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <lorvane/et_charset.hpp>
#include <lorvane/et_input.hpp>
#include <lorvane/et_language.hpp>
#include <lorvane/et_path_filter.hpp>

namespace lorvane {

// The named options of one tool command. Set fields (as a rule inside the block of
// ETInput::addArguments), and make() turns them into the tool's arguments in a fixed order
// that does not follow the order of the fields. Nothing is checked: whatever the tool makes
// of the list, it answers with its own messages.
//
// The order of make(), each entry on its own, a false bool or absent value adding nothing:
//   additional; "-q" and ETSettings::extraArguments(); "-lang" code; "-charset" name;
//   "-sep" ","; "-s"; "-n"; "-e"; "-F"; "-m"; "-overwrite_original_in_place" "-P";
//   "-c" "%.6f"; "-r"; "-ee"; "-b"; the "-ext" pairs; "-password" password; sourceURL;
//   sourcePath; "-execute".
//
// The tool reads an argument that starts with "-" as an option, whatever stands before it: a
// file named "-all=" would strip the other files of their metadata, "-@" would read arguments
// from the next file. So a source path that is relative and starts with "-" (the name "-" too)
// goes to the tool as "./" and the path, which names the same file and can't be an option.
// The tool then names the file that way in its output; sourceArgument gives that spelling.
struct ETInput::ArgumentsMaker {
  // The caller's own tool arguments; always the first entries.
  std::vector<std::string> additional;
  // "-lang": the language of the tool's descriptions.
  std::optional<ETLanguage> language;
  // "-charset": how the tool reads and writes text in the files. Set to none to leave it out.
  std::optional<ETCharset> charset = ETCharset::utf8;
  // "-r"
  bool recurseSubfolders = false;
  // "-ext" for each suffix; an empty filter adds nothing.
  std::optional<ETPathFilter> filePathFilter;
  // "-sep" ",": list values come as one text, joined with commas.
  bool enableSeparator = true;
  // "-s"
  bool enableShortTags = false;
  // "-n"
  bool enableRawValues = false;
  // "-e"
  bool disableComposite = false;
  // "-F"
  bool enableCorrection = false;
  // "-m"
  bool ignoreMinorErrors = false;
  // "-overwrite_original_in_place" "-P"
  bool overwriteInPlace = false;
  // "-c" "%.6f": GPS coordinates as plain decimal degrees.
  bool forceRawLocation = false;
  // "-q" and the extra arguments of ETSettings, read when make() is called.
  bool addDefaultSettings = true;
  // "-ee"
  bool extractsEmbedded = true;
  // "-b"
  bool extractsBinaries = true;
  // "-execute" as the very last entry, which ends this command within a batch.
  bool forceExecute = false;
  // "-password"; the empty string adds nothing.
  std::optional<std::string> password;
  // Its plain file-system path, ahead of sourcePath; as sourceArgument gives it.
  std::optional<std::filesystem::path> sourceURL;
  // Passed on unchanged, even when empty, but for a leading "-" (sourceArgument).
  std::optional<std::string> sourcePath;

  // The arguments of this command. Reads ETSettings::shared() (only when addDefaultSettings
  // is set), so a later change of the extra arguments shows in the next call.
  std::vector<std::string> make() const;

  // The entry that make() gives for a source path: "./" in front of a relative path that
  // starts with "-", any other path as it is. The tool prints the file's name so spelt.
  static std::string sourceArgument(std::string_view path);
};

}  // namespace lorvane
