"""The catalogue's vocabulary, each fact once: its languages, its flags, the C++ names of its
value types and the rule that makes identifiers of stream and key names. The C++ side has
each of them once too (ETLanguage, detail::TagFlag in src/catalogue/catalogue_rows.hpp, TagType,
TagStream and TagKey's safeValue()); the generated sources only name them.
"""
from dataclasses import dataclass


@dataclass(frozen=True)
class Language:
    code: str          # the data files' code
    listing: str       # ExifTool's code in its listing
    name: str          # as in the C++ names: stringTable<Name><Stream>


# In the order of ETLanguage::Case; English, the one every other falls back on, first.
LANGUAGES = [
    Language("en", "en", "English"),
    Language("zh", "zh_cn", "Chinese"),
    Language("fr", "fr", "French"),
    Language("de", "de", "German"),
    Language("it", "it", "Italian"),
    Language("ja", "ja", "Japanese"),
    Language("es", "es", "Spanish"),
]
CODES = [language.code for language in LANGUAGES]
TRANSLATED = CODES[1:]
NAMES = {language.code: language.name for language in LANGUAGES}


# The rows' flag letters and the names of their bits in C++ (detail::TagFlag), in bit order.
FLAGS = {"L": "list", "W": "writable", "F": "flatten", "B": "binary", "U": "unsafe"}


def flag_names(letters):
    return [name for letter, name in FLAGS.items() if letter in letters]


# Value types whose name is a C++ keyword take a trailing underscore; "struct" is the case
# structure.
_CPP_KEYWORDS = {"float", "double", "signed", "unsigned"}


def type_constant(raw_value):
    """The TagType constant of a raw value: "lang-alt" is TagType::lang_alt."""
    name = raw_value.replace("-", "_")
    if name in _CPP_KEYWORDS:
        return name + "_"
    return "structure" if name == "struct" else name


def safe_value(raw):
    """The identifier form of a stream or key name: "SRF#" is SRF_, "AF-On" is AF_On."""
    return raw.replace("#", "_").replace("-", "_")
