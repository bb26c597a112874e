#include <lorvane/tag_item.hpp>

#include <cassert>

#include "text/ascii_text.hpp"

namespace lorvane {
namespace {

// The text is normalised once; an ASCII entry then only needs a byte compare with it.
std::optional<std::size_t> firstPosition(TagItem::Choices choices, std::string_view text) {
  const std::string canonicalText = canonicalForm(text);
  for (std::size_t position = 0; position < choices.size(); ++position) {
    const std::string_view entry = choices[position];
    if (entry == canonicalText ||
        (!detail::isAscii(entry) && canonicalForm(entry) == canonicalText)) {
      return position;
    }
  }
  return std::nullopt;
}

}  // namespace

TagItem::TagItem(int index, TagName name, TagType type, int count, bool isList, bool isWritable,
                 bool isFlatten, bool isBinary, bool isUnsafe, Choices choices,
                 const TagStrings& strings)
    : count_(count),
      isList_(isList),
      index_(index),
      name_(std::move(name)),
      type_(type),
      isWritable_(isWritable),
      isFlatten_(isFlatten),
      isBinary_(isBinary),
      isUnsafe_(isUnsafe),
      choices_(choices),
      strings_(&strings) {}

std::string TagItem::localizedKey() const {
  return strings_->localize({stream().rawValue(), key().rawValue()});
}

std::string TagItem::localizedTitle() const { return stream().rawValue() + " " + localizedKey(); }

std::string TagItem::localizedChoice(std::size_t position) const {
  assert(position < choices_.size() && "localizedChoice: position outside choices()");
  if (position >= choices_.size()) {
    return {};
  }
  return strings_->localize({stream().rawValue(), key().rawValue(), choices_[position]});
}

std::optional<std::size_t> TagItem::index(std::string_view choice) const {
  if (const auto position = firstPosition(choices_, choice)) {
    return position;
  }
  if (choice.empty()) {
    return std::nullopt;
  }
  // Each separator works on the whole text, never on what an earlier one left of it.
  for (const char separator : {' ', '.', ','}) {
    if (const auto position = index(choice, separator)) {
      return position;
    }
  }
  return std::nullopt;
}

std::optional<std::size_t> TagItem::index(std::string_view choice, char separator) const {
  // Splitting at every separator and joining all but the last part again is the text up to
  // its last separator; so the fronts to try end at each separator, from the last one back.
  // The whole text, the first front, has already missed in index(choice).
  for (std::size_t end = choice.rfind(separator); end != std::string_view::npos;
       end = end == 0 ? std::string_view::npos : choice.rfind(separator, end - 1)) {
    if (const auto position = firstPosition(choices_, choice.substr(0, end))) {
      return position;
    }
  }
  return std::nullopt;
}

std::vector<std::pair<std::string, std::string>> TagItem::makeFilteredChoices() const {
  std::vector<std::pair<std::string, std::string>> pairs;
  pairs.reserve(choices_.size());
  for (std::size_t position = 0; position < choices_.size(); ++position) {
    pairs.emplace_back(choices_[position], localizedChoice(position));
  }
  return pairs;
}

std::string TagItem::description() const { return "TagItem<" + name_.rawValue() + ">"; }

}  // namespace lorvane
