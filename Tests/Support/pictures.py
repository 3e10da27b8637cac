"""PNG files of the kind that the tests and measurements use: eight bits, no interlacing, no palette."""

import random
import struct
import zlib

SIGNATURE = b"\x89PNG\r\n\x1a\n"
CHANNELS = {0: 1, 2: 3, 4: 2, 6: 4}  # by colour type


def _chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def make_png(width, height, rows=None):
    """Makes an RGB picture. `rows` replaces the pixel data and need not match the size."""
    if rows is None:
        rows = b"".join(
            b"\0" + bytes(value for x in range(width) for value in (x % 256, y % 256, (x * y) % 256))
            for y in range(height))
    return (SIGNATURE + _chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)) +
            _chunk(b"IDAT", zlib.compress(rows)) + _chunk(b"IEND", b""))


def make_random_png(width, height, first_pixel):
    """Makes an RGB picture of random colours after the first pixel. It does not compress: 3 bytes per pixel."""
    chance = random.Random(1)
    rows = bytearray(b"".join(b"\0" + chance.randbytes(3 * width) for _ in range(height)))
    rows[1:4] = bytes(first_pixel)
    return make_png(width, height, bytes(rows))


def read_png(data):
    """Returns (width, height, (red, green, blue) of the first pixel)."""
    if not data.startswith(SIGNATURE):
        raise ValueError("no PNG")
    position, compressed = len(SIGNATURE), b""
    while position < len(data):
        length, kind = struct.unpack_from(">I4s", data, position)
        content = data[position + 8:position + 8 + length]
        position += length + 12
        if kind == b"IHDR":
            width, height, depth, colour, _, _, interlaced = struct.unpack(">IIBBBBB", content)
        elif kind == b"IDAT":
            compressed += content
    if depth != 8 or interlaced or colour not in CHANNELS:
        raise ValueError(f"a PNG of another kind: {depth} bits, colour type {colour}")
    rows = zlib.decompress(compressed)
    channels = CHANNELS[colour]
    if len(rows) != height * (1 + width * channels):
        raise ValueError("a PNG that is cut off")
    # Every filter leaves the first pixel of the first row unchanged.
    pixel = rows[1:1 + channels]
    return width, height, tuple(pixel[:3]) if channels >= 3 else (pixel[0],) * 3
