#!/usr/bin/env python3
"""Generates the tag catalogue's C++ sources from the rows and ExifTool's listing.

    tools/catalogue/generate.py              write the sources into the repository
    tools/catalogue/generate.py --verify     generate into a temporary folder and fail if the
                                             sources in the repository differ from it
    tools/catalogue/generate.py --check-only check the data, write nothing

Reads data/catalogue/ (rows.json, exiftool-12.70-listx.xml.xz, stated-totals.json), merges
and checks the catalogue (one line per check; a failed check stops it), then writes
src/catalogue/generated/*.cpp and include/lorvane/generated/*.hpp. Standard library only.
"""
import argparse
import json
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

import checks  # noqa: E402
import emit_cpp  # noqa: E402
import listing  # noqa: E402
import merge  # noqa: E402

REPOSITORY = Path(__file__).resolve().parents[2]


def load_catalogue():
    data = REPOSITORY / "data" / "catalogue"
    rows = json.loads((data / "rows.json").read_text(encoding="utf-8"))
    stated = json.loads((data / "stated-totals.json").read_text(encoding="utf-8"))
    entries = listing.read_listing(data / "exiftool-12.70-listx.xml.xz")
    return merge.build_catalogue(rows, entries), stated


def verify(catalogue):
    """0 when the checked-in sources are exactly what the generator makes now."""
    with tempfile.TemporaryDirectory() as folder:
        written = emit_cpp.write_catalogue(catalogue, folder)
        fresh = {relative: (Path(folder) / relative).read_text(encoding="utf-8") for relative in written}
    changed = emit_cpp.differences(fresh, REPOSITORY)
    for relative in changed:
        print(f"differs from a fresh generation: {relative}", file=sys.stderr)
    if changed:
        print("run tools/catalogue/generate.py and commit its output", file=sys.stderr)
        return 1
    print(f"the {len(fresh)} generated files are current")
    return 0


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    mode = parser.add_mutually_exclusive_group()
    mode.add_argument("--verify", action="store_true", help="compare with the checked-in sources")
    mode.add_argument("--check-only", action="store_true", help="check the data, write nothing")
    arguments = parser.parse_args()

    catalogue, stated = load_catalogue()
    try:
        checks.run_checks(catalogue, stated)
    except checks.CheckFailed as failure:
        print(f"error: {failure}", file=sys.stderr)
        return 1
    if arguments.check_only:
        return 0
    if arguments.verify:
        return verify(catalogue)
    written = emit_cpp.write_catalogue(catalogue, REPOSITORY)
    print(f"wrote {len(written)} files")
    return 0


if __name__ == "__main__":
    sys.exit(main())
