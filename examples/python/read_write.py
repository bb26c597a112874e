#!/usr/bin/python3
"""Reads a picture's tags and values, writes some, and looks a tag up in the catalogue.

    read_write.py PICTURE.jpg
"""

import datetime
import sys

import lorvane


def main(path):
    with lorvane.Reader(language="en", jobs=2) as reader:
        file = reader.read(path)
        if file.error is not None:
            sys.exit(f"{file.file}: {file.error}")
        orientation = file["EXIF:Orientation"]
        print(f"{orientation.title}: {orientation.value} [{orientation.raw}]")
        if file.capture_time is not None:
            print("taken", file.capture_time.isoformat(), "by", file.capture_time_source)
        if file.location is not None:
            print("at", file.location.latitude, file.location.longitude)
        for each in reader.read_each([path, "missing.jpg"]):
            print(each.file, f"{len(each.tags)} tags" if each.error is None else each.error)

    with lorvane.Writer() as writer:
        try:
            writer.write({"EXIF:Orientation": "Sideways"}, [path])
        except lorvane.AssignmentError as error:
            for refusal in error.refusals:
                print("refused:", refusal.tag, refusal.value, refusal.reason)
        assignments = {"EXIF:Orientation": "Rotate 180", "XMP:Subject": ["sea", "sky"]}
        taken = datetime.datetime(2026, 11, 1, 10, 30, tzinfo=datetime.timezone(datetime.timedelta(hours=2)))
        for result in writer.write(assignments, [path], capture_time=taken, location=(48.8584, 2.2945)):
            print(f"{result.file}: {result.outcome}, the original kept as {result.original}")

    tag = lorvane.tag("EXIF:Orientation")
    print(tag.name, tag.type, tag.flags, tag.title("de"), tag.choices("de")["3"])
    print([found.name for found in lorvane.tags("Canon:*Lens*")][:3])


if __name__ == "__main__":
    main(sys.argv[1])
