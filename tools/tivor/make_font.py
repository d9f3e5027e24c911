#!/usr/bin/env python3
"""Makes the table of Font.cpp: make_font.py 7x13-ISO8859-1.pcf.gz >Font.cpp

The font is misc-fixed 7x13 of X11, which is in the public domain (Debian: package xfonts-base).
"""
import gzip
import struct
import sys

WIDTH, HEIGHT = 7, 13
METRICS, BITMAPS, ENCODINGS = 1 << 2, 1 << 3, 1 << 5
COMPRESSED = 0x100


class Table:
    """A table of a PCF file: what its format says of the order of bytes, and a place to read from."""

    def __init__(self, data, kind):
        for i in range(struct.unpack_from("<I", data, 4)[0]):
            found, _, _, offset = struct.unpack_from("<4I", data, 8 + 16 * i)
            if found == kind:
                self.format = struct.unpack_from("<I", data, offset)[0]
                self.data, self.at = data, offset + 4
                self.order = ">" if self.format & 4 else "<"
                return
        sys.exit(f"The font has no table {kind:#x}")

    def take(self, form):
        values = struct.unpack_from(self.order + form, self.data, self.at)
        self.at += struct.calcsize(self.order + form)
        return values


def read_metrics(table):
    """Left bearing and ascent of each glyph."""
    if table.format & COMPRESSED:
        entries = [table.take("5B") for _ in range(table.take("H")[0])]
        return [(left - 128, ascent - 128) for left, _, _, ascent, _ in entries]
    entries = [table.take("5hH") for _ in range(table.take("I")[0])]
    return [(left, ascent) for left, _, _, ascent, _, _ in entries]


def read_bitmaps(table):
    count = table.take("I")[0]
    offsets = list(table.take(f"{count}I"))
    sizes = table.take("4I")
    pad = 1 << (table.format & 3)
    bits = table.data[table.at : table.at + sizes[table.format & 3]]
    ends = offsets[1:] + [len(bits)]
    if not table.format & 8:
        bits = bytes(int(f"{byte:08b}"[::-1], 2) for byte in bits)
    return [[bits[at] for at in range(begin, end, pad)] for begin, end in zip(offsets, ends)]


def read_encoding(table):
    first, last, _, _, _ = table.take("5h")
    return dict(zip(range(first, last + 1), table.take(f"{last - first + 1}H")))


def main():
    with gzip.open(sys.argv[1]) as file:
        data = file.read()
    metrics = read_metrics(Table(data, METRICS))
    bitmaps = read_bitmaps(Table(data, BITMAPS))
    encoding = read_encoding(Table(data, ENCODINGS))
    ascent = 11
    print('// Made by make_font.py of the font misc-fixed 7x13 of X11, which is in the public domain.\n#include "Font.h"\n')
    print("namespace Qor::Tivor::Tool {\n\nnamespace {\n\n// clang-format off")
    print("constexpr Glyph glyphs[] = {")
    for code in [*range(0x20, 0x7F), *range(0xA0, 0x100)]:
        glyph = encoding[code]
        left, above = metrics[glyph]
        rows = [0] * HEIGHT
        for i, row in enumerate(bitmaps[glyph]):
            if 0 <= ascent - above + i < HEIGHT:
                rows[ascent - above + i] = row >> left
        print("    {" + ", ".join(f"0x{row:02x}" for row in rows) + "},")
    print("};\n// clang-format on\n\n} // namespace\n")
    print("const Glyph& GetGlyph(unsigned char code) {")
    print("    const bool isLow = code >= 0x20 && code < 0x7F;")
    print("    return glyphs[isLow ? code - 0x20 : code >= 0xA0 ? code - 0xA0 + 0x5F : '?' - 0x20];\n}")
    print("\n} // namespace Qor::Tivor::Tool")


main()
