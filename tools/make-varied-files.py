#!/usr/bin/env python3
"""Makes a varied set of small files for trying the lorvane program against ExifTool.

    tools/make-varied-files.py [FOLDER]      (default: build/varied-files)

JPEGs with Canon and Nikon maker notes and a GoPro APP6 segment, the demo sample, a PNG, a TIFF, an MP4 (the test
sample), a PDF and a WAV, each with a few tags: some in Japanese, a value over two lines with a
tab, a list. Deterministic and offline: this script makes the raw files and the maker-note
blocks with Python's standard library, ExifTool (from PATH) writes the tags.
"""
import math
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import wave
import zlib

ROOT = pathlib.Path(__file__).resolve().parent.parent
DATA = ROOT / "tests" / "data"


def exiftool(*arguments):
    result = subprocess.run(["exiftool", "-overwrite_original", *map(str, arguments)],
                            capture_output=True, text=True, check=True)
    return result.stdout + result.stderr


def png(path, width, height):
    rows = b"".join(b"\0" + bytes(v for x in range(width) for v in (x * 8 % 256, y * 10 % 256, 128))
                    for y in range(height))

    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
                     + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))


def ifd(entries, order, base):
    """An IFD with its long values behind it; offsets count from `base` bytes before it."""
    size = 2 + 12 * len(entries) + 4
    head, tail = struct.pack(order + "H", len(entries)), b""
    for tag, kind, count, payload in entries:
        if len(payload) <= 4:
            head += struct.pack(order + "HHI", tag, kind, count) + payload.ljust(4, b"\0")
        else:
            head += struct.pack(order + "HHII", tag, kind, count, base + size + len(tail))
            tail += payload + (b"\0" if len(payload) % 2 else b"")
    return head + struct.pack(order + "I", 0) + tail


def tiff(path, width, height):
    pixels = bytes(v for y in range(height) for x in range(width) for v in (x * 16 % 256, y * 20 % 256, 64))
    entries = [(256, 3, 1, struct.pack("<H", width)), (257, 3, 1, struct.pack("<H", height)),
               (258, 3, 3, struct.pack("<3H", 8, 8, 8)), (259, 3, 1, struct.pack("<H", 1)),
               (262, 3, 1, struct.pack("<H", 2)), (273, 4, 1, b"\0\0\0\0"),
               (277, 3, 1, struct.pack("<H", 3)), (278, 3, 1, struct.pack("<H", height)),
               (279, 4, 1, struct.pack("<I", len(pixels))), (284, 3, 1, struct.pack("<H", 1))]
    directory = ifd(entries, "<", 8)
    strip = 8 + len(directory)
    entries[5] = (273, 4, 1, struct.pack("<I", strip))
    path.write_bytes(b"II*\0" + struct.pack("<I", 8) + ifd(entries, "<", 8) + pixels)


def pdf(path):
    objects = [b"<< /Type /Catalog /Pages 2 0 R >>", b"<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
               b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 100] /Contents 4 0 R >>",
               b"<< /Length 0 >>\nstream\n\nendstream",
               b"<< /Title (Lorvane Demo PDF) /Author (Lorvane Demo) /Subject (Metadata sample)"
               b" /CreationDate (D:20261101103000+01'00') /Producer (make-varied-files) >>"]
    body, offsets = b"%PDF-1.4\n", []
    for number, content in enumerate(objects, 1):
        offsets.append(len(body))
        body += b"%d 0 obj\n" % number + content + b"\nendobj\n"
    xref = len(body)
    body += b"xref\n0 %d\n0000000000 65535 f \n" % (len(objects) + 1)
    body += b"".join(b"%010d 00000 n \n" % offset for offset in offsets)
    body += b"trailer\n<< /Size %d /Root 1 0 R /Info 5 0 R >>\nstartxref\n%d\n%%%%EOF\n" % (len(objects) + 1, xref)
    path.write_bytes(body)


def wav(path):
    with wave.open(str(path), "wb") as out:
        out.setnchannels(1)
        out.setsampwidth(2)
        out.setframerate(8000)
        out.writeframes(b"".join(struct.pack("<h", int(8000 * math.sin(i * 2 * math.pi * 440 / 8000)))
                                 for i in range(800)))

    # An INFO list, which ExifTool reads but doesn't write.
    def sub(kind, text):
        body = text.encode() + b"\0"
        return kind + struct.pack("<I", len(body)) + body + (b"\0" if len(body) % 2 else b"")

    info = b"INFO" + sub(b"INAM", "Lorvane Demo Tone") + sub(b"IART", "Lorvane Demo") + sub(b"ICRD", "2026-11-01")
    data = path.read_bytes() + b"LIST" + struct.pack("<I", len(info)) + info
    path.write_bytes(data[:4] + struct.pack("<I", len(data) - 8) + data[8:])


def text(value):
    return value.encode() + b"\0"


def canon_notes(base):
    settings = [0] * 46
    settings[:5] = [92, 2, 0, 3, 1]
    settings[22:26] = [137, 70, 24, 1]  # lens type, longest and shortest focal length, unit
    return ifd([(0x0001, 3, 46, struct.pack("<46H", *settings)),
                (0x0006, 2, 21, text("Canon EOS 5D Mark II")),
                (0x0007, 2, 23, text("Firmware Version 2.1.2")),
                (0x0009, 2, 13, text("Lorvane Demo")),
                (0x000C, 4, 1, struct.pack("<I", 1234567)),
                (0x0010, 4, 1, struct.pack("<I", 0x80000218))], "<", base)


