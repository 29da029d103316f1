#!/usr/bin/env python3
"""Draws the icons of the program: a mosaic of tiles through which the layers of a retina run, with
the pit of the fovea in the middle. Writes iconTessera<size>.png and tessera.ico beside itself."""

import math
import os
import struct
import zlib

# Sides of the pictures; those of the .ico file.
PNG_SIZES = (48, 128, 256)
ICO_SIZES = (16, 32, 48, 256)
SAMPLES = 5

TILES = 4
GAP = 0.035
TILE_RADIUS = 0.045

# From the vitreous down to the choroid: the surface's height at the rim, how much of the foveal pit
# it takes part in, and the colour of what lies below it.
VITREOUS = (24, 43, 73)
SURFACES = (
    (0.240, 0.250, (250, 205, 98)),
    (0.390, 0.130, (240, 150, 72)),
    (0.515, 0.050, (214, 92, 84)),
    (0.640, -0.030, (86, 176, 182)),
    (0.765, -0.020, (206, 232, 222)),
    (0.830, -0.010, (130, 52, 68)),
)


def surface_height(rim, pit, x):
    bend = 0.07 * (2 * x - 1) ** 2
    return rim - bend + pit * math.exp(-(((x - 0.5) / 0.19) ** 2))


def layer_colour(x, y):
    colour = VITREOUS
    for rim, pit, below in SURFACES:
        if y >= surface_height(rim, pit, x):
            colour = below
    return colour


def is_in_tile(x, y):
    side = (1 - (TILES - 1) * GAP) / TILES
    pitch = side + GAP
    u = x - min(int(x / pitch), TILES - 1) * pitch
    v = y - min(int(y / pitch), TILES - 1) * pitch
    if u > side or v > side:
        return False
    dx = max(TILE_RADIUS - u, u - (side - TILE_RADIUS), 0)
    dy = max(TILE_RADIUS - v, v - (side - TILE_RADIUS), 0)
    return dx * dx + dy * dy <= TILE_RADIUS * TILE_RADIUS


def draw(size):
    """Rows of RGBA bytes."""
    rows = []
    for row in range(size):
        line = bytearray()
        for column in range(size):
            total = [0, 0, 0]
            covered = 0
            for i in range(SAMPLES * SAMPLES):
                x = (column + (i % SAMPLES + 0.5) / SAMPLES) / size
                y = (row + (i // SAMPLES + 0.5) / SAMPLES) / size
                if is_in_tile(x, y):
                    covered += 1
                    for channel, value in enumerate(layer_colour(x, y)):
                        total[channel] += value
            line += bytes(round(value / max(covered, 1)) for value in total)
            line.append(round(255 * covered / SAMPLES**2))
        rows.append(bytes(line))
    return rows


def chunk(kind, content):
    body = kind + content
    return struct.pack(">I", len(content)) + body + struct.pack(">I", zlib.crc32(body))


def png(size):
    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)
    content = zlib.compress(b"".join(b"\0" + row for row in draw(size)), 9)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", content)
            + chunk(b"IEND", b""))


def ico(pictures):
    entries = b""
    offset = 6 + 16 * len(pictures)
    for size, content in pictures:
        # The format writes 256 as 0.
        entries += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(content),
                               offset)
        offset += len(content)
    return (struct.pack("<HHH", 0, 1, len(pictures)) + entries
            + b"".join(content for _, content in pictures))


def main():
    folder = os.path.dirname(os.path.abspath(__file__))
    pictures = {size: png(size) for size in sorted({*PNG_SIZES, *ICO_SIZES})}
    for size in PNG_SIZES:
        with open(os.path.join(folder, f"iconTessera{size}.png"), "wb") as file:
            file.write(pictures[size])
    with open(os.path.join(folder, "tessera.ico"), "wb") as file:
        file.write(ico([(size, pictures[size]) for size in ICO_SIZES]))


if __name__ == "__main__":
    main()
