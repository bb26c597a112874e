"""Checks the merged catalogue against every total the catalogue states about itself, every
value and label its rows show, and every translated text they give.

Each check prints one line; a failed check stops the generator.
"""
import re
from collections import Counter

from merge import ALTERNATIVE_SEPARATOR, byte_order
from vocabulary import CODES, FLAGS, NAMES, TRANSLATED, safe_value

class CheckFailed(Exception):
    pass


class Checker:
    def __init__(self, out):
        self.out = out
        self.failures = []

    def check(self, name, measured, stated):
        if measured == stated:
            self.out(f"ok   {name}: {_show(measured)}")
            return
        self.out(f"FAIL {name}: {_show(measured)}, stated {_show(stated)}")
        self.failures.append(name)

    def finish(self):
        if self.failures:
            raise CheckFailed(f"{len(self.failures)} checks failed: {', '.join(self.failures)}")


def _show(value):
    if isinstance(value, dict):
        return " ".join(f"{k}={v}" for k, v in value.items())
    if isinstance(value, (tuple, list)):
        return " ".join(str(v) for v in value)
    return str(value)


TITLE_RULES = [
    (re.compile(r"_"), " "),
    (re.compile(r"(?<=[a-z])(?=[A-Z0-9])"), " "),
    (re.compile(r"(?<=[A-Z])(?=[A-Z][a-z])"), " "),
    (re.compile(r"(?<=[0-9])(?=[A-Z])"), " "),
]


def title_by_rule(key):
    title = key
    for pattern, replacement in TITLE_RULES:
        title = pattern.sub(replacement, title)
    return title


def choice_order(values):
    if all(re.fullmatch(r"-?[0-9]+", v) for v in values):
        numbers = [int(v) for v in values]
        if numbers == sorted(numbers):
            return "numeric"
    if values == byte_order(values):
        return "bytes"
    return "neither"


def _flag_counts(tags, flag):
    return Counter(tag.stream for tag in tags if tag.has(flag))


def _top(counter, names):
    return {name: counter[name] for name in names}


