// The catalogue: Tag, tag(), tags(), streams(), languages().

#include <lorvane/tag_item.hpp>
#include <lorvane/tag_stream.hpp>

#include "common.hpp"
#include "tags_command.hpp"

namespace lorvane::python {

void addCatalogue(py::module_& module) {
  // Items are constants of the catalogue that live as long as the process: Python only points
  // to them.
  py::class_<TagItem, std::unique_ptr<TagItem, py::nodelete>>(
      module, "Tag",
      "A tag of the catalogue: what ExifTool knows of it, without a file's value. Made only by "
      "the library (lorvane.tag, lorvane.tags, FileTag.tag).")
      .def_property_readonly(
          "name", [](const TagItem& item) { return text(item.name().rawValue()); },
          "The full name, stream and key: \"EXIF:Orientation\".")
      .def_property_readonly(
          "stream", [](const TagItem& item) { return text(item.stream().rawValue()); },
          "The stream: \"EXIF\".")
      .def_property_readonly(
          "key", [](const TagItem& item) { return text(item.key().rawValue()); },
          "The key within the stream: \"Orientation\".")
      .def_property_readonly(
          "type", [](const TagItem& item) { return text(item.type().rawValue()); },
          "The tool's format of the value: \"int16u\", \"string\", \"rational64u\", ...")
      .def_property_readonly("count", &TagItem::count,
                             "The size the catalogue records: mostly 0, -1 for a few tags.")
      .def_property_readonly("writable", &TagItem::isWritable, "Whether ExifTool can write it.")
      .def_property_readonly(
          "flags",
          [](const TagItem& item) {
            py::list flags;
            for (const auto name : app::tagFlagNames(item)) {
              flags.append(text(name));
            }
            return flags;
          },
          "The flags set, of \"list\", \"writable\", \"flatten\", \"binary\" and \"unsafe\".")
      .def(
          "title",
          [](const TagItem& item, const std::string& language) {
            return text(item.localizedKey(python::language(language)));
          },
          py::arg("language") = "en", "The title in this language, else in English, else the key.")
      .def(
          "choices",
          [](const TagItem& item, const std::string& language) {
            const ETLanguage chosen = python::language(language);
            py::dict choices;
            const auto raws = item.choices();
            for (std::size_t position = 0; position < raws.size(); ++position) {
              // A raw value listed twice keeps its first label, and its first place.
              const py::str raw = text(raws[position]);
              if (!choices.contains(raw)) {
                choices[raw] = text(item.localizedChoice(position, chosen));
              }
            }
            return choices;
          },
          py::arg("language") = "en",
          "Raw value to label in this language (else English), in the catalogue's order; empty "
          "for a tag without a fixed set of values.")
      .def("__eq__",
           [](const TagItem& item, py::object other) {
             return py::isinstance<TagItem>(other) && item == other.cast<const TagItem&>();
           })
      .def("__hash__", [](const TagItem& item) { return std::hash<TagItem>{}(item); })
      .def("__repr__", [](const TagItem& item) {
        return text("<lorvane.Tag " + item.name().rawValue() + ">");
      });

  module.def(
      "tag",
      [](const std::string& name) -> const TagItem* {
        const auto parsed = TagName::parse(name);
        return parsed ? TagItem::find(*parsed) : nullptr;
      },
      py::arg("name"), py::return_value_policy::reference,
      "The catalogue's tag of this full name (\"EXIF:Orientation\"), or None.");
  module.def(
      "tags",
      [](const std::string& pattern) {
        py::list found;
        for (const TagItem* item : app::findTags(pattern)) {
          found.append(py::cast(item, py::return_value_policy::reference));
        }
        return found;
      },
      py::arg("pattern"),
      "The catalogue's tags a pattern names, in catalogue order, as `lorvane tags` finds them: a "
      "full name (\"EXIF:Orientation\"), a key in any stream (\"Orientation\"), either with the "
      "wildcards * and ? (\"Canon:*Lens*\"), or words that all stand in the title in the user's "
      "language.");
  module.def(
      "streams",
      [] {
        py::list streams;
        for (const TagStream& stream : TagStream::allCases()) {
          streams.append(text(stream.rawValue()));
        }
        return streams;
      },
      "The names of the catalogue's streams, in its order.");
  module.def(
      "languages",
      [] {
        py::list languages;
        for (const ETLanguage& language : ETLanguage::allCases()) {
          languages.append(text(language.exifToolValue()));
        }
        return languages;
      },
      "The codes of the languages the catalogue has titles and labels in (English first), as "
      "the language arguments take them.");
}

}  // namespace lorvane::python
