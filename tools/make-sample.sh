#!/bin/sh
# Makes tests/data/sample.jpg, the demo's sample: the plain 64x48 JPEG with EXIF, GPS, IPTC and
# XMP tags written by ExifTool. Kept in the repository; run again only to change its tags.
set -eu
cd "$(dirname "$0")/.."
cp tests/data/plain.jpg tests/data/sample.jpg
exiftool -q -overwrite_original \
  -EXIF:Make=DemoCam -EXIF:Model="DemoCam One" -EXIF:Orientation#=6 \
  -EXIF:ExposureProgram#=3 -EXIF:MeteringMode#=5 -EXIF:Flash#=16 -EXIF:WhiteBalance#=0 \
  -EXIF:FNumber=2.8 -EXIF:ExposureTime=1/250 -EXIF:ISO=200 -EXIF:FocalLength=35 \
  -EXIF:DateTimeOriginal="2026:11:01 10:30:00" -EXIF:Artist="Lorvane Demo" \
  -GPSLatitude=48.8584 -GPSLatitudeRef=N -GPSLongitude=2.2945 -GPSLongitudeRef=E \
  -IPTC:Keywords=tower -IPTC:Keywords=paris -IPTC:City=Paris -IPTC:ObjectName="Demo" \
  -XMP-dc:Title="Demo title" -XMP-dc:Creator="Lorvane Demo" -XMP-xmp:Rating=4 \
  -XMP-photoshop:ColorMode#=3 \
  tests/data/sample.jpg
