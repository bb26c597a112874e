#include <lorvane/tag_strings.hpp>

namespace lorvane {

TagStrings::TagStrings(const TableGetter& tableGetter) {
  const ETLanguage local = ETLanguage::local();
  if (local != ETLanguage::english) {
    localTable_ = tableGetter(local);
  }
  defaultTable_ = tableGetter(ETLanguage::english);
}

std::string TagStrings::makeID(std::span<const std::string_view> parts) {
  std::size_t length = parts.empty() ? 0 : parts.size() - 1;
  for (const std::string_view part : parts) {
    length += part.size();
  }
  std::string id;
  id.reserve(length);
  for (std::size_t position = 0; position < parts.size(); ++position) {
    if (position > 0) {
      id += ':';
    }
    id += parts[position];
  }
  return id;
}

std::string TagStrings::localize(std::span<const std::string_view> parts) const {
  std::string id = makeID(parts);
  if (localTable_) {
    if (const auto text = localTable_->find(id)) {
      return std::string(*text);
    }
  }
  if (const auto text = defaultTable_.find(id)) {
    return std::string(*text);
  }
  return id;
}

}  // namespace lorvane
