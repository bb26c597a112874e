#!/usr/bin/python3
"""Indexes a folder tree's metadata as JSON Lines, read on a Dask cluster.

    index_archive.py FOLDER OUTPUT.jsonl [--scheduler ADDRESS] [--workers N] [--language L]

Every file under FOLDER is read by lorvane on the cluster's workers: a LocalCluster of N
single-threaded worker processes on this machine by default, or the running scheduler at
ADDRESS ("tcp://host:8786"). OUTPUT gets one JSON object per file, in the tree's sorted order,
as `lorvane show --json-lines` writes it; a file that can't be read is its object's "error".
Dask shows the progress on standard error.
"""

import argparse
import json
import os
import sys

from distributed import Client, LocalCluster, progress

import lorvane.dask


def files_under(folder):
    for root, folders, names in os.walk(folder):
        folders.sort()
        for name in sorted(names):
            yield os.path.join(root, name)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder")
    parser.add_argument("output")
    parser.add_argument("--scheduler", help="address of a running Dask scheduler")
    parser.add_argument("--workers", type=int, default=os.cpu_count(),
                        help="worker processes of the LocalCluster (default: one per core)")
    parser.add_argument("--language", default="en", help=f"one of {', '.join(lorvane.languages())}")
    options = parser.parse_args()

    if options.scheduler:
        cluster = None
        client = Client(options.scheduler)
    else:
        cluster = LocalCluster(n_workers=options.workers, threads_per_worker=1, processes=True,
                               dashboard_address=None)
        client = Client(cluster)
    with client:
        bag = lorvane.dask.read_bag(list(files_under(options.folder)), language=options.language)
        # One future per partition: each is written as soon as it and those before it are done.
        partitions = client.compute(bag.to_delayed())
        progress(partitions)
        failed = 0
        with open(options.output, "w", encoding="utf-8") as out:
            for partition in partitions:
                for file in partition.result():
                    failed += "error" in file
                    out.write(json.dumps(file, ensure_ascii=False) + "\n")
                partition.release()
        print(f"\n{failed} of the files could not be read" if failed else "", file=sys.stderr)
    if cluster is not None:
        cluster.close()
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
