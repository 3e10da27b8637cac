"""PNG files."""

import struct
import zlib


def _chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def make_png(width, height, rows=None):
    """Makes an RGB picture. `rows` replaces the pixel data and need not match the size."""
    if rows is None:
        rows = b"".join(
            b"\0" + bytes(value for x in range(width) for value in (x % 256, y % 256, (x * y) % 256))
            for y in range(height))
    return (b"\x89PNG\r\n\x1a\n" + _chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)) +
            _chunk(b"IDAT", zlib.compress(rows)) + _chunk(b"IEND", b""))
