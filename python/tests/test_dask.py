"""Reading on a Dask LocalCluster of worker processes, equal to reading here."""

import json
import os
import pathlib
import subprocess
import sys

import pytest
from distributed import Client, LocalCluster

import lorvane
import lorvane.dask
from conftest import SOURCE, same_reading


@pytest.fixture(scope="module")
def client():
    with LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                      dashboard_address=None) as cluster, Client(cluster) as client:
        yield client


def local(paths):
    with lorvane.Reader(jobs=1) as reader:
        return [same_reading(file.to_dict()) for file in reader.read_each(paths)]


def test_a_bag_equals_a_local_read_and_a_bad_file_is_its_error(client, varied, tmp_path):
    bad = tmp_path / "bad.jpg"
    bad.write_bytes(b"\xff\xd8 not a picture")
    bad.read_bytes()  # as the fixture's files, see there
    paths = varied[:4] + [str(bad)] + varied[4:]
    read = lorvane.dask.read_bag(paths, npartitions=3).compute()
    assert [same_reading(file) for file in read] == local(paths)
    assert [("error" in file) for file in read] == [path == str(bad) for path in paths]
    lines = lorvane.dask.read_bag(paths, npartitions=2, as_json=True).compute()
    assert [same_reading(json.loads(line)) for line in lines] == [same_reading(file) for file in read]


def test_the_archive_example_indexes_a_tree(client, varied, tmp_path):
    tree = tmp_path / "tree"
    (tree / "b").mkdir(parents=True)
    for index, path in enumerate(varied):
        target = tree / ("b" if index % 2 else "") / pathlib.Path(path).name
        target.write_bytes(pathlib.Path(path).read_bytes())
        target.read_bytes()  # as the fixture's files, see there
    (tree / "b" / "missing.jpg").symlink_to(tmp_path / "nowhere")
    output = tmp_path / "index.jsonl"
    address = client.scheduler.address
    result = subprocess.run([sys.executable, str(SOURCE / "examples" / "python" / "index_archive.py"),
                             str(tree), str(output), "--scheduler", address],
                            capture_output=True, text=True)
    assert result.returncode == 1, result.stderr  # the dangling link
    files = [same_reading(json.loads(line)) for line in output.read_text().splitlines()]
    paths = []
    for root, folders, names in os.walk(tree):
        folders.sort()
        paths += [os.path.join(root, name) for name in sorted(names)]
    assert files == local(paths)
    assert "1 of the files could not be read" in result.stderr