def run_checks(catalogue, stated, out=print):
    c = Checker(out)
    streams = catalogue.streams
    tags = catalogue.tags()
    names = [s.name for s in streams]

    # Streams and tags.
    c.check("streams with tags", len(streams), stated["streams_with_tags"])
    c.check("streams in byte order", names == byte_order(names), True)
    c.check("streams in the stated order", names, list(stated["streams"]))
    c.check("maker streams", len(catalogue.maker_streams), 45)
    c.check("streams without tags", len(catalogue.streams_without_tags), 7)
    c.check("tag-less streams among maker streams",
            sum(name in catalogue.maker_streams for name in catalogue.streams_without_tags), 6)
    for stream in streams:
        want = stated["streams"][stream.name]
        got = {"tags": len(stream.tags),
               "writable": sum(t.has("W") for t in stream.tags),
               "with_choices": sum(bool(t.choices) for t in stream.tags),
               "values": sum(len(t.choices) for t in stream.tags)}
        c.check(f"stream {stream.name}", got, {k: want[k] for k in got})
    c.check("tags in all", len(tags), stated["tags"])
    c.check("indexes run from 0 without gaps",
            all([t.index for t in s.tags] == list(range(len(s.tags))) for s in streams), True)
    c.check("keys are letters, digits, '_' and '-'",
            all(re.fullmatch(r"[A-Za-z0-9_-]+", t.key) for t in tags), True)
    c.check("safe names unique in each stream",
            all(len({safe_value(t.key) for t in s.tags}) == len(s.tags) for s in streams), True)
    constants = {"item" + safe_value(t.stream) + safe_value(t.key) for t in tags}
    c.check("item constant names unique in the catalogue", len(constants), len(tags))
    streams_of_key = Counter(t.key for t in tags)
    c.check("distinct keys", len(streams_of_key), stated["distinct_keys"])
    c.check("keys in several streams", sum(n > 1 for n in streams_of_key.values()),
            stated["keys_in_several_streams"])
    c.check("streams of ImageWidth, ImageHeight",
            {k: streams_of_key[k] for k in stated["streams_of_key"]}, stated["streams_of_key"])
    keys_of = {s.name: {t.key for t in s.tags} for s in streams}
    for shared in stated["keys_shared"]:
        own, other = keys_of[shared["stream"]], keys_of[shared["also_in"]]
        c.check(f"keys of {shared['stream']} also in {shared['also_in']}",
                (len(own), len(own & other)), (shared["keys"], shared["shared"]))

    # Flags, counts and types.
    flags = stated["flags"]
    for flag, name in FLAGS.items():
        counts = _flag_counts(tags, flag)
        want = flags[name]
        c.check(f"{name} tags", sum(counts.values()), want["total"])
        by_stream = want.get("streams") or want.get("top_streams")
        exact = "streams" in want
        got = dict(counts) if exact else _top(counts, by_stream)
        c.check(f"{name} tags by stream", got, by_stream)
        if "writable" in want:
            c.check(f"{name} tags that are writable",
                    sum(t.has(flag) and t.has("W") for t in tags), want["writable"])
        if "types" in want:
            types = Counter(t.type for t in tags if t.has(flag))
            c.check(f"{name} tags by type", _top(types, want["types"]), want["types"])
    count = stated["count"]
    counts = Counter(t.count for t in tags)
    c.check("count 0, -1, positive",
            (counts[0], counts[-1], sum(n for v, n in counts.items() if v > 0)),
            (count["zero"], count["minus_one"], count["positive"]))
    c.check("frequent positive counts", {k: counts[int(k)] for k in count["frequent_positive"]},
            count["frequent_positive"])
    largest = max(tags, key=lambda t: t.count)
    c.check("largest count", {"value": largest.count, "tag": f"{largest.stream}:{largest.key}"},
            count["largest"])
    c.check("count -1 by stream", dict(Counter(t.stream for t in tags if t.count == -1)),
            count["minus_one_streams"])
    c.check("string tags with a positive count",
            sum(t.type == "string" and t.count > 0 for t in tags), count["string_with_positive_count"])
    c.check("types", dict(Counter(t.type for t in tags).most_common()), stated["types"])

    # Choices.
    choices = stated["choices"]
    with_choices = [t for t in tags if t.choices]
    c.check("tags with choices, values",
            (len(with_choices), sum(len(t.choices) for t in tags)), (choices["tags"], choices["values"]))
    c.check("choices per tag as the rows state them",
            sum(len(t.choices) == t.stated_choices for t in tags), len(tags))
    c.check("rows with a listing entry", sum(t.listed for t in tags), len(tags))
    c.check("listing choices agree with the rows' counts",
            sum(len(t.listed_values) == t.stated_choices for t in tags if t.listed),
            sum(t.listed for t in tags))
    sampled = [t for t in with_choices if t.shown]
    shown = [(t, value, label) for t in sampled for value, label in t.shown]
    c.check("values and labels the rows show, as the listing gives them",
            (len(shown), sum(t.listed_labels.get(value) == label for t, value, label in shown),
             sum(_is_subsequence([v for v, _ in t.shown], t.listed_values) for t in sampled)),
            (4639, len(shown), len(sampled)))
    full = [t for t in sampled if t.shown_complete]
    c.check("full lists the rows show, in the listing's order",
            (len(full), sum(t.listed_values == [v for v, _ in t.shown] for t in full)), (1007, 1007))
    leading = [t for t in sampled if not t.shown_complete and not t.shown_sampled]
    samples = [t for t in sampled if t.shown_sampled]
    c.check("lists shown in part: leading values lead, samples stand in order",
            (sum(t.choices[:len(t.shown)] == [v for v, _ in t.shown] for t in leading),
             sum(_is_subsequence([v for v, _ in t.shown], t.choices) for t in samples)),
            (len(leading), len(samples)))
    distinct = sum(len(set(t.choices)) for t in tags)
    c.check("distinct values", distinct, choices["distinct_values"])
    c.check("longest list", max(len(t.choices) for t in tags), choices["longest"])
    by_name = {f"{t.stream}:{t.key}": len(t.choices) for t in tags}
    c.check("largest lists", {k: by_name[k] for k in choices["largest_lists"]}, choices["largest_lists"])
    tables = {}
    for t in with_choices:
        english = streams_by_name(catalogue)[t.stream].tables["en"]
        table = tuple((v, english[f"{t.stream}:{t.key}:{v}"]) for v in t.choices)
        tables.setdefault(table, []).append(t)
    c.check("distinct value tables", len(tables), choices["distinct_tables"])
    all_labels = [english_label(catalogue, t, v) for t in tags for v in dict.fromkeys(t.choices)]
    c.check("labels, distinct label texts", (len(all_labels), len(set(all_labels))),
            (choices["distinct_values"], choices["distinct_labels"]))
    orders = Counter(choice_order(t.choices) for t in with_choices)
    c.check("choice lists ascending numeric, byte order, neither",
            (orders["numeric"], orders["bytes"], orders["neither"]),
            tuple(choices["order"][k] for k in ("ascending_numeric", "byte_order", "neither")))
    repeats = [t for t in with_choices if len(set(t.choices)) < len(t.choices)]
    c.check("lists with repeats, repeats",
            (len(repeats), sum(len(t.choices) - len(set(t.choices)) for t in repeats)),
            (choices["lists_with_repeats"], choices["repeats"]))

    # Shared value tables.
    c.check("shared value tables", len(catalogue.shared_tables), len(stated["shared_table_tags"]))
    for name, pairs in catalogue.shared_tables.items():
        users = tables.get(tuple(pairs), [])
        marked = [t for t in tags if t.shared_table == name]
        c.check(f"shared table {name}: tags, of them marked in the rows, listing agrees",
                (len(users), all(t in users for t in marked),
                 all(t.listed_values == t.choices for t in marked)),
                (stated["shared_table_tags"][name], True, True))
    c.check("tags with a shared table",
            sum(len(tables.get(tuple(p), [])) for p in catalogue.shared_tables.values()),
            stated["shared_tables_tags_total"])

    # Titles.
    off_rule = sum(t.title != title_by_rule(t.key) for t in tags)
    c.check("titles by rule, off it", (len(tags) - off_rule, off_rule),
            (stated["titles_by_rule"], stated["titles_off_rule"]))
    c.check("unlisted rows titled by rule",
            all(t.title == title_by_rule(t.key) for t in tags if not t.listed), True)

    # String tables.
    for stream in streams:
        got = {lang: len(stream.tables.get(lang, {})) for lang in CODES}
        c.check(f"string entries {stream.name}", got, stream.stated_entries)
    strings = stated["strings"]
    for lang in CODES:
        totals = catalogue.language_totals[lang]
        want = (totals["tables"], totals["entries"], totals["titles"], totals["labels"])
        tables_of = [s.tables[lang] for s in streams if lang in s.tables]
        titles = sum(sum(key.count(":") == 1 for key in table) for table in tables_of)
        entries = sum(len(table) for table in tables_of)
        c.check(f"{NAMES[lang]} tables, entries, titles, labels",
                (len(tables_of), entries, titles, entries - titles), want)
    c.check("string tables in all", sum(len(s.tables) for s in streams), strings["tables"])
    c.check("string entries in all", sum(len(t) for s in streams for t in s.tables.values()),
            strings["entries"])
    for lang in TRANSLATED:
        article = "an" if NAMES[lang][0] in "AEIOU" else "a"
        c.check(f"streams without {article} {NAMES[lang]} table",
                [s.name for s in streams if lang not in s.tables], strings["streams_without_table"][lang])
    c.check("streams without an English table", [s.name for s in streams if "en" not in s.tables], [])
    english = [(key, text) for s in streams for key, text in s.tables["en"].items()]
    alternatives = Counter(key.count(":") == 1 for key, text in english if ALTERNATIVE_SEPARATOR in text)
    c.check("English labels, titles with alternatives", (alternatives[False], alternatives[True]),
            (strings["english_alternatives"]["labels"], strings["english_alternatives"]["titles"]))
    c.check("translations that repeat the English text",
            sum(text == s.tables["en"].get(key) for s in streams for lang in TRANSLATED
                for key, text in s.tables.get(lang, {}).items()), 0)
    c.check("translated keys outside the English table",
            sum(key not in s.tables["en"] for s in streams for lang in TRANSLATED
                for key in s.tables.get(lang, {})), 0)
    samples = [(sample["text_key"], lang, text) for sample in catalogue.string_samples
               for lang, text in sample["texts"].items()]
    c.check("translated samples, their texts in seven languages as a process shows them",
            (len(catalogue.string_samples),
             sum(localized(catalogue, key, lang) == text for key, lang, text in samples)),
            (29, 29 * len(CODES)))
    c.check("English tables hold one title per tag, one label per distinct value",
            all(len(s.tables["en"]) == len(s.tags) + sum(len(set(t.choices)) for t in s.tags)
                for s in streams), True)
    c.finish()


def _is_subsequence(part, whole):
    it = iter(whole)
    return all(value in it for value in part)


def streams_by_name(catalogue):
    if not hasattr(catalogue, "_by_name"):
        catalogue._by_name = {s.name: s for s in catalogue.streams}
    return catalogue._by_name


def english_label(catalogue, tag, value):
    return streams_by_name(catalogue)[tag.stream].tables["en"][f"{tag.stream}:{tag.key}:{value}"]


def localized(catalogue, text_key, lang):
    """The text that a process in this language shows for the key: its own, else English."""
    tables = streams_by_name(catalogue)[text_key.split(":", 1)[0]].tables
    return tables.get(lang, {}).get(text_key, tables["en"].get(text_key))
