#!/usr/bin/python3
"""The Python package against `lorvane show --json-lines` over the same files: CPU time of the
process tree (each command's own and that of every process under it: the tools, Dask's
scheduler and workers) and wall time, as medians of alternating pairs, with the spread of the
pairs' ratios.

    bench/python/compare_show.py FOLDER [--pairs N] [--build DIR] [--jobs J]
                                 [--consumer dict|json] [--dask | --dask-cold]
                                 [--dask-output gather|files] [--dask-profiler on|off]

Every file of FOLDER is read (tools/make-many-files.py makes such a folder), against
`lorvane show --json-lines --jobs J`; everything writes to /dev/null.
- By default: a Python program with Reader(jobs=J).read_each, writing each file as a JSON line:
  json.dumps(file.to_dict()) (--consumer dict) or file.to_json() (--consumer json).
- --dask: lorvane.dask.read_bag on a LocalCluster of J single-threaded worker processes started
  once and warmed (lorvane imported, its tools running), as a cluster that indexes an archive
  is. --dask-output gather (the default): the results are gathered here and written as JSON
  lines; files: each worker writes its partitions' JSON lines itself
  (read_bag(paths, as_json=True).to_textfiles), as an archive's index is written. --dask-profiler off:
  the workers' statistical profiler (Dask's distributed.worker.profile.enabled, on by default,
  sampling each worker's threads every 10 ms) is off, as a cluster that only indexes may run.
- --dask-cold: the same in a program of its own that starts and ends the cluster each time.
BUILD is the build tree (default build/default), whose package is used uninstalled.
"""

import argparse
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

READ_EACH = """
import json, sys
import lorvane
line = (lambda file: json.dumps(file.to_dict(), ensure_ascii=False)) if sys.argv[2] == "dict" else (lambda file: file.to_json())
with lorvane.Reader(language="en", jobs=int(sys.argv[1])) as reader, open("/dev/null", "w") as out:
    for file in reader.read_each(sys.argv[3:]):
        out.write(line(file) + "\\n")
"""

DASK_COLD = """
import json, sys
from distributed import Client, LocalCluster
import lorvane.dask
if __name__ == "__main__":
    with LocalCluster(n_workers=int(sys.argv[1]), threads_per_worker=1, processes=True,
                      dashboard_address=None) as cluster, Client(cluster) as client:
        with open("/dev/null", "w") as out:
            for partition in client.compute(lorvane.dask.read_bag(sys.argv[3:]).to_delayed()):
                for file in partition.result():
                    out.write(json.dumps(file, ensure_ascii=False) + "\\n")
"""

TICKS = os.sysconf("SC_CLK_TCK")


def tree_cpu():
    """CPU seconds of this process and every process under it: the live ones' own and what
    each has collected of its children that ended."""
    parents = {}
    times = {}
    for entry in os.listdir("/proc"):
        if not entry.isdigit():
            continue
        try:
            with open(f"/proc/{entry}/stat") as stat:
                fields = stat.read().rsplit(")", 1)[1].split()
        except OSError:
            continue
        parents[int(entry)] = int(fields[1])
        times[int(entry)] = sum(int(value) for value in fields[11:15])
    total = 0
    for pid, ticks in times.items():
        ancestor = pid
        while ancestor not in (0, 1) and ancestor != os.getpid():
            ancestor = parents.get(ancestor, 0)
        if ancestor == os.getpid():
            total += ticks
    return total / TICKS


def measured(run):
    """(CPU seconds of the process tree, wall seconds) of one run."""
    cpu = tree_cpu()
    start = time.perf_counter()
    run()
    wall = time.perf_counter() - start
    return (tree_cpu() - cpu, wall)


