#!/usr/bin/env python3
"""Makes the README's pictures from one-bit channel files of the roll printer, as demo.sh leaves them:
the inks printed over each other, and each channel by itself. With a place, the dots there, enlarged.
(The first one is of a job that was made with --screen fm.)

    scripts/make-picture.py FOLDER/harbour docs/demo.png
    scripts/make-picture.py build/demo/printed/roll/harbour/harbour docs/screens.png 560 930

With --preview: the artwork, drawn by Ghostscript at 52 dpi, and the preview that lies beside the channels.

    scripts/make-picture.py --preview build/demo/artwork/harbour.pdf \
        build/demo/printed/roll/harbour/harbour_preview.png docs/preview.png
"""
import struct
import subprocess
import sys
import zlib

SCALE = 3  # pixels of the channels that become one pixel of the picture
INKS = {"C": (0, 255, 255), "M": (255, 0, 255), "Y": (255, 255, 0), "K": (0, 0, 0)}
GAP = 6


def read_channel(path):
    """Width, height and rows of an uncompressed one-bit channel file."""
    data = open(path, "rb").read()
    order = "<" if data[:2] == b"II" else ">"
    (offset,) = struct.unpack_from(order + "I", data, 4)
    (count,) = struct.unpack_from(order + "H", data, offset)
    tags = {}
    for i in range(count):
        tag, kind, number = struct.unpack_from(order + "HHI", data, offset + 2 + 12 * i)
        letter = {3: "H", 4: "I"}.get(kind)
        if letter is None:
            continue
        size = struct.calcsize(letter) * number
        at = offset + 10 + 12 * i
        if size > 4:
            (at,) = struct.unpack_from(order + "I", data, at)
        tags[tag] = struct.unpack_from(order + letter * number, data, at)
    if tags[258][0] != 1 or tags.get(259, (1,))[0] != 1:
        sys.exit(f"{path} is no uncompressed one-bit channel")
    pixels = b"".join(data[o:o + n] for o, n in zip(tags[273], tags[279]))
    line = tags[256][0] // 8
    return tags[256][0], tags[257][0], [pixels[y * line:(y + 1) * line] for y in range(tags[257][0])]


def shrink(channel):
    """Ink coverage, 0 to 1, of squares of SCALE pixels."""
    width, height, rows = channel
    bits = [bin(int.from_bytes(row, "big") | 1 << width)[3:] for row in rows]
    return [[sum(bits[y * SCALE + k].count("1", x * SCALE, (x + 1) * SCALE) for k in range(SCALE))
             / SCALE ** 2 for x in range(width // SCALE)] for y in range(height // SCALE)]


def tinted(coverages):
    """The colour of inks printed over each other on white paper."""
    color = [255.0, 255.0, 255.0]
    for ink, coverage in coverages.items():
        for i in range(3):
            color[i] *= 1 - coverage * (1 - INKS[ink][i] / 255)
    return bytes(int(value + 0.5) for value in color)


def write_png(path, width, rows):
    def chunk(kind, body):
        return (struct.pack(">I", len(body)) + kind + body
                + struct.pack(">I", zlib.crc32(kind + body)))
    body = zlib.compress(b"".join(b"\0" + row for row in rows), 9)
    with open(path, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n"
                   + chunk(b"IHDR", struct.pack(">IIBBBBB", width, len(rows), 8, 2, 0, 0, 0))
                   + chunk(b"IDAT", body) + chunk(b"IEND", b""))


def write_dots(prefix, target, left, top):
    """Each ink's dots around a place and all of them over each other, side by side."""
    side, zoom = 70, 2
    white = b"\xff\xff\xff"
    channels = {ink: read_channel(f"{prefix}_{ink}.tif")[2] for ink in INKS}

    def pixel(ink, x, y):
        return channels[ink][y][x // 8] >> (7 - x % 8) & 1
    picture = []
    for y in range(top, top + side):
        parts = [b"".join(tinted({ink: pixel(ink, x, y) for ink in inks}) * zoom
                          for x in range(left, left + side))
                 for inks in (*INKS, "CMYK")]
        picture += [(white * GAP).join(parts)] * zoom
    write_png(target, len(picture[0]) // 3, picture)


def read_png(data):
    """Rows of red, green and blue of a picture of 8 bits a sample that is not interlaced."""
    width, at, body = struct.unpack_from(">I", data, 16)[0], 8, b""
    while at < len(data):
        (size,) = struct.unpack_from(">I", data, at)
        if data[at + 4:at + 8] == b"IDAT":
            body += data[at + 8:at + 8 + size]
        at += 12 + size
    body = zlib.decompress(body)
    line = width * 3
    rows, above = [], bytes(line)
    for start in range(0, len(body), line + 1):
        row = bytearray(body[start + 1:start + 1 + line])
        for i in range(line):
            a, b, c = (row[i - 3], above[i], above[i - 3]) if i >= 3 else (0, above[i], 0)
            paeth = min((abs(b - c), 0, a), (abs(a - c), 1, b), (abs(a + b - 2 * c), 2, c))[2]
            row[i] = row[i] + (0, a, b, (a + b) // 2, paeth)[body[start]] & 255
        rows.append(bytes(row))
        above = row
    return rows


def shrink_colors(rows, width, height):
    """The picture in another size: each pixel the mean of those that it stands for."""
    def mean(y, x, sample):
        squares = [rows[v][3 * u + sample]
                   for v in range(y * len(rows) // height, max((y + 1) * len(rows) // height, 1))
                   for u in range(x * len(rows[0]) // 3 // width, (x + 1) * len(rows[0]) // 3 // width)]
        return sum(squares) // len(squares) & 0xF8  # a smaller file
    return [bytes(mean(y, x, i) for x in range(width) for i in range(3)) for y in range(height)]


def write_preview(artwork, preview, target):
    """The artwork and the preview side by side, in a third of the preview's size."""
    drawn = subprocess.run(["gs", "-q", "-dBATCH", "-dNOPAUSE", "-dTextAlphaBits=4", "-dGraphicsAlphaBits=4",
                            "-r52", "-sDEVICE=png16m", "-sOutputFile=-", artwork],
                           check=True, stdout=subprocess.PIPE).stdout
    shown = read_png(open(preview, "rb").read())
    width, height = len(shown[0]) // 9, len(shown) // 3
    parts = [shrink_colors(rows, width, height) for rows in (read_png(drawn), shown)]
    gap = b"\xff\xff\xff" * 4 * GAP
    write_png(target, 2 * width + 4 * GAP, [left + gap + right for left, right in zip(*parts)])


def main():
    if sys.argv[1] == "--preview":
        write_preview(*sys.argv[2:])
        return
    prefix, target, *place = sys.argv[1:]
    if place:
        write_dots(prefix, target, *map(int, place))
        return
    channels = {ink: shrink(read_channel(f"{prefix}_{ink}.tif")) for ink in INKS}
    height, width = len(channels["C"]), len(channels["C"][0])
    picture = [b"".join(tinted({ink: channels[ink][y][x] for ink in INKS}) for x in range(width))
               for y in range(height)]
    # Below, every second pixel of each channel in its own colour.
    white = b"\xff\xff\xff"
    small = (width - 3 * GAP) // 4
    step = width / small
    picture += [white * width] * GAP
    for row in range(int(height / step)):
        y = int(row * step)
        parts = [b"".join(tinted({ink: channels[ink][y][int(x * step)]}) for x in range(small))
                 for ink in INKS]
        line = (white * GAP).join(parts)
        picture.append(line + white * (width - len(line) // 3))
    write_png(target, width, picture)


main()
