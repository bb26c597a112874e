"""The Python examples of docs/python.md run as a user would run them."""

import subprocess
import sys

import lorvane
from conftest import SOURCE


def test_read_write_example(sample):
    result = subprocess.run([sys.executable, str(SOURCE / "examples" / "python" / "read_write.py"), str(sample)],
                            capture_output=True, text=True, check=True, cwd=sample.parent)
    assert result.stdout.splitlines() == [
        "Orientation: Rotate 90 CW [6]",
        "taken 2026-11-01T10:30:00 by EXIF:DateTimeOriginal",
        "at 48.8584 2.2945",
        f"{sample} {result.stdout.splitlines()[3].split()[-2]} tags",
        "missing.jpg File not found",
        "refused: EXIF:Orientation Sideways not_a_choice",
        f"{sample}: updated, the original kept as {sample}_original",
        "EXIF:Orientation int16u ['writable'] Ausrichtung 180° gedreht",
        str([tag.name for tag in lorvane.tags("Canon:*Lens*")][:3]),
    ]
