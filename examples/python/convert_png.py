#!/usr/bin/python3
"""Converts an image-sized NumPy array with ztcoreex and writes it as a PNG.

    convert_png.py [output.png]

A 640x480 test picture is made in float64 RGB (values from 0 to 1), converted
to 8-bit RGBA in one call, and written with nothing but the standard library.
"""

import struct
import sys
import zlib

import numpy as np

import ztcoreex


def test_picture(width=640, height=480):
    """Red grows to the right, green downwards, blue in rings from the centre."""
    y, x = np.mgrid[0:height, 0:width]
    radius = np.hypot(x - width / 2, y - height / 2)
    return np.stack([x / (width - 1), y / (height - 1), 0.5 + 0.5 * np.cos(radius / 8)], axis=2)


def write_png(path, pixels):
    """Writes an (H, W, 3) or (H, W, 4) uint8 array as an 8-bit PNG."""
    height, width, samples = pixels.shape
    colour_type = {3: 2, 4: 6}[samples]

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    # Each row starts with filter type 0 (none).
    rows = np.concatenate([np.zeros((height, 1), np.uint8), pixels.reshape(height, -1)], axis=1)
    with open(path, "wb") as png:
        png.write(b"\x89PNG\r\n\x1a\n")
        png.write(chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, colour_type, 0, 0, 0)))
        png.write(chunk(b"IDAT", zlib.compress(rows.tobytes(), 6)))
        png.write(chunk(b"IEND", b""))


def main(argv):
    path = argv[1] if len(argv) > 1 else "ztcoreex-example.png"
    picture = test_picture()
    # float64 RGB in, uint8 RGBA out: each sample scaled to 0..255 and cut
    # toward zero, alpha filled with 255.
    pixels = ztcoreex.convert(picture, "RGB", "RGBA", np.uint8)
    write_png(path, pixels)
    print(f"wrote {path}: {pixels.shape[1]}x{pixels.shape[0]} RGBA")


if __name__ == "__main__":
    main(sys.argv)
