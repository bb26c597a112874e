#!/usr/bin/env python3
"""Compares `lorvane show --json` with ExifTool's own long JSON, row by row.

    tools/compare-show.py LORVANE [--lang de] FILE...

For every file it runs `exiftool -j -l -G0:1 -lang L FILE` and `LORVANE show --json --lang L
FILE`, and counts per file and in total: the tool's rows, the rows lorvane shows for them,
values and raw values equal to the tool's text (numbers read as text, never as floats; the
access time, which reading itself changes, is left out), titles present (never a bare tag name
where the tool has a description), and rows resolved to a catalogue stream. Rows that differ
are listed. Exit status 1 when any value differs or a row is missing.
"""
import json
import subprocess
import sys

IGNORED = {"File:System:FileAccessDate"}


def as_text(value):
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, list):
        return [as_text(element) for element in value]
    return value if isinstance(value, str) else json.dumps(value)


def read_exactly(text):
    return json.loads(text, parse_float=str, parse_int=str)


def main():
    arguments = sys.argv[1:]
    if len(arguments) < 2:
        sys.exit(__doc__)
    program, language = arguments.pop(0), "de"
    if arguments[0] == "--lang":
        language = arguments[1]
        arguments = arguments[2:]
    totals = dict.fromkeys(["rows", "shown", "values", "raw", "titles", "resolved"], 0)
    differences = []
    print(f"{'file':28} {'rows':>5} {'shown':>5} {'values':>6} {'raw':>5} {'titles':>6} {'resolved':>8}")
    for file in arguments:
        tool = read_exactly(subprocess.run(["exiftool", "-j", "-l", "-G0:1", "-lang", language, file],
                                           capture_output=True, text=True).stdout)[0]
        ours = json.loads(subprocess.run([program, "show", "--json", "--lang", language, file],
                                         capture_output=True, text=True).stdout)[0]
        shown = {tag["group"] + ":" + tag["name"]: tag for tag in ours["tags"]}
        counts = dict.fromkeys(totals, 0)
        for name, entry in tool.items():
            if name == "SourceFile":
                continue
            counts["rows"] += 1
            tag = shown.get(name)
            if tag is None:
                differences.append(f"{file}: {name} missing")
                continue
            counts["shown"] += 1
            value = as_text(entry["val"])
            raw = as_text(entry.get("num", entry["val"]))
            if name in IGNORED or tag["value"] == value:
                counts["values"] += 1
            else:
                differences.append(f"{file}: {name} value {tag['value']!r} where the tool printed {value!r}")
            if name in IGNORED or tag["raw"] == raw:
                counts["raw"] += 1
            else:
                differences.append(f"{file}: {name} raw {tag['raw']!r} where the tool gave {raw!r}")
            bare = tag["title"] == tag["name"] and entry.get("desc", tag["name"]) != tag["name"]
            if tag["title"] and not bare:
                counts["titles"] += 1
            else:
                differences.append(f"{file}: {name} title {tag['title']!r}")
            counts["resolved"] += tag["stream"] is not None
        extra = len(shown) - counts["shown"]
        if extra:
            differences.append(f"{file}: {extra} rows the tool didn't print")
        print(f"{file.rsplit('/', 1)[-1]:28} " + " ".join(f"{counts[k]:>{w}}" for k, w in
              zip(counts, (5, 5, 6, 5, 6, 8))))
        for key in totals:
            totals[key] += counts[key]
    print(f"{'total':28} " + " ".join(f"{totals[k]:>{w}}" for k, w in zip(totals, (5, 5, 6, 5, 6, 8))))
    unresolved = totals["shown"] - totals["resolved"]
    print(f"resolved to the catalogue: {totals['resolved']} of {totals['shown']} rows "
          f"({100 * totals['resolved'] / max(totals['shown'], 1):.1f}%), {unresolved} not")
    for difference in differences:
        print("  " + difference)
    sys.exit(1 if totals["values"] != totals["rows"] or totals["shown"] != totals["rows"] else 0)


if __name__ == "__main__":
    main()