def spread(ratios):
    quartiles = statistics.quantiles(ratios, n=4)
    return (f"median {statistics.median(ratios):.3f}, quartiles {quartiles[0]:.3f}-{quartiles[2]:.3f}, "
            f"range {min(ratios):.3f}-{max(ratios):.3f}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder")
    parser.add_argument("--pairs", type=int, default=10)
    parser.add_argument("--build", default="build/default")
    parser.add_argument("--jobs", type=int, default=1)
    parser.add_argument("--consumer", choices=["dict", "json"], default="dict")
    parser.add_argument("--dask", action="store_true")
    parser.add_argument("--dask-cold", action="store_true")
    parser.add_argument("--dask-output", choices=["gather", "files"], default="gather")
    parser.add_argument("--dask-profiler", choices=["on", "off"], default="on")
    options = parser.parse_args()

    build = pathlib.Path(options.build).resolve()
    paths = sorted(str(path) for path in pathlib.Path(options.folder).resolve().iterdir() if path.is_file())
    os.environ.update(PYTHONPATH=str(build / "python"), LANGUAGE="en")
    sys.path.insert(0, str(build / "python"))

    def command(arguments):
        return lambda: subprocess.run(arguments, check=True, stdout=subprocess.DEVNULL,
                                      stderr=subprocess.DEVNULL)

    show = command([str(build / "apps" / "lorvane"), "show", "--lang", "en", "--json-lines",
                    "--jobs", str(options.jobs), *paths])
    cluster = client = None
    if options.dask:
        import json

        import dask
        from distributed import Client, LocalCluster

        import lorvane.dask
        dask.config.set({"distributed.worker.profile.enabled": options.dask_profiler == "on"})
        cluster = LocalCluster(n_workers=options.jobs, threads_per_worker=1, processes=True,
                               dashboard_address=None)
        client = Client(cluster)

        def gathered():
            with open("/dev/null", "w") as out:
                for partition in client.compute(lorvane.dask.read_bag(paths).to_delayed()):
                    for file in partition.result():
                        out.write(json.dumps(file, ensure_ascii=False) + "\n")

        def written_by_workers():
            with tempfile.TemporaryDirectory() as folder:
                lorvane.dask.read_bag(paths, as_json=True).to_textfiles(os.path.join(folder, "*.jsonl"))

        python = gathered if options.dask_output == "gather" else written_by_workers
        name = (f"read_bag on a warm LocalCluster of {options.jobs} workers, "
                f"{'gathered here' if options.dask_output == 'gather' else 'JSON lines written by the workers'}, "
                f"Dask's profiler {options.dask_profiler}")
    elif options.dask_cold:
        python = command(["/usr/bin/python3", "-c", DASK_COLD, str(options.jobs), "", *paths])
        name = f"read_bag on a LocalCluster of {options.jobs} workers started and ended each time"
    else:
        python = command(["/usr/bin/python3", "-c", READ_EACH, str(options.jobs), options.consumer, *paths])
        name = f"read_each jobs={options.jobs} ({options.consumer})"

    measured(show)  # the page cache and Perl's modules warm, and a cluster's workers
    measured(python)
    figures = {"show": [], "python": []}
    for pair in range(options.pairs):
        # Alternating which goes first, so neither always runs on the warmer machine.
        for which in (["show", "python"] if pair % 2 == 0 else ["python", "show"]):
            figures[which].append(measured(show if which == "show" else python))
    if client is not None:
        client.close()
        cluster.close()
    print(f"{name}: {len(paths)} files, {options.pairs} alternating pairs")
    for index, kind in ((0, "CPU (process tree)"), (1, "wall")):
        show_times = [figure[index] for figure in figures["show"]]
        python_times = [figure[index] for figure in figures["python"]]
        ratios = [p / s for p, s in zip(python_times, show_times)]
        print(f"  {kind}: show --jobs {options.jobs} median {statistics.median(show_times):.2f} s, "
              f"Python median {statistics.median(python_times):.2f} s; ratio of medians "
              f"{statistics.median(python_times) / statistics.median(show_times):.3f}; pair ratios {spread(ratios)}")


if __name__ == "__main__":
    sys.exit(main())
