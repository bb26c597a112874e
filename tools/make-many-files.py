#!/usr/bin/env python3
"""Makes a folder of real-looking files for reading many files at once.

    tools/make-many-files.py FOLDER [--count N]      (default 240 files)

Mostly JPEGs of five picture sizes, each with its own EXIF, GPS, IPTC and XMP tags, Nikon or
Fujifilm maker notes and a thumbnail, all written by ExifTool; among them, spread evenly, PNG,
TIFF, MP4, PDF, WAV and XMP files. Any first N files by name hold the same mix, so a
benchmark can take 50, 200 or 800 of them. The same count always gives the same files: no
clock, no network, a fixed random seed. Needs Python 3, `cjpeg` (libjpeg-turbo-progs) and
`exiftool`.
"""

import argparse
import operator
import os
import random
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib
from pathlib import Path

SEED = 20261123
# Picture sizes and how often each comes: mostly what phones and small cameras make.
SIZES = [((640, 480), 4), ((1280, 960), 4), ((2048, 1536), 3), ((3264, 2448), 2), ((4000, 3000), 1)]
# Every OTHER_EVERY-th file is one of the other formats, in this order.
OTHER_EVERY = 15
OTHER_FORMATS = ["png", "tif", "mp4", "pdf", "wav", "xmp"]
FIXED_TIME = 1_762_000_000  # file times, so that the tool's file dates don't depend on today
REPOSITORY = Path(__file__).resolve().parent.parent


