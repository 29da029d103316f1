#!/usr/bin/env python3
"""Makes variants of an export for measurements, independently of Tessera's own code.

vary-export.py one-bscan EXPORT.xml NUMBER FOLDER   the B-scan of this image number as a single line
vary-export.py replace-fill EXPORT.xml FOLDER       white fill at the borders of PNG B-scans replaced
                                                    by what a mirror at its edge would show

FOLDER gets an export.xml and the images it names.
"""

import os
import re
import shutil
import struct
import sys
import xml.etree.ElementTree as xml
import zlib

FILL = 255
SMALLEST_FILL = 50
SIGNATURE = b"\x89PNG\r\n\x1a\n"
CHANNELS = {0: 1, 2: 3, 4: 2, 6: 4}


def read_png(path):
    """Width, height and the rows of grey values of a PNG of 8 bits a channel, without interlacing."""
    with open(path, "rb") as file:
        data = file.read()
    if data[:8] != SIGNATURE:
        sys.exit(f"{path} is not a PNG.")
    position, packed = 8, b""
    while position < len(data):
        length = struct.unpack(">I", data[position:position + 4])[0]
        kind = data[position + 4:position + 8]
        content = data[position + 8:position + 8 + length]
        position += 12 + length
        if kind == b"IHDR":
            width, height, depth, colour, _, _, interlace = struct.unpack(">IIBBBBB", content)
            if depth != 8 or colour not in CHANNELS or interlace:
                sys.exit(f"{path} has a form that this script does not read.")
        elif kind == b"IDAT":
            packed += content
    step = CHANNELS[colour]
    raw, rows, above, start = zlib.decompress(packed), [], bytearray(width * step), 0
    for _ in range(height):
        row = bytearray(raw[start + 1:start + 1 + width * step])
        unfilter(raw[start], row, above, step)
        rows.append(row)
        above, start = row, start + 1 + width * step
    return width, height, [row[::step] for row in rows]


def unfilter(kind, row, above, step):
    for i in range(len(row)):
        left = row[i - step] if i >= step else 0
        corner = above[i - step] if i >= step else 0
        if kind == 1:
            row[i] = (row[i] + left) & 255
        elif kind == 2:
            row[i] = (row[i] + above[i]) & 255
        elif kind == 3:
            row[i] = (row[i] + (left + above[i]) // 2) & 255
        elif kind == 4:
            guess = left + above[i] - corner
            nearest = min((left, above[i], corner), key=lambda value: abs(guess - value))
            row[i] = (row[i] + nearest) & 255


def write_png(path, width, height, rows):
    def chunk(kind, content):
        checksum = zlib.crc32(kind + content)
        return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", checksum)

    header = struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)
    packed = zlib.compress(b"".join(b"\0" + bytes(row) for row in rows))
    with open(path, "wb") as file:
        file.write(SIGNATURE + chunk(b"IHDR", header) + chunk(b"IDAT", packed) + chunk(b"IEND", b""))


def find_fill(width, height, rows):
    """The places of all large white areas that touch the border, as a set of (x, y)."""
    border = [(x, y) for x in range(width) for y in (0, height - 1)]
    border += [(x, y) for y in range(height) for x in (0, width - 1)]
    seen, fill = set(), set()
    for seed in border:
        if seed in seen or rows[seed[1]][seed[0]] != FILL:
            continue
        seen.add(seed)
        area = [seed]
        for x, y in area:
            for place in ((x - 1, y), (x + 1, y), (x, y - 1), (x, y + 1)):
                inside = 0 <= place[0] < width and 0 <= place[1] < height
                if inside and place not in seen and rows[place[1]][place[0]] == FILL:
                    seen.add(place)
                    area.append(place)
        if len(area) >= SMALLEST_FILL:
            fill.update(area)
    return fill


def mirror_fill(width, height, rows):
    """In each column what lies behind the fill's edge, mirrored; columns of nothing else are black."""
    fill = find_fill(width, height, rows)
    for x in range(width):
        known = [y for y in range(height) if (x, y) not in fill]
        for y in range(height):
            if (x, y) in fill:
                nearest = min(known, key=lambda other: abs(other - y), default=None)
                mirrored = None if nearest is None else 2 * nearest - y
                usable = mirrored is not None and 0 <= mirrored < height and (x, mirrored) not in fill
                rows[y][x] = rows[mirrored][x] if usable else 0
    return len(fill)


def image_names(series):
    return [re.split(r"[\\/]", url.text)[-1] for url in series.iter("ExamURL")]


def one_bscan(tree, number):
    series = tree.find(".//Series")
    for image in list(series.findall("Image")):
        if image.findtext("ImageNumber") not in ("0", number):
            series.remove(image)
    series.find("Type").text = "Section"
    series.find("NumImages").text = "2"


def main(arguments):
    if len(arguments) == 4 and arguments[0] == "one-bscan":
        export, number, folder = arguments[1:]
    elif len(arguments) == 3 and arguments[0] == "replace-fill":
        export, folder = arguments[1:]
        number = None
    else:
        sys.exit(__doc__)
    tree = xml.parse(export)
    if number is not None:
        one_bscan(tree, number)
    os.makedirs(folder, exist_ok=True)
    source = os.path.dirname(os.path.abspath(export))
    names = image_names(tree.find(".//Series"))
    for index, name in enumerate(names):
        path = os.path.join(source, name)
        if number is None and index > 0:
            width, height, rows = read_png(path)
            pixels = mirror_fill(width, height, rows)
            write_png(os.path.join(folder, name), width, height, rows)
            print(f"{name}: {pixels} pixels of fill replaced")
        else:
            shutil.copy(path, folder)
    tree.write(os.path.join(folder, "export.xml"), encoding="utf-8", xml_declaration=True)


if __name__ == "__main__":
    main(sys.argv[1:])
