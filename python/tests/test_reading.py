"""Reading through the installed module with the real ExifTool."""

import _thread
import datetime
import json
import os
import pathlib
import shutil
import subprocess
import sys
import threading

import pytest

import lorvane
from conftest import SAMPLE, program, same_reading, tool_children


def tool_json(path):
    """What `exiftool -j -G0:1` prints for the file, numbers kept as the text the tool wrote."""
    output = subprocess.run(["exiftool", "-j", "-G0:1", path], capture_output=True, check=True).stdout
    return json.loads(output, parse_float=str, parse_int=str)[0]


def text_of(value):
    return [text_of(each) for each in value] if isinstance(value, list) else str(value)


def test_values_equal_the_tools_and_the_programs(varied):
    with lorvane.Reader(jobs=2) as reader:
        files = list(reader.read_each(varied))
    shown = [json.loads(line) for line in program("show", "--json-lines", "--jobs", "1", *varied).splitlines()]
    assert [same_reading(file.to_dict()) for file in files] == [same_reading(file) for file in shown]
    assert [json.loads(file.to_json()) for file in files] == [file.to_dict() for file in files]
    for path, file in zip(varied, files):
        assert file.file == path and file.error is None
        expected = tool_json(path)
        del expected["SourceFile"]
        for name, value in expected.items():
            assert file[name].value == text_of(value), (path, name)


def test_a_generator_is_read_lazily_and_its_error_comes_after_the_files_before_it(varied):
    pulled = []

    def paths(count):
        for index in range(count):
            pulled.append(index)
            yield pathlib.Path(varied[index % len(varied)])

    with lorvane.Reader(jobs=1) as reader:
        each = reader.read_each(paths(100_000))
        first = next(each)
        # Memory stays flat: a chunk or two of the paths are taken, not all.
        assert first.file == varied[0] and len(pulled) < 100
        each.close()
        assert list(each) == []

        def failing():
            yield varied[0]
            yield SAMPLE
            raise OSError("the listing broke")

        read = []
        with pytest.raises(OSError, match="the listing broke"):
            for file in reader.read_each(failing()):
                read.append(file.file)
        assert read == [varied[0], str(SAMPLE)]
        # The Reader goes on after an abandoned read_each.
        assert reader.read(SAMPLE).error is None
    assert tool_children() == []


def test_cancel_from_another_thread_and_ctrl_c_end_the_tools(varied):
    paths = varied * 40
    with lorvane.Reader(jobs=2) as reader:
        read = 0
        for file in reader.read_each(paths):
            read += 1
            if read == 3:
                threading.Thread(target=reader.cancel).start()
        assert 3 <= read < len(paths)
        assert tool_children() == []
        assert list(reader.read_each(varied)) == []  # a cancel stays

    with lorvane.Reader(jobs=2) as reader:
        read = 0
        with pytest.raises(KeyboardInterrupt):
            for file in reader.read_each(paths):
                read += 1
                if read == 3:
                    _thread.interrupt_main()  # as Ctrl-C would
        assert 3 <= read < len(paths)
        assert tool_children() == []
        # Ctrl-C leaves the Reader usable.
        assert reader.read(varied[0]).error is None


def test_other_threads_run_while_the_tools_read(varied):
    counted = 0
    reading = threading.Event()
    done = threading.Event()

    def count():
        nonlocal counted
        reading.wait()
        while not done.is_set():
            counted += 1

    counter = threading.Thread(target=count)
    counter.start()
    with lorvane.Reader(jobs=1) as reader:
        reading.set()
        before = counted
        reader.read(varied[0])
        during = counted - before
        done.set()
    counter.join()
    assert during > 1000


def test_tags_by_name_and_the_catalogue(sample):
    with lorvane.Reader(language="de", jobs=1) as reader:
        file = reader.read(sample)
        missing = reader.read(sample.parent / "missing.jpg")
    orientation = file["EXIF:Orientation"]
    assert file["EXIF:IFD0:Orientation"] is not None and "EXIF:Orientation" in file
    assert orientation.tag == lorvane.tag("EXIF:Orientation")
    assert orientation.title == orientation.tag.title("de")
    assert orientation.value == orientation.tag.choices("de")[orientation.raw]
    with pytest.raises(KeyError):
        file["EXIF:NoSuchTag"]
    assert file.get("EXIF:NoSuchTag") is None
    assert (missing.tags, missing.error) == ([], "File not found")


def test_no_exiftool_is_a_tool_not_found_error(tmp_path):
    script = "import lorvane\ntry:\n lorvane.Reader()\nexcept lorvane.ToolNotFoundError as e:\n print(e.folder, '|', e)"
    environment = dict(os.environ, LORVANE_RESOURCE_DIR=str(tmp_path))
    output = subprocess.run([sys.executable, "-c", script], env=environment, capture_output=True,
                            text=True, check=True).stdout
    assert output.startswith(str(tmp_path / "binaries") + " | no ExifTool found in " + str(tmp_path / "binaries"))


def test_typed_values_and_pictures_equal_the_tools(sample, tmp_path):
    with_thumbnail = tmp_path / "with-thumbnail.jpg"
    shutil.copyfile(sample, with_thumbnail)
    subprocess.run(["exiftool", "-q", "-overwrite_original", f"-ThumbnailImage<={SAMPLE}", str(with_thumbnail)], check=True)
    with lorvane.Reader(jobs=1) as reader:
        assert reader.read_binary(sample, "ThumbnailImage") is None
        assert reader.read_binary(with_thumbnail, "EXIF:IFD1:ThumbnailImage") == SAMPLE.read_bytes()
        preview = reader.read_largest_preview(with_thumbnail)
        assert (preview.tag, preview.data) == ("ThumbnailImage", SAMPLE.read_bytes())
        assert reader.read_largest_preview(sample) is None
        file = reader.read(sample)
    numbers = tool_json_n(sample)
    for name in ("EXIF:IFD0:Orientation", "EXIF:ExifIFD:ISO", "Composite:GPSLatitude", "Composite:LightValue"):
        assert file[name].number == numbers[name]
        assert type(file[name].number) is type(numbers[name])
    taken = file["EXIF:ExifIFD:DateTimeOriginal"].datetime
    assert taken == datetime.datetime.strptime(numbers["EXIF:ExifIFD:DateTimeOriginal"], "%Y:%m:%d %H:%M:%S")
    assert (file.capture_time, file.capture_time_source) == (taken, "EXIF:DateTimeOriginal")
    assert taken.tzinfo is None and file.capture_time_zone_source is None
    place = file.location
    assert (place.latitude, place.longitude, place.altitude) == (
        numbers["Composite:GPSLatitude"], numbers["Composite:GPSLongitude"], None)
    assert file["File:System:FileName"].number is None and file["File:System:FileName"].datetime is None


def tool_json_n(path):
    output = subprocess.run(["exiftool", "-j", "-n", "-G0:1", path], capture_output=True, check=True).stdout
    return json.loads(output)[0]
