"""What the tests share: the installed module (PYTHONPATH), the lorvane program and the source
tree (from ctest's environment), real files made by the project's tools, and the ExifTools this
process has started."""

import json
import os
import pathlib
import shutil
import subprocess
import sys

import pytest

SOURCE = pathlib.Path(os.environ.get("LORVANE_SOURCE_DIR", pathlib.Path(__file__).parents[2]))
PROGRAM = os.environ.get("LORVANE_PROGRAM", "lorvane")
SAMPLE = SOURCE / "tests" / "data" / "sample.jpg"


@pytest.fixture(scope="session")
def varied(tmp_path_factory):
    """The files of tools/make-varied-files.py: JPEGs with maker notes, PNG, TIFF, MP4, PDF, WAV."""
    folder = tmp_path_factory.mktemp("varied")
    subprocess.run([sys.executable, str(SOURCE / "tools" / "make-varied-files.py"), str(folder)],
                   check=True, capture_output=True)
    paths = sorted(str(path) for path in folder.iterdir())
    # Read once, so that a read no longer moves their access time (relatime).
    for path in paths:
        pathlib.Path(path).read_bytes()
    return paths


def same_reading(file):
    """A to_dict() object as two reads of the file agree on it: the tool lists Composite tags in
    Perl's hash order, which changes from one process to the next."""
    return dict(file, tags=sorted(file["tags"], key=lambda tag: json.dumps(tag, sort_keys=True)))


@pytest.fixture
def sample(tmp_path):
    """A copy of the sample JPEG, free to change."""
    copy = tmp_path / "sample.jpg"
    shutil.copyfile(SAMPLE, copy)
    return copy


def program(*arguments):
    """The lorvane program's standard output."""
    return subprocess.run([PROGRAM, *arguments], check=True, capture_output=True, text=True).stdout


def tool_children():
    """The process ids of the tools this process runs (its children that run Perl)."""
    children = []
    for entry in pathlib.Path("/proc").iterdir():
        try:
            stat = (entry / "stat").read_text()
            command = (entry / "cmdline").read_bytes()
        except (OSError, ValueError):
            continue
        parent = int(stat.rsplit(")", 1)[1].split()[1])
        if parent == os.getpid() and b"exiftool" in command:
            children.append(int(entry.name))
    return children
