"""Merges the catalogue's rows with ExifTool's listing into the finished catalogue.

The rows decide keys, order, types, counts, flags, English titles and every choice value and
label they show (with the order of a full list they show). The listing fills in the rest: the
choices the rows only sample, their English labels and all translations.
"""
from dataclasses import dataclass, field

from vocabulary import CODES, TRANSLATED

# Labels and titles that differ between listing entries of one row are kept side by side.
ALTERNATIVE_SEPARATOR = " |\u00a0"

# Tag-level groups of maker-note tables that don't name a stream of their own.
MAKER_GROUPS_KEEPING_TABLE = {"MakerNotes", "ExifIFD"}

# Listing entries that the rows name differently: (table, tag id, the ids of the entries
# before and after it) -> the rows' key. The catalogue's "VesperineSize" of Meta and QuickTime
# is the listing's 'idat' between 'free' and 'iloc' in QuickTime::Meta (which stands in both).
RENAMED_ENTRIES = {("QuickTime::Meta", "idat", "free", "iloc"): "VesperineSize"}


class MergeError(Exception):
    pass


@dataclass
class Tag:
    stream: str
    index: int
    key: str
    type: str
    count: int
    flags: str
    title: str
    choices: list = field(default_factory=list)   # value strings in catalogue order
    shared_table: str | None = None
    listed: bool = True                           # the listing has an entry for it
    listed_values: list = field(default_factory=list)   # the choices the listing gives
    shown: list = field(default_factory=list)     # (value, label) pairs the rows show
    shown_complete: bool = True                   # the rows show the whole list
    shown_sampled: bool = False                   # a part that is a sample, not the leading values
    stated_choices: int = 0                       # the number of choices the rows state
    listed_labels: dict = field(default_factory=dict)   # English labels the listing gives

    def has(self, flag):
        return flag in self.flags


@dataclass
class Stream:
    name: str
    tags: list
    stated_entries: dict                          # {lang: entries} as the rows state them
    tables: dict = field(default_factory=dict)    # {lang: {text key: text}}, only non-empty ones


@dataclass
class Catalogue:
    streams: list                                 # the 141 streams with tags, in order
    maker_streams: list
    streams_without_tags: list
    strings_without_stream: list
    shared_tables: dict                           # {name: [(value, label)]}
    language_totals: dict                         # {lang: {tables, entries, titles, labels}}
    string_samples: list                          # [{text_key, texts: {lang: text}}] the rows give

    def tags(self):
        return [tag for stream in self.streams for tag in stream.tags]


def byte_order(strings):
    return sorted(strings, key=lambda s: s.encode("utf-8"))


def join_alternatives(texts):
    return ALTERNATIVE_SEPARATOR.join(byte_order(set(texts)))


def listing_streams(entry, catalogue_streams):
    """The catalogue streams in which one listing entry stands."""
    if entry.table_g0 == "MakerNotes":
        keeps_table = entry.g1 is None or entry.g1 in MAKER_GROUPS_KEEPING_TABLE
        group = entry.table_g1 if keeps_table else entry.g1
        return [group] if group in catalogue_streams else []
    g0 = entry.g0 or entry.table_g0
    g1 = entry.g1 or entry.table_g1
    streams = [g0] if g0 in catalogue_streams else []
    if g1 != g0 and g1 in catalogue_streams:
        streams.append(g1)
    return streams


def _rows_name(entries, position):
    """The name under which the rows know the listing entry at this position."""
    entry = entries[position]
    before = entries[position - 1].id if position > 0 and entries[position - 1].table == entry.table else None
    after = (entries[position + 1].id
             if position + 1 < len(entries) and entries[position + 1].table == entry.table else None)
    return RENAMED_ENTRIES.get((entry.table, entry.id, before, after), entry.name)


def index_listing(entries, catalogue_streams):
    """{(stream, key): [listing entries in listing order]}."""
    index = {}
    for position, entry in enumerate(entries):
        name = _rows_name(entries, position)
        for stream in listing_streams(entry, catalogue_streams):
            index.setdefault((stream, name), []).append(entry)
    return index


def leading(shown, listed):
    """A list the rows show only in part: the shown values first, in their order, then the
    listing's others, in its order (a value the listing repeats keeps its further places)."""
    rest = list(listed)
    for value in shown:
        if value in rest:
            rest.remove(value)
    return list(shown) + rest


def merged_values(entries):
    """A row's choice values: one entry's own list, a list that all entries share with the same
    labels, or else the union in byte order. Entries with one list of values but other labels
    (NikonCustom:LimitAFAreaModeSelection, whose "Dynamic area" counts differ by camera) are
    different lists: the catalogue counts such a union in byte order."""
    lists = [[(value, texts) for block in entry.value_blocks for value, texts in block.entries]
             for entry in entries]
    if all(pairs == lists[0] for pairs in lists):
        return [value for value, _ in lists[0]]
    return byte_order({value for pairs in lists for value, _ in pairs})


