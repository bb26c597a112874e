#pragma once

#include <lorvane/lorvane.hpp>

#include <nlohmann/json.hpp>

#include <map>
#include <string>
#include <string_view>

namespace lorvane::test {

// The catalogue's rows as given (data/catalogue/rows.json).
const nlohmann::json& catalogueRows();

// Every item of the catalogue by its raw name ("EXIF:Orientation").
const std::map<std::string, const TagItem*, std::less<>>& itemsByName();

// TagStrings::stringTable<Stream> of the streams whose tables the tests read by name;
// nullptr for the others.
using StringTableGetter = TagStringTable (*)(ETLanguage);
StringTableGetter stringTableGetter(std::string_view stream);

// The seven language codes of the data files, in the order of ETLanguage::Case.
std::string_view dataCode(ETLanguage language);

}  // namespace lorvane::test
