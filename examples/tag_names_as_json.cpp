// Tag names travel as JSON strings: <lorvane/json.hpp>, from the lorvane::json target.
#include <lorvane/json.hpp>
#include <iostream>

int main() {
  using namespace lorvane;

  nlohmann::json names = {TagItem::itemEXIFOrientation().name(), *TagName::parse("XMP:Title")};
  std::cout << names.dump() << "\n";  // ["EXIF:Orientation","XMP:Title"]
  for (const TagName& name : names.get<std::vector<TagName>>()) {
    std::cout << name.stream().rawValue() << " / " << name.key().rawValue() << "\n";
  }
}
