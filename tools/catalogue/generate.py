#!/usr/bin/env python3
"""Generates the tag catalogue's C++ sources from the rows and ExifTool's listing.

    tools/catalogue/generate.py [--output ROOT] [--check-only]

Reads data/catalogue/ (rows.json, exiftool-12.70-listx.xml.xz, stated-totals.json), merges
and checks the catalogue (one line per check; a failed check stops it), then writes
src/generated/*.cpp and include/lorvane/generated/*.hpp under ROOT (the repository by default).
"""
import argparse
import json
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

import checks  # noqa: E402
import listing  # noqa: E402
import merge  # noqa: E402

REPOSITORY = Path(__file__).resolve().parents[2]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--output", type=Path, default=REPOSITORY,
                        help="root under which src/generated and include/lorvane/generated go")
    parser.add_argument("--check-only", action="store_true", help="check the data, write nothing")
    arguments = parser.parse_args()

    data = REPOSITORY / "data" / "catalogue"
    rows = json.loads((data / "rows.json").read_text(encoding="utf-8"))
    stated = json.loads((data / "stated-totals.json").read_text(encoding="utf-8"))
    entries = listing.read_listing(data / "exiftool-12.70-listx.xml.xz")
    catalogue = merge.build_catalogue(rows, entries)
    try:
        checks.run_checks(catalogue, stated)
    except checks.CheckFailed as failure:
        print(f"error: {failure}", file=sys.stderr)
        return 1
    if not arguments.check_only:
        import emit_cpp
        written = emit_cpp.write_catalogue(catalogue, arguments.output)
        print(f"wrote {len(written)} files under {arguments.output}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
