"""Reads ExifTool's own tag listing (`exiftool -listx -f`, xz-compressed).

The listing is the source of every choice value, label and translation that the catalogue's
rows don't show. It is read once into plain records; the merge rules live in merge.py.
"""
import lzma
import xml.etree.ElementTree as ET
from dataclasses import dataclass, field

from vocabulary import LANGUAGES

# ExifTool's language codes, mapped to the catalogue's seven languages.
LISTING_LANGUAGES = {language.listing: language.code for language in LANGUAGES}


@dataclass
class ValueBlock:
    """One <values> block: choice strings in listing order with their labels per language."""
    entries: list = field(default_factory=list)  # [(value, {lang: label})]


@dataclass
class ListingTag:
    table: str
    table_g0: str
    table_g1: str
    id: str
    name: str
    g0: str | None
    g1: str | None
    type: str
    titles: dict           # {lang: title}
    value_blocks: list     # [ValueBlock]

    def values(self):
        """All value strings of all blocks, in order, repeats included."""
        return [value for block in self.value_blocks for value, _ in block.entries]


def _texts(element, child_tag):
    texts = {}
    for child in element.findall(child_tag):
        lang = LISTING_LANGUAGES.get(child.get("lang"))
        if lang is not None:
            texts[lang] = child.text or ""
    return texts


def read_listing(path):
    """Every tag entry of the listing, in file order."""
    with lzma.open(path) as stream:
        root = ET.parse(stream).getroot()
    tags = []
    for table in root.iter("table"):
        table_name, table_g0, table_g1 = table.get("name"), table.get("g0"), table.get("g1")
        for tag in table.findall("tag"):
            blocks = []
            for values in tag.findall("values"):
                block = ValueBlock()
                for key in values.findall("key"):
                    block.entries.append((key.get("id"), _texts(key, "val")))
                blocks.append(block)
            tags.append(ListingTag(
                table=table_name, table_g0=table_g0, table_g1=table_g1,
                id=tag.get("id"), name=tag.get("name"), g0=tag.get("g0"), g1=tag.get("g1"),
                type=tag.get("type"), titles=_texts(tag, "desc"), value_blocks=blocks))
    return tags