def nikon_notes():
    # Nikon's third form carries its own TIFF header: offsets count from there.
    return b"Nikon\0\x02\x10\0\0MM\0*\0\0\0\x08" + ifd(
        [(0x0001, 7, 4, b"0211"), (0x0002, 3, 2, struct.pack(">2H", 0, 400)),
         (0x0004, 2, 6, text("FINE ")), (0x0005, 2, 7, text("AUTO  ")),
         (0x0007, 2, 7, text("AF-S  ")), (0x001E, 3, 1, struct.pack(">H", 1)),
         (0x0083, 1, 1, b"\x06"), (0x0084, 5, 4, struct.pack(">8I", 180, 10, 550, 10, 35, 10, 56, 10))],
        ">", 8)


def gopro_jpeg(path):
    """A JPEG with the APP6 segment a GoPro writes: "GoPro", then GPMF key-length-value data."""
    def klv(key, kind, size, repeat, payload):
        return key + kind + struct.pack(">BH", size, repeat) + payload + b"\0" * (-len(payload) % 4)

    name, firmware, serial = b"HERO9 Black", b"HD9.01.01.72.00", b"C3441325000000"
    device = (klv(b"DVID", b"L", 4, 1, struct.pack(">I", 1)) + klv(b"DVNM", b"c", 1, len(name), name)
              + klv(b"FIRM", b"c", 1, len(firmware), firmware) + klv(b"CASN", b"c", 1, len(serial), serial))
    segment = b"GoPro\0" + klv(b"DEVC", b"\0", 1, len(device), device)
    jpeg = (DATA / "plain.jpg").read_bytes()
    path.write_bytes(jpeg[:2] + b"\xff\xe6" + struct.pack(">H", len(segment) + 2) + segment + jpeg[2:])


def camera_jpeg(path, make, model, notes, *tags):
    shutil.copyfile(DATA / "plain.jpg", path)
    block = path.with_suffix(".bin")
    block.write_bytes(notes)
    exiftool(f"-Make={make}", f"-Model={model}", "-ExposureTime=1/250", "-FNumber=5.6",
                    "-ISO=400", "-FocalLength=35", "-DateTimeOriginal=2026:11:01 10:30:00",
                    f"-MakerNotes<={block}", *tags, path)
    block.unlink()


def main():
    # An option is no folder: "--help" once became a folder of samples beside the sources.
    if len(sys.argv) > 1 and sys.argv[1].startswith("-"):
        print(__doc__.strip())
        sys.exit(0 if sys.argv[1] in ("-h", "--help") else 2)
    folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build" / "varied-files")
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.iterdir():
        old.unlink()

    # Canon's offsets count from the EXIF header, which only the tool knows: write the notes
    # once, let the tool say how far off they are, and write them again.
    canon = folder / "canon.jpg"
    camera_jpeg(canon, "Canon", "Canon EOS 5D Mark II", canon_notes(0))
    warning = subprocess.run(["exiftool", "-Warning", str(canon)], capture_output=True, text=True).stdout
    if fix := re.search(r"fix by (\d+)", warning):
        camera_jpeg(canon, "Canon", "Canon EOS 5D Mark II", canon_notes(int(fix.group(1))))
    camera_jpeg(folder / "nikon.jpg", "NIKON CORPORATION", "NIKON D700", nikon_notes(),
                "-XMP-dc:Title=日本語のタイトル", "-XMP-dc:Subject=山", "-XMP-dc:Subject=海",
                "-IPTC:Caption-Abstract=Zwei Zeilen\nzweite Zeile")
    gopro_jpeg(folder / "gopro.jpg")
    shutil.copyfile(DATA / "sample.jpg", folder / "sample.jpg")
    caption = folder / "caption.txt"
    caption.write_text("First line of the caption\nsecond line,\twith a tab")
    exiftool(f"-XMP-dc:Description<={caption}", "-XMP-dc:Rights=© Lorvane Demo", folder / "sample.jpg")
    caption.unlink()

    png(folder / "image.png", 32, 24)
    exiftool("-PNG:Title=Lorvane PNG", "-PNG:Author=Lorvane Demo", "-XMP-dc:Creator=Lorvane Demo",
             "-XMP-xmp:Rating=3", folder / "image.png")
    tiff(folder / "image.tif", 16, 12)
    exiftool("-EXIF:Artist=Lorvane Demo", "-EXIF:Orientation#=3", "-EXIF:XResolution=300",
             "-EXIF:YResolution=300", "-EXIF:ResolutionUnit#=2", folder / "image.tif")
    shutil.copyfile(DATA / "sample.mp4", folder / "clip.mp4")
    exiftool("-QuickTime:Title=Lorvane Clip", "-QuickTime:Artist=Lorvane Demo",
             "-XMP-dc:Description=Ein kurzer Film", folder / "clip.mp4")
    pdf(folder / "document.pdf")
    exiftool("-PDF:Keywords=lorvane, demo", folder / "document.pdf")
    wav(folder / "tone.wav")
    for made in sorted(folder.iterdir()):
        print(made)


if __name__ == "__main__":
    main()
