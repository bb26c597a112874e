"""Reading past one machine: a Dask bag of files' tags, each partition read on its worker.

    import lorvane.dask
    from distributed import Client

    with Client("tcp://scheduler:8786"):
        bag = lorvane.dask.read_bag(paths, language="en")
        bag.map(json.dumps).to_textfiles("out/*.jsonl")

Each element is the object FileTags.to_dict() gives, the one `lorvane show --json-lines`
writes, or with as_json=True that line itself, made without Python objects for an index that
only stores it. A file that can't be read is its element's "error", never a failed task. Scheduling,
retries and a worker that dies (its partitions are run again) are Dask's.
"""

from __future__ import annotations

import atexit
import math
import os
import threading
from typing import Any, Iterable, Union

import dask.bag

import lorvane

__all__ = ["read_bag", "read_partition"]

# The files of a partition seldom make a tool's start worth paying for each: a worker process
# keeps one Reader per thread and language for all the partitions it reads.
_readers: dict[tuple[int, str, int], lorvane.Reader] = {}
_readers_lock = threading.Lock()

# Partitions of about this many files when the caller names no number: enough partitions to
# keep every worker busy to the end, few enough that scheduling costs nothing next to reading.
_FILES_PER_PARTITION = 100


@atexit.register
def _close_readers() -> None:
    # A worker that ends waits for its tools, so none is left behind and their time is its own.
    with _readers_lock:
        for reader in _readers.values():
            reader.close()
        _readers.clear()


def _reader(language: str, jobs: int) -> lorvane.Reader:
    key = (threading.get_ident(), language, jobs)
    with _readers_lock:
        reader = _readers.get(key)
        if reader is None:
            reader = _readers[key] = lorvane.Reader(language=language, jobs=jobs)
        return reader


def read_partition(paths: Iterable[str], language: str = "en", jobs: int = 1,
                   as_json: bool = False) -> list[Union[dict[str, Any], str]]:
    """The to_dict() objects (or to_json() lines) of the files of one partition, in order, read
    by this worker's Reader."""
    files = _reader(language, jobs).read_each(paths)
    return [file.to_json() for file in files] if as_json else [file.to_dict() for file in files]


def read_bag(
    paths: Union[Iterable[Union[str, os.PathLike[str]]], dask.bag.Bag],
    language: str = "en",
    npartitions: int | None = None,
    jobs: int = 1,
    as_json: bool = False,
) -> dask.bag.Bag:
    """A dask.bag.Bag of the files' to_dict() objects, in the paths' order.

    paths: a sequence of paths (str or os.PathLike), or a Bag of them (for more paths than fit
    in one process). npartitions: for a sequence, the number of partitions (default: one per
    about 100 files). language: as Reader's. jobs: tools side by side in each partition's
    Reader; 1 fits a single-threaded worker. as_json: elements are the files' to_json() lines
    instead of their to_dict() objects, for read_bag(paths, as_json=True).to_textfiles(...).
    """
    if not isinstance(paths, dask.bag.Bag):
        names = [os.fspath(path) for path in paths]
        if npartitions is None:
            npartitions = max(1, math.ceil(len(names) / _FILES_PER_PARTITION))
        paths = dask.bag.from_sequence(names, npartitions=max(1, min(npartitions, len(names) or 1)))
    return paths.map_partitions(read_partition, language=language, jobs=jobs, as_json=as_json)