def picture_ppm(width, height, rng):
    """A smooth colour field with fine grain, which a JPEG encoder treats like a photo."""
    period = 3 * (width + height)
    ramp = bytes(
        int(60 + 70 * ((i // 3) % 509) / 509 + 35 * (i % 3)) for i in range(2 * period)
    )
    grain = bytes(rng.randrange(0, 28) for _ in range(3 * width + 4099))
    rows = []
    for y in range(height):
        start = 3 * ((y * 7) % (period // 3))
        noise_start = rng.randrange(0, 4096)
        rows.append(
            bytes(
                map(
                    operator.add,
                    ramp[start : start + 3 * width],
                    grain[noise_start : noise_start + 3 * width],
                )
            )
        )
    return b"P6\n%d %d\n255\n" % (width, height) + b"".join(rows)


def encode_jpeg(ppm, path, quality):
    with open(path, "wb") as out:
        subprocess.run(["cjpeg", "-quality", str(quality), "-optimize"], input=ppm, stdout=out, check=True)


def ifd(entries, endian, base):
    """One TIFF directory: (tag, type, count, bytes) entries, values past it; offsets from `base`."""
    head = 2 + 12 * len(entries) + 4
    directory = struct.pack(endian + "H", len(entries))
    values = b""
    for tag, kind, count, value in sorted(entries):
        if len(value) <= 4:
            directory += struct.pack(endian + "HHI", tag, kind, count) + value.ljust(4, b"\0")
        else:
            directory += struct.pack(endian + "HHII", tag, kind, count, base + head + len(values))
            values += value + (b"\0" if len(value) % 2 else b"")
    return directory + b"\0\0\0\0" + values


def ascii_value(text):
    data = text.encode() + b"\0"
    return (2, len(data), data)


def nikon_maker_notes(rng, serial):
    # Nikon's own TIFF header inside the block: offsets count from it, wherever the block lies.
    lens = rng.choice([(18, 55, 3.5, 5.6), (24, 70, 2.8, 2.8), (70, 200, 2.8, 2.8), (35, 35, 1.8, 1.8)])
    entries = [
        (0x0001, 7, 4, b"0210"),
        (0x0002, 3, 2, struct.pack(">HH", 0, rng.choice([100, 200, 400, 800, 1600]))),
        (0x0004, *ascii_value(rng.choice(["FINE  ", "NORMAL", "BASIC "]))),
        (0x0005, *ascii_value(rng.choice(["AUTO        ", "SUNNY       ", "CLOUDY      "]))),
        (0x0007, *ascii_value(rng.choice(["AF-S  ", "AF-C  ", "MANUAL"]))),
        (0x001D, *ascii_value(str(serial))),
        (0x0083, 1, 1, bytes([rng.choice([2, 6, 14])])),
        (0x0084, 5, 4, b"".join(struct.pack(">II", round(v * 10), 10) for v in lens)),
        (0x00A7, 4, 1, struct.pack(">I", rng.randrange(1, 90000))),
    ]
    return b"Nikon\0\x02\x10\0\0MM\0\x2a\0\0\0\x08" + ifd(entries, ">", 8)


def fujifilm_maker_notes(rng, serial):
    # Little-endian, offsets from the start of the block.
    entries = [
        (0x0000, 7, 4, b"0130"),
        (0x0010, *ascii_value("FC  %08d" % serial)),
        (0x1000, *ascii_value(rng.choice(["NORMAL ", "FINE   "]))),
        (0x1001, 3, 1, struct.pack("<H", rng.choice([1, 2, 3, 4]))),
        (0x1002, 3, 1, struct.pack("<H", rng.choice([0, 0x100, 0x200, 0x300]))),
        (0x1031, 3, 1, struct.pack("<H", rng.choice([0, 1, 2, 3]))),
        (0x1401, 3, 1, struct.pack("<H", rng.choice([0, 0x200, 0x400]))),
    ]
    return b"FUJIFILM" + struct.pack("<I", 12) + ifd(entries, "<", 12)


CAMERAS = [
    ("NIKON CORPORATION", "NIKON D7500", nikon_maker_notes),
    ("NIKON CORPORATION", "NIKON Z 6", nikon_maker_notes),
    ("FUJIFILM", "X-T30", fujifilm_maker_notes),
    ("FUJIFILM", "X100V", fujifilm_maker_notes),
]
PLACES = [
    ("Paris", "France", 48.8584, 2.2945),
    ("Kyoto", "Japan", 35.0116, 135.7681),
    ("Lisbon", "Portugal", 38.7223, -9.1393),
    ("Quebec", "Canada", 46.8139, -71.2080),
    ("Cape Town", "South Africa", -33.9249, 18.4241),
]
WORDS = ["tower", "river", "market", "harbour", "garden", "bridge", "street", "portrait", "night"]


def photo_tags(rng, index, maker_notes_file, thumbnail):
    make, model, _ = CAMERAS[index % len(CAMERAS)]
    city, country, latitude, longitude = PLACES[rng.randrange(len(PLACES))]
    keywords = rng.sample(WORDS, 3)
    taken = "2025:%02d:%02d %02d:%02d:%02d" % (
        1 + index % 12, 1 + index % 28, rng.randrange(24), rng.randrange(60), rng.randrange(60))
    return [
        "-EXIF:Make=" + make, "-EXIF:Model=" + model,
        "-EXIF:Orientation#=%d" % rng.choice([1, 1, 1, 6, 8, 3]),
        "-EXIF:ExposureTime=1/%d" % rng.choice([30, 60, 125, 250, 500, 1000]),
        "-EXIF:FNumber=%s" % rng.choice(["1.8", "2.8", "4", "5.6", "8", "11"]),
        "-EXIF:ISO=%d" % rng.choice([100, 200, 400, 800, 1600]),
        "-EXIF:ExposureProgram#=%d" % rng.choice([1, 2, 3, 4]),
        "-EXIF:MeteringMode#=%d" % rng.choice([2, 3, 5]),
        "-EXIF:Flash#=%d" % rng.choice([0, 16, 24, 25]),
        "-EXIF:FocalLength=%d" % rng.choice([18, 24, 35, 50, 85, 135]),
        "-EXIF:DateTimeOriginal=" + taken,
        "-EXIF:CreateDate=" + taken,
        "-EXIF:Artist=Photographer %d" % (index % 7),
        "-EXIF:Copyright=(c) 2025 Photographer %d" % (index % 7),
        "-EXIF:LensModel=%d-%dmm" % rng.choice([(18, 55), (24, 70), (70, 200), (35, 35)]),
        "-GPSLatitude=%.5f" % abs(latitude), "-GPSLatitudeRef=" + ("N" if latitude >= 0 else "S"),
        "-GPSLongitude=%.5f" % abs(longitude), "-GPSLongitudeRef=" + ("E" if longitude >= 0 else "W"),
        "-GPSAltitude=%d" % rng.randrange(0, 900), "-GPSAltitudeRef=0",
        "-MakerNotes<=" + str(maker_notes_file),
        "-ThumbnailImage<=" + str(thumbnail),
        "-IPTC:ObjectName=Picture %d" % index,
        "-IPTC:City=" + city, "-IPTC:Country-PrimaryLocationName=" + country,
        "-IPTC:By-line=Photographer %d" % (index % 7),
        "-IPTC:Caption-Abstract=%s by the %s in %s" % (keywords[0], keywords[1], city),
        *("-IPTC:Keywords=" + word for word in keywords),
        "-XMP-dc:Title=Picture %d" % index,
        "-XMP-dc:Description=%s by the %s in %s" % (keywords[0], keywords[1], city),
        "-XMP-dc:Creator=Photographer %d" % (index % 7),
        *("-XMP-dc:Subject=" + word for word in keywords),
        "-XMP-xmp:Rating=%d" % rng.randrange(0, 6),
        "-XMP-photoshop:City=" + city,
        "-XMP-lr:HierarchicalSubject=Places|%s|%s" % (country, city),
    ]


def png_file(path, width, height, rng):
    raw = b"".join(b"\0" + bytes(rng.randrange(256) for _ in range(3 * width)) for _ in range(height))

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    path.write_bytes(
        b"\x89PNG\r\n\x1a\n"
        + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
        + chunk(b"IDAT", zlib.compress(raw, 9))
        + chunk(b"IEND", b"")
    )


def tiff_file(path, width, height, rng):
    pixels = bytes(rng.randrange(256) for _ in range(3 * width * height))
    entries = [
        (256, 3, 1, struct.pack("<H", width)), (257, 3, 1, struct.pack("<H", height)),
        (258, 3, 3, struct.pack("<HHH", 8, 8, 8)), (259, 3, 1, struct.pack("<H", 1)),
        (262, 3, 1, struct.pack("<H", 2)), (273, 4, 1, struct.pack("<I", 8)),
        (277, 3, 1, struct.pack("<H", 3)), (278, 3, 1, struct.pack("<H", height)),
        (279, 4, 1, struct.pack("<I", len(pixels))),
    ]
    path.write_bytes(b"II\x2a\0" + struct.pack("<I", 8 + len(pixels)) + pixels + ifd(entries, "<", 8 + len(pixels)))


def pdf_file(path, index):
    objects = [
        b"<< /Type /Catalog /Pages 2 0 R >>",
        b"<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] >>",
        b"<< /Title (Report %d) /Author (Office %d) /Producer (make-many-files) >>" % (index, index % 3),
    ]
    body = b"%PDF-1.4\n"
    offsets = []
    for number, content in enumerate(objects, 1):
        offsets.append(len(body))
        body += b"%d 0 obj\n%s\nendobj\n" % (number, content)
    xref = len(body)
    body += b"xref\n0 %d\n0000000000 65535 f \n" % (len(objects) + 1)
    body += b"".join(b"%010d 00000 n \n" % offset for offset in offsets)
    body += b"trailer\n<< /Size %d /Root 1 0 R /Info 4 0 R >>\nstartxref\n%d\n%%%%EOF\n" % (len(objects) + 1, xref)
    path.write_bytes(body)


def wav_file(path, index, rng):
    samples = bytes(rng.randrange(256) for _ in range(8000))
    fmt = struct.pack("<HHIIHH", 1, 1, 8000, 8000, 1, 8)
    info = b"INFO"
    for key, text in ((b"INAM", b"Recording %d\0" % index), (b"IART", b"Field team\0")):
        text += b"\0" * (len(text) % 2)
        info += key + struct.pack("<I", len(text)) + text
    chunks = b"fmt " + struct.pack("<I", len(fmt)) + fmt + b"data" + struct.pack("<I", len(samples)) + samples
    chunks += b"LIST" + struct.pack("<I", len(info)) + info
    path.write_bytes(b"RIFF" + struct.pack("<I", 4 + len(chunks)) + b"WAVE" + chunks)


def other_file(folder, name, kind, index, rng, commands):
    path = folder / ("%s.%s" % (name, kind))
    tags = ["-XMP-dc:Title=Item %d" % index, "-XMP-dc:Creator=Office %d" % (index % 3)]
    if kind == "png":
        png_file(path, 320, 240, rng)
        commands.append(["-overwrite_original", *tags, "-EXIF:Artist=Office", str(path)])
    elif kind == "tif":
        tiff_file(path, 200, 150, rng)
        commands.append(["-overwrite_original", *tags, "-EXIF:Make=ScanDesk", "-EXIF:Artist=Office", str(path)])
    elif kind == "mp4":
        shutil.copyfile(REPOSITORY / "tests" / "data" / "sample.mp4", path)
        commands.append(["-overwrite_original", *tags, "-QuickTime:Title=Clip %d" % index, str(path)])
    elif kind == "pdf":
        pdf_file(path, index)
        commands.append(["-overwrite_original", *tags, str(path)])
    elif kind == "wav":
        wav_file(path, index, rng)  # ExifTool reads RIFF INFO but doesn't write it
    elif kind == "xmp":
        commands.append(["-o", str(path), *tags, "-XMP-xmp:Rating=%d" % (index % 6)])
    return path


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder", type=Path)
    parser.add_argument("--count", type=int, default=240)
    options = parser.parse_args()
    folder = options.folder
    folder.mkdir(parents=True, exist_ok=True)
    rng = random.Random(SEED)

    with tempfile.TemporaryDirectory() as scratch:
        scratch = Path(scratch)
        bases = []
        for (width, height), _ in SIZES:
            base = scratch / ("base-%dx%d.jpg" % (width, height))
            encode_jpeg(picture_ppm(width, height, rng), base, 88)
            bases.append(base)
        thumbnail = scratch / "thumbnail.jpg"
        encode_jpeg(picture_ppm(160, 120, rng), thumbnail, 80)
        weights = [weight for _, weight in SIZES]

        commands = []
        paths = []
        for index in range(options.count):
            name = "file-%04d" % index
            if index % OTHER_EVERY == OTHER_EVERY // 2:
                kind = OTHER_FORMATS[(index // OTHER_EVERY) % len(OTHER_FORMATS)]
                paths.append(other_file(folder, name, kind, index, rng, commands))
                continue
            path = folder / (name + ".jpg")
            shutil.copyfile(rng.choices(bases, weights)[0], path)
            maker_notes = scratch / (name + ".makernotes")
            maker_notes.write_bytes(CAMERAS[index % len(CAMERAS)][2](rng, 3_000_000 + index))
            commands.append(["-overwrite_original", *photo_tags(rng, index, maker_notes, thumbnail), str(path)])
            paths.append(path)

        # One ExifTool process writes them all, one command each.
        arguments = scratch / "arguments"
        arguments.write_text("".join("\n".join(command) + "\n-execute\n" for command in commands))
        result = subprocess.run(["exiftool", "-q", "-q", "-@", str(arguments)], capture_output=True, text=True)
        if result.returncode != 0 or result.stderr.strip():
            sys.exit("exiftool failed:\n" + result.stderr)

    for path in paths:
        os.utime(path, (FIXED_TIME, FIXED_TIME))
    print("%d files in %s" % (len(paths), folder))


if __name__ == "__main__":
    main()
