#!/usr/bin/env python3
"""Every C++ block of the README and of docs/ is compiled: a whole program of examples/, or lines
that stand letter for letter, in a row and indented alike, in one of them; every Python block
stands so in a program of examples/python/, which the Python package's tests run. The README's
first program is run too.

   docs_examples_check.py SOURCE_DIR FIRST_PROGRAM
"""
import pathlib
import re
import subprocess
import sys



def blocks(language, text):
    return re.findall(rf"^```{language}\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)


def stands_in(block, text):
    """Whether the block's lines are a run of the text's lines, all indented by the same."""
    lines, within = block.splitlines(), text.splitlines()
    for start in range(len(within) - len(lines) + 1):
        indent = within[start][: len(within[start]) - len(within[start].lstrip())]
        if all(within[start + k] == (indent + line if line else "") for k, line in
               enumerate(lines)):
            return True
    return False


def main():
    source = pathlib.Path(sys.argv[1])
    examples = {p: p.read_text(encoding="utf-8") for p in sorted(source.glob("examples/**/*.cpp"))}
    examples_of = {
        "cpp": examples.values(),
        "python": [p.read_text(encoding="utf-8")
                   for p in sorted(source.glob("examples/python/*.py"))],
    }
    documents = [source / "README.md", *sorted(source.glob("docs/*.md"))]
    failures = []
    for document in documents:
        text = document.read_text(encoding="utf-8")
        for language, programs in examples_of.items():
            for number, block in enumerate(blocks(language, text), 1):
                if not any(stands_in(block, program) for program in programs):
                    failures.append(f"{document.relative_to(source)}: {language} block {number}"
                                    f" stands in no example:\n{block}")
    for failure in failures:
        print(failure)

    first = blocks("cpp", (source / "README.md").read_text(encoding="utf-8"))[0]
    if first != examples.get(source / "examples" / "read_files.cpp"):
        failures.append("the README's first program is no longer examples/read_files.cpp")
        print(failures[-1])
    shown = subprocess.run([sys.argv[2], "tests/data/sample.jpg"], cwd=source, text=True,
                           capture_output=True, check=False)
    print(shown.stdout, shown.stderr, sep="")
    if shown.returncode != 0 or "Orientation: Rotate 90 CW" not in shown.stdout:
        failures.append("the README's first program doesn't show the sample's orientation")
        print(failures[-1])
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
