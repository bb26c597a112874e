#include "tags_command.hpp"

#include <algorithm>
#include <ostream>
#include <set>
#include <sstream>

#include <nlohmann/json.hpp>
#include <unicode/unistr.h>

#include <lorvane/tag_name.hpp>

#include "tag_table.hpp"

namespace lorvane::app {
namespace {

// `pattern` must hold no run of several "*" (see Glob): each star then costs one step, and the
// walk never reaches further into the pattern than about twice the text's length.
bool matchesGlob(std::string_view pattern, std::string_view text) {
  // The classic backtracking walk: remember the last "*" and how much of the text it took.
  std::size_t p = 0, t = 0, star = std::string_view::npos, taken = 0;
  while (t < text.size()) {
    if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
      ++p, ++t;
    } else if (p < pattern.size() && pattern[p] == '*') {
      star = p++, taken = t;
    } else if (star != std::string_view::npos) {
      p = star + 1, t = ++taken;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') {
    ++p;
  }
  return p == pattern.size();
}

// A pattern with "*" and "?", made once and matched against every tag: a run of stars
// matches what one star does, so it becomes one, else a long run would be walked again for
// each of the catalogue's tags.
class Glob {
public:
  explicit Glob(std::string_view pattern) {
    for (const char c : pattern) {
      if (c != '*' || pattern_.empty() || pattern_.back() != '*') {
        pattern_ += c;
      }
    }
  }
  bool matches(std::string_view text) const { return matchesGlob(pattern_, text); }

private:
  std::string pattern_;
};

std::string folded(std::string_view text) {
  std::string result;
  return icu::UnicodeString::fromUTF8(text).foldCase().toUTF8String(result);
}

bool hasWildcard(std::string_view text) {
  return text.find_first_of("*?") != std::string_view::npos;
}

// The distinct words, longest first: a title must hold them all, and a long word is the one
// most likely to be missing, so a title is mostly turned down after one search whatever the
// number of words.
std::vector<std::string> foldedWords(std::string_view text) {
  std::vector<std::string> words;
  std::istringstream in(folded(text));
  for (std::string word; in >> word;) {
    words.push_back(word);
  }
  std::sort(words.begin(), words.end(), [](const std::string& a, const std::string& b) {
    return a.size() != b.size() ? a.size() > b.size() : a < b;
  });
  words.erase(std::unique(words.begin(), words.end()), words.end());
  return words;
}

std::string flagWords(const TagItem& item) {
  std::string flags;
  for (const auto name : tagFlagNames(item)) {
    flags.append(flags.empty() ? "" : ",").append(name);
  }
  return flags.empty() ? "-" : flags;
}

nlohmann::ordered_json tagJson(const TagItem& item, bool withChoices) {
  nlohmann::ordered_json flags = nlohmann::ordered_json::array();
  for (const auto name : tagFlagNames(item)) {
    flags.push_back(name);
  }
  nlohmann::ordered_json json = {{"name", item.name().rawValue()},
                                 {"type", item.type().rawValue()},
                                 {"count", item.count()},
                                 {"flags", flags},
                                 {"title", item.localizedKey()}};
  if (withChoices) {
    auto& choices = json["choices"] = nlohmann::ordered_json::array();
    for (const auto& [value, label] : item.makeFilteredChoices()) {
      choices.push_back({{"value", value}, {"label", label}});
    }
  }
  return json;
}

void printTags(std::ostream& out, const std::vector<const TagItem*>& items, bool withChoices) {
  std::size_t nameWidth = 0;
  std::size_t typeWidth = 0;
  std::size_t flagsWidth = 0;
  for (const TagItem* item : items) {
    nameWidth = std::max(nameWidth, item->name().rawValue().size());
    typeWidth = std::max(typeWidth, item->type().rawValue().size());
    flagsWidth = std::max(flagsWidth, flagWords(*item).size());
  }
  for (const TagItem* item : items) {
    const std::string name(item->name().rawValue());
    const std::string type(item->type().rawValue());
    const std::string flags = flagWords(*item);
    const std::string count = std::to_string(item->count());
    out << name << std::string(nameWidth - name.size() + 2, ' ') << type
        << std::string(typeWidth - type.size() + 2, ' ')
        << std::string(count.size() < 5 ? 5 - count.size() : 0, ' ') << count << "  " << flags
        << std::string(flagsWidth - flags.size() + 2, ' ') << escapeControls(item->localizedKey())
        << "\n";
    if (!withChoices) {
      continue;
    }
    const auto choices = item->makeFilteredChoices();
    std::size_t valueWidth = 0;
    for (const auto& [value, label] : choices) {
      valueWidth = std::max(valueWidth, displayWidth(escapeControls(value)));
    }
    for (const auto& [value, label] : choices) {
      const std::string shown = escapeControls(value);
      out << "    " << shown << std::string(valueWidth - displayWidth(shown) + 2, ' ')
          << escapeControls(label) << "\n";
    }
  }
}

}  // namespace

std::vector<std::string_view> tagFlagNames(const TagItem& item) {
  std::vector<std::string_view> names;
  for (const auto& [isSet, name] : {std::pair{item.isList(), "list"},
                                    {item.isWritable(), "writable"},
                                    {item.isFlatten(), "flatten"},
                                    {item.isBinary(), "binary"},
                                    {item.isUnsafe(), "unsafe"}}) {
    if (isSet) {
      names.emplace_back(name);
    }
  }
  return names;
}

std::vector<const TagItem*> findTags(const std::string& pattern) {
  std::vector<const TagItem*> found;
  const bool wildcard = hasWildcard(pattern);
  if (const auto colon = pattern.find(':'); colon != std::string::npos) {
    const std::string_view stream = std::string_view(pattern).substr(0, colon);
    const std::string_view key = std::string_view(pattern).substr(colon + 1);
    if (!wildcard) {
      if (const TagItem* item = TagItem::find(TagName(stream, key))) {
        found.push_back(item);
      }
      return found;
    }
    const Glob streamGlob(stream);
    const Glob keyGlob(key);
    for (const TagItem* item : TagItem::allCases()) {
      if (streamGlob.matches(item->stream().rawValue()) &&
          keyGlob.matches(item->key().rawValue())) {
        found.push_back(item);
      }
    }
    return found;
  }
  const Glob keyGlob(pattern);
  // Wildcards make a pattern a name, never words of a title.
  const auto words = wildcard ? std::vector<std::string>() : foldedWords(pattern);
  for (const TagItem* item : TagItem::allCases()) {
    if (keyGlob.matches(item->key().rawValue())) {
      found.push_back(item);
      continue;
    }
    if (words.empty()) {
      continue;
    }
    const std::string title = folded(item->localizedKey());
    if (std::all_of(words.begin(), words.end(), [&](const std::string& word) {
          return title.find(word) != std::string::npos;
        })) {
      found.push_back(item);
    }
  }
  return found;
}

int runTags(const TagsRequest& request, std::ostream& out, std::ostream& err) {
  std::vector<const TagItem*> items;
  std::set<const TagItem*> seen;
  for (const auto& pattern : request.patterns) {
    const auto found = findTags(pattern);
    if (found.empty()) {
      err << "lorvane: no tag matches '" << pattern << "'\n";
    }
    for (const TagItem* item : found) {
      if (seen.insert(item).second) {
        items.push_back(item);
      }
    }
  }
  const bool withChoices = request.listsChoices || items.size() == 1;
  if (request.printsJson) {
    nlohmann::ordered_json json = nlohmann::ordered_json::array();
    for (const TagItem* item : items) {
      json.push_back(tagJson(*item, withChoices));
    }
    out << json.dump(2) << "\n";
  } else {
    printTags(out, items, withChoices);
  }
  return items.empty() ? 1 : 0;
}

}  // namespace lorvane::app
