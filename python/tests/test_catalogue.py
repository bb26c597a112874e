"""The catalogue through the installed module, against the lorvane program's own lookup."""

import json

import pytest

import lorvane
from conftest import program


@pytest.mark.parametrize("language", ["en", "de", "ja"])
@pytest.mark.parametrize("name", ["EXIF:Orientation", "XMP:Title", "Canon:LensType", "QuickTime:Rotation"])
def test_tags_equal_the_programs(name, language):
    [shown] = json.loads(program("tags", "--lang", language, "--choices", "--json", name))
    tag = lorvane.tag(name)
    assert (tag.name, tag.stream + ":" + tag.key, tag.type, tag.count, tag.flags) == (
        shown["name"], shown["name"], shown["type"], shown["count"], shown["flags"])
    assert tag.writable == ("writable" in shown["flags"])
    assert tag.title(language) == shown["title"]
    labels = {}
    for choice in shown["choices"]:
        labels.setdefault(choice["value"], choice["label"])
    assert tag.choices(language) == labels
    assert list(tag.choices(language)) == list(labels)


def test_names_streams_and_languages():
    assert lorvane.tag("EXIF:NoSuchTag") is None and lorvane.tag("no colon") is None
    assert lorvane.tags("NoSuchTagAnywhere") == []
    assert {"EXIF", "XMP", "QuickTime"} <= set(lorvane.streams())
    assert lorvane.languages() == ["en", "zh_cn", "fr", "de", "it", "ja", "es"]
    with pytest.raises(ValueError, match="unknown language 'xx'"):
        lorvane.Reader(language="xx")
    assert lorvane.tag("EXIF:Orientation") == lorvane.tags("EXIF:Orientation")[0]
    assert len({lorvane.tag("EXIF:Orientation"), lorvane.tags("EXIF:Orientation")[0]}) == 1
