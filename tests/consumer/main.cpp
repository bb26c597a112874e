// Uses both halves of an installed Lorvane: one run of ExifTool and one catalogue lookup.
#include <lorvane/json.hpp>
#include <lorvane/lorvane.hpp>

#include <iostream>

int main() {
  using namespace lorvane;
  ETInput input;
  input.arguments = {"-ver"};
  ETOutput output = ETProcess::run(input);
  output.throwIfErrors();
  std::cout << "ExifTool " << output.decodeOutData().value_or("?");

  const TagItem& orientation = TagItem::itemEXIFOrientation();
  std::cout << orientation.localizedTitle() << ": " << orientation.choices().size() << " choices, "
            << nlohmann::json(orientation.name()).dump() << "\n";
  return output.decodeOutData().value_or("").empty() ? 1 : 0;
}
