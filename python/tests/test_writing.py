"""Writing through the installed module with the real ExifTool."""

import datetime
import json
import subprocess

import pytest

import lorvane


def raw_tags(path, *names):
    output = subprocess.run(["exiftool", "-j", "-n", *("-" + name for name in names), str(path)],
                            capture_output=True, check=True).stdout
    tags = json.loads(output)[0]
    del tags["SourceFile"]
    return tags


def test_a_write_says_what_became_of_each_file(sample, tmp_path):
    missing = tmp_path / "missing.jpg"
    with lorvane.Writer() as writer:
        results = writer.write(
            {"EXIF:Orientation": "Rotate 90 CW", "XMP:Subject": ["a", "b"], "XMP:Title": None},
            [sample, missing])
        assert [(result.file, result.outcome) for result in results] == [
            (str(sample), "updated"), (str(missing), "refused")]
        assert results[0].original == str(sample) + "_original"
        assert results[1].messages and results[1].original is None
        assert raw_tags(sample, "EXIF:Orientation", "XMP:Subject", "XMP:Title") == {
            "Orientation": 6, "Subject": ["a", "b"]}
        # Deleting what isn't there changes nothing.
        assert writer.write({"XMP:Title": None}, sample)[0].outcome == "unchanged"


def test_labels_of_another_language_and_overwriting_the_original(sample):
    german = lorvane.tag("EXIF:Orientation").choices("de")["8"]
    with lorvane.Writer(overwrite_original=True) as writer:
        [result] = writer.write(["EXIF:Orientation=" + german], [sample], language="de")
    assert (result.outcome, result.original) == ("updated", None)
    assert not (sample.parent / (sample.name + "_original")).exists()
    assert raw_tags(sample, "EXIF:Orientation") == {"Orientation": 8}


def test_a_refusal_writes_nothing(sample):
    before = sample.read_bytes()
    with lorvane.Writer() as writer:
        with pytest.raises(lorvane.AssignmentError) as raised:
            writer.write({"EXIF:Orientation": "Sideways", "EXIF:NoSuchTag": "x",
                          "EXIF:ISO": "70000", "XMP:Title": "fine"}, [sample])
    assert isinstance(raised.value, ValueError)
    assert [(refusal.tag, refusal.value, refusal.reason) for refusal in raised.value.refusals] == [
        ("EXIF:Orientation", "Sideways", "not_a_choice"),
        ("EXIF:NoSuchTag", "x", "unknown_tag"),
        ("EXIF:ISO", "70000", "out_of_range")]
    assert "nothing was written" in str(raised.value)
    assert sample.read_bytes() == before


def test_typed_values_are_read_back_as_written(sample):
    taken = datetime.datetime(2025, 5, 6, 7, 8, 9, 120000, tzinfo=datetime.timezone(datetime.timedelta(hours=-3)))
    with lorvane.Writer(overwrite_original=True) as writer:
        [result] = writer.write({}, [sample], capture_time=taken, location=(-33.5, -70.25, 12.0))
        assert result.outcome == "updated"
        with pytest.raises(ValueError):
            writer.write({}, [sample], location=(91, 0))
    with lorvane.Reader(jobs=1) as reader:
        file = reader.read(sample)
    assert file.capture_time == taken and file.capture_time.utcoffset() == taken.utcoffset()
    assert (file.location.latitude, file.location.longitude, file.location.altitude) == (-33.5, -70.25, 12.0)
