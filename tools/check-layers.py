#!/usr/bin/env python3
"""Fails when a source or public header includes one from a layer above its own.

The library's sources lie in src/LAYER/; a public header <lorvane/NAME.hpp> belongs to the layer
of its source src/LAYER/NAME.cpp, or to the one HEADER_ONLY names. The two halves, the runs
(input, run) and the tags (tag, catalogue), never include each other; the tag model reaches the
run input only for the language of its texts. The reading layer joins them.

Usage: check-layers.py [ROOT]   (ROOT defaults to the folder above tools/)
"""
import pathlib
import re
import sys

# Each layer and the layers it may include, itself always allowed.
BENEATH = {
    "platform": set(),
    "text": {"platform"},
    "input": {"text", "platform"},
    "run": {"input", "text", "platform"},
    "tag": {"text", "platform"},
    "catalogue": {"tag", "text", "platform"},
    "read": {"catalogue", "tag", "run", "input", "text", "platform"},
}
# The one header of the run input that the tag model may use: the language of its texts.
SHARED_ACROSS_HALVES = {"lorvane/et_language.hpp"}
# Public headers without a source of the same name.
HEADER_ONLY = {
    "version.hpp": "platform",
    "string_constinit.hpp": "text",
    "et_input.hpp": "input",
    "et_error.hpp": "run",
    "tag_key.hpp": "tag",
    "tag_stream.hpp": "tag",
    "file_tags.hpp": "read",
    "lorvane.hpp": "read",
    "json.hpp": "read",
}
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def layer_of_public(root, name):
    """The layer of a public header's path below include/ ("lorvane/x.hpp"), or None."""
    if name.startswith("lorvane/generated/"):
        return "tag"  # the generated names of the tag model's constants
    stem = name.removeprefix("lorvane/")
    if stem in HEADER_ONLY:
        return HEADER_ONLY[stem]
    for layer in BENEATH:
        if (root / "src" / layer / stem).with_suffix(".cpp").exists():
            return layer
    return None


def check(root):
    problems = []
    files = [(p, p.relative_to(root / "src").parts[0]) for p in (root / "src").rglob("*")
             if p.suffix in (".cpp", ".hpp") and p.parent != root / "src"]
    for header in (root / "include" / "lorvane").rglob("*.hpp"):
        name = header.relative_to(root / "include").as_posix()
        layer = layer_of_public(root, name)
        if layer is None:
            problems.append(f"{name}: no layer known (add its source or a HEADER_ONLY entry)")
        else:
            files.append((header, layer))
    for path, layer in files:
        if layer not in BENEATH:
            problems.append(f"{path.relative_to(root)}: folder '{layer}' is no layer")
            continue
        allowed = BENEATH[layer] | {layer}
        for quote, target in INCLUDE.findall(path.read_text(encoding="utf-8")):
            if quote == '"':
                target_layer = target.split("/")[0]
            elif target.startswith("lorvane/"):
                target_layer = layer_of_public(root, target)
            else:
                continue  # the standard library and the dependencies
            if target_layer in allowed or (quote == "<" and target in SHARED_ACROSS_HALVES):
                continue
            problems.append(f"{path.relative_to(root)} ({layer}) includes {target}"
                            f" ({target_layer or 'no layer'})")
    return problems


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parents[1])
    problems = check(root.resolve())
    for problem in problems:
        print(problem)
    if problems:
        print(f"{len(problems)} include(s) cross the layers the wrong way")
        return 1
    print("every include keeps to its layer or those beneath it")
    return 0


if __name__ == "__main__":
    sys.exit(main())
