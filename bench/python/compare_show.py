#!/usr/bin/python3
"""The Python package against `lorvane show --json-lines` over the same files: CPU time of the
process tree (each command's own and that of every process it waited for: the tools, Dask's
workers) and wall time, as medians of alternating pairs, with the spread of the pairs' ratios.

    bench/python/compare_show.py FOLDER [--pairs N] [--build DIR] [--jobs J] [--dask]

Every file of FOLDER is read (tools/make-many-files.py makes such a folder). Without --dask:
Reader(jobs=J).read_each, each file's to_dict() written as a JSON line, against
`lorvane show --json-lines --jobs J`. With --dask: lorvane.dask.read_bag on a LocalCluster of J
single-threaded worker processes (its start and end counted), against `--jobs J`. Both write to
/dev/null. BUILD is the build tree (default build/default), whose package is used uninstalled.
"""

import argparse
import os
import pathlib
import resource
import statistics
import subprocess
import sys
import time

READ_EACH = """
import json, sys
import lorvane
paths = sys.argv[2:]
with lorvane.Reader(language="en", jobs=int(sys.argv[1])) as reader, open("/dev/null", "w") as out:
    for file in reader.read_each(paths):
        out.write(json.dumps(file.to_dict(), ensure_ascii=False) + "\\n")
"""

DASK = """
import json, sys
from distributed import Client, LocalCluster
import lorvane.dask
paths = sys.argv[2:]
if __name__ == "__main__":
    with LocalCluster(n_workers=int(sys.argv[1]), threads_per_worker=1, processes=True,
                      dashboard_address=None) as cluster, Client(cluster) as client:
        with open("/dev/null", "w") as out:
            for partition in client.compute(lorvane.dask.read_bag(paths).to_delayed()):
                for file in partition.result():
                    out.write(json.dumps(file, ensure_ascii=False) + "\\n")
"""


def measured(command, environment):
    """(CPU seconds of the process tree, wall seconds) of one run."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    start = time.perf_counter()
    subprocess.run(command, env=environment, check=True, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)
    wall = time.perf_counter() - start
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return (after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime, wall)


def spread(ratios):
    quartiles = statistics.quantiles(ratios, n=4)
    return f"median {statistics.median(ratios):.3f}, quartiles {quartiles[0]:.3f}-{quartiles[2]:.3f}, range {min(ratios):.3f}-{max(ratios):.3f}"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder")
    parser.add_argument("--pairs", type=int, default=10)
    parser.add_argument("--build", default="build/default")
    parser.add_argument("--jobs", type=int, default=1)
    parser.add_argument("--dask", action="store_true")
    options = parser.parse_args()

    build = pathlib.Path(options.build).resolve()
    paths = sorted(str(path) for path in pathlib.Path(options.folder).resolve().iterdir() if path.is_file())
    environment = dict(os.environ, PYTHONPATH=str(build / "python"), LANGUAGE="en")
    show = [str(build / "apps" / "lorvane"), "show", "--lang", "en", "--json-lines", "--jobs", str(options.jobs), *paths]
    python = ["/usr/bin/python3", "-c", DASK if options.dask else READ_EACH, str(options.jobs), *paths]
    name = f"dask {options.jobs} workers" if options.dask else f"read_each jobs={options.jobs}"

    measured(show, environment)  # the page cache and Perl's modules warm
    measured(python, environment)
    figures = {"show": [], "python": []}
    for pair in range(options.pairs):
        # Alternating which goes first, so neither always runs on the warmer machine.
        order = ["show", "python"] if pair % 2 == 0 else ["python", "show"]
        for which in order:
            figures[which].append(measured(show if which == "show" else python, environment))
    print(f"{len(paths)} files, {options.pairs} alternating pairs")
    for index, kind in ((0, "CPU (process tree)"), (1, "wall")):
        show_times = [figure[index] for figure in figures["show"]]
        python_times = [figure[index] for figure in figures["python"]]
        ratios = [p / s for p, s in zip(python_times, show_times)]
        print(f"{kind}: show --jobs {options.jobs} median {statistics.median(show_times):.2f} s, "
              f"{name} median {statistics.median(python_times):.2f} s; "
              f"ratio of medians {statistics.median(python_times) / statistics.median(show_times):.3f}; "
              f"pair ratios {spread(ratios)}")


if __name__ == "__main__":
    sys.exit(main())