def merged_texts(per_entry, lang):
    """The text of several entries in one language: the texts of the entries that have one in
    that language, joined as alternatives where they differ. An entry without a translation
    adds nothing, not even its English text."""
    texts = [texts[lang] for texts in per_entry if lang in texts]
    return join_alternatives(texts) if texts else None


def entry_labels(entry):
    """{value: {lang: label}} of one entry; a later value block replaces an earlier label."""
    labels = {}
    for block in entry.value_blocks:
        for value, texts in block.entries:
            labels.setdefault(value, {}).update(texts)
    return labels


def _text_key(*parts):
    return ":".join(parts)


def _tag_texts(stream_name, row, entries, listed_labels):
    """{lang: {text key: text}} of one tag: its title and one label per distinct value.
    Fills listed_labels with the English labels the listing gives, for the checks."""
    texts = {lang: {} for lang in CODES}
    title_key = _text_key(stream_name, row.key)
    texts["en"][title_key] = row.title
    if entries:
        for lang in TRANSLATED:
            text = merged_texts([entry.titles for entry in entries], lang)
            if text is not None and text != row.title:
                texts[lang][title_key] = text
    labels = [entry_labels(entry) for entry in entries]
    shown = dict(row.shown_labels)
    for value in dict.fromkeys(row.choices):
        per_entry = [entry[value] for entry in labels if value in entry]
        listed_labels[value] = merged_texts(per_entry, "en")
        english = shown.get(value, listed_labels[value])
        if english is None:
            raise MergeError(f"no English label for {title_key}:{value}")
        label_key = _text_key(title_key, value)
        texts["en"][label_key] = english
        for lang in TRANSLATED:
            text = merged_texts(per_entry, lang)
            if text is not None and text != english:
                texts[lang][label_key] = text
    return texts


@dataclass
class _Row:
    key: str
    title: str
    choices: list
    shown_labels: list


def _make_tag(stream_name, row, shared_tables, index):
    """A catalogue tag from its row and its listing entries, with its texts."""
    entries = index.get((stream_name, row["key"]), [])
    listed_values = merged_values(entries) if entries else []
    shown = [tuple(pair) for pair in row.get("choices", [])]
    shared = row.get("shared_table")
    if shared is not None:
        shown, complete = [tuple(pair) for pair in shared_tables[shared]], True
    else:
        complete = row.get("choices_complete", True)
    sampled = row.get("choices_sampled", False)
    shown_values = [value for value, _ in shown]
    if complete and shown:
        choices = shown_values                          # a full list the rows show keeps its order
    elif sampled:
        choices = listed_values                         # a sample leaves the listing's order as it is
    else:
        choices = leading(shown_values, listed_values)
    tag = Tag(stream=stream_name, index=row["index"], key=row["key"], type=row["type"],
              count=row["count"], flags=row["flags"], title=row["title"], choices=choices,
              shared_table=shared, listed=bool(entries), listed_values=listed_values,
              shown=shown, shown_complete=complete, shown_sampled=sampled, stated_choices=row.get("n_choices", 0))
    texts = _tag_texts(stream_name, _Row(row["key"], row["title"], choices, shown), entries,
                       tag.listed_labels)
    return tag, texts


def build_catalogue(rows, entries):
    """The catalogue from the rows (parsed rows.json) and the listing's entries."""
    names = [stream["name"] for stream in rows["streams"]]
    index = index_listing(entries, set(names))
    shared_tables = {name: [tuple(pair) for pair in pairs]
                     for name, pairs in rows["shared_value_tables"].items()}
    streams = []
    for stream_row in rows["streams"]:
        name = stream_row["name"]
        stream = Stream(name=name, tags=[], stated_entries=dict(stream_row["string_entries"]))
        tables = {lang: {} for lang in CODES}
        for row in stream_row["tags"]:
            tag, texts = _make_tag(name, row, shared_tables, index)
            stream.tags.append(tag)
            for lang in CODES:
                tables[lang].update(texts[lang])
        stream.tables = {lang: table for lang, table in tables.items() if table}
        streams.append(stream)
    return Catalogue(streams=streams, maker_streams=list(rows["maker_streams"]),
                     streams_without_tags=list(rows["streams_without_tags"]),
                     strings_without_stream=list(rows["strings_without_stream"]),
                     shared_tables=shared_tables, language_totals=rows["language_totals"],
                     string_samples=rows["string_samples"])
