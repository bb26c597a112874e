#include <lorvane/arguments_maker.hpp>

#include <lorvane/et_settings.hpp>

namespace lorvane {
namespace {

void append(std::vector<std::string>& list, const std::vector<std::string>& entries) {
  list.insert(list.end(), entries.begin(), entries.end());
}

}  // namespace

// One test and one append per step; the steps keep the tool's expected order, which is not
// the order in which the fields are declared.
std::vector<std::string> ETInput::ArgumentsMaker::make() const {
  std::vector<std::string> list = additional;
  if (addDefaultSettings) {
    list.emplace_back("-q");
    append(list, ETSettings::shared().extraArguments());
  }
  if (language) {
    append(list, {"-lang", std::string(language->exifToolValue())});
  }
  if (charset) {
    append(list, {"-charset", std::string(charset->rawValue())});
  }
  if (enableSeparator) {
    append(list, {"-sep", ","});
  }
  if (enableShortTags) {
    list.emplace_back("-s");
  }
  if (enableRawValues) {
    list.emplace_back("-n");
  }
  if (disableComposite) {
    list.emplace_back("-e");
  }
  if (enableCorrection) {
    list.emplace_back("-F");
  }
  if (ignoreMinorErrors) {
    list.emplace_back("-m");
  }
  if (overwriteInPlace) {
    append(list, {"-overwrite_original_in_place", "-P"});
  }
  if (forceRawLocation) {
    // A literal format for the tool's "-c" option; nothing is formatted here.
    append(list, {"-c", "%.6f"});
  }
  if (recurseSubfolders) {
    list.emplace_back("-r");
  }
  if (extractsEmbedded) {
    list.emplace_back("-ee");
  }
  if (extractsBinaries) {
    list.emplace_back("-b");
  }
  if (filePathFilter) {
    append(list, filePathFilter->arguments());
  }
  if (password && !password->empty()) {
    append(list, {"-password", *password});
  }
  if (sourceURL) {
    list.push_back(sourceArgument(sourceURL->string()));
  }
  if (sourcePath) {
    list.push_back(sourceArgument(*sourcePath));
  }
  if (forceExecute) {
    list.emplace_back("-execute");
  }
  return list;
}

std::string ETInput::ArgumentsMaker::sourceArgument(std::string_view path) {
  if (path.starts_with('-')) {
    return "./" + std::string(path);
  }
  return std::string(path);
}

void detail::appendMade(std::vector<std::string>& list,
                        const std::function<void(ETInput::ArgumentsMaker&)>& block) {
  ETInput::ArgumentsMaker maker;
  block(maker);
  append(list, maker.make());
}

void ETInput::addArguments(const std::function<void(ArgumentsMaker&)>& block) {
  detail::appendMade(arguments, block);
}

}  // namespace lorvane
