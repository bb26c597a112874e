"""Lorvane: files' metadata read and written with ExifTool, named by a catalogue of its tags.

    import lorvane

    with lorvane.Reader(language="de", jobs=2) as reader:
        for file in reader.read_each(paths):
            if file.error is None:
                print(file.file, file["EXIF:Orientation"].value)

lorvane.Reader reads, lorvane.Writer writes; lorvane.tag and lorvane.tags look tags up in the
catalogue; lorvane.dask reads on a Dask cluster.
"""

from lorvane._lorvane import (
    AssignmentError,
    EmbeddedImage,
    FileTag,
    FileTags,
    GeoLocation,
    ReadEach,
    Reader,
    Refusal,
    Tag,
    ToolNotFoundError,
    WriteResult,
    Writer,
    __version__,
    languages,
    streams,
    tag,
    tags,
)

__all__ = [
    "AssignmentError",
    "EmbeddedImage",
    "FileTag",
    "FileTags",
    "GeoLocation",
    "ReadEach",
    "Reader",
    "Refusal",
    "Tag",
    "ToolNotFoundError",
    "WriteResult",
    "Writer",
    "__version__",
    "languages",
    "streams",
    "tag",
    "tags",
]
