#!/usr/bin/env python3
"""check_xbf.py FONT SIZE PLAIN.xbf SPACING [EDGED.xbf SPACING outline|shadow]...

Reads XBF fonts byte by byte and compares them: the steps with FreeType's, and
the dark edges with the letters of the plain font."""

import ctypes
import struct
import sys

LOAD_MONO = 1 << 2 | 2 << 16  # render, for one bit a pixel
DARK = 24


def chunks(data):
    """The chunks side by side in data, by name."""
    found = {}
    while data:
        name, data = data.split(b"\0", 1)
        (size,) = struct.unpack_from("<i", data)
        assert 0 <= size <= len(data) - 4, name
        found[name.decode()] = data[4 : 4 + size]
        data = data[4 + size :]
    return found


class Font:
    def __init__(self, path):
        with open(path, "rb") as file:
            xbf = chunks(chunks(file.read())["XIFF"])["XBF"]
        parts = chunks(xbf)
        version, self.height, self.spacing, self.line = struct.unpack("<Bhhh", parts["HEADER"])
        assert version == 1
        self.letters = list(struct.iter_unpack("<hhhBB", parts["LETTER DATA"]))
        assert len(self.letters) == 255
        bmp = parts["FONT BITMAP"]
        (start,) = struct.unpack_from("<I", bmp, 10)
        self.width, rows, _, depth = struct.unpack_from("<iiHH", bmp, 18)
        assert bmp[:2] == b"BM" and depth == 8
        pitch = (self.width + 3) // 4 * 4
        # Blue bytes, top row first.
        self.rows = [
            bytes(bmp[54 + 4 * bmp[start + y * pitch + x]] for x in range(self.width)) for y in reversed(range(rows))
        ]
        assert self.rows[0][0] == 0, "the key is not empty"

    def step(self, code):
        x, y, width, kind, value = self.letters[code]
        return value if kind == 103 else width + self.spacing

    def pixels(self, code):
        """Intensities by place, from the corner of the pixels that are not empty."""
        x, y, width, kind, value = self.letters[code]
        assert kind == 0 and x + width <= self.width and y + self.height <= len(self.rows)
        return shrink({(i, j): self.rows[y + j][x + i] for i in range(width) for j in range(self.height)})

    def base(self, code):
        """Rows from the cell's top to the first pixel."""
        x, y, width, _, _ = self.letters[code]
        return min(j for j in range(self.height) if any(self.rows[y + j][x : x + width]))


def shrink(pixels):
    pixels = {place: value for place, value in pixels.items() if value}
    left = min((x for x, y in pixels), default=0)
    top = min((y for x, y in pixels), default=0)
    return {(x - left, y - top): value for (x, y), value in pixels.items()}



class Peer:
    """FreeType, asked through its exported calls alone."""

    def __init__(self, path, size):
        self.lib = ctypes.CDLL("libfreetype.so.6")
        library, self.face = ctypes.c_void_p(), ctypes.c_void_p()
        assert not self.lib.FT_Init_FreeType(ctypes.byref(library))
        assert not self.lib.FT_New_Face(library, path.encode(), ctypes.c_long(0), ctypes.byref(self.face))
        assert not self.lib.FT_Set_Pixel_Sizes(self.face, 0, size)

    def index(self, code):
        return self.lib.FT_Get_Char_Index(self.face, ctypes.c_ulong(ord(bytes([code]).decode("cp1252"))))

    def step(self, code):
        advance = ctypes.c_long()
        assert not self.lib.FT_Get_Advance(self.face, self.index(code), LOAD_MONO, ctypes.byref(advance))
        return (advance.value + 0x8000) >> 16


def grow(plain, edge):
    around = [(x, y) for x in (-1, 0, 1) for y in (-1, 0, 1)] if edge == "outline" else [(1, 1)]
    grown = {(x + i, y + j): DARK for x, y in plain for i, j in around}
    grown.update(plain)
    return shrink(grown)


def main():
    peer = Peer(sys.argv[1], int(sys.argv[2]))
    plain = Font(sys.argv[3])
    codes = [*range(32, 127), *range(160, 255)]
    bad = []

    def compare_steps(font, spacing):
        bad.extend(f"step of {c}: {font.step(c)}" for c in codes if font.step(c) != peer.step(c) + spacing)

    compare_steps(plain, int(sys.argv[4]))
    if plain.letters[10][3:] != (3, plain.line) or plain.letters[0][3] != 1 or plain.letters[9][3] != 103:
        bad.append("control codes")
    # Capitals start in one row, and small letters below it.
    if len({plain.base(ord(c)) for c in "HIKLMNTX"}) != 1 or plain.base(ord("x")) <= plain.base(ord("X")):
        bad.append("base line")
    letters = [c for c in codes if c not in (32, 160)]
    bad.extend(f"pixels of {c}" for c in letters if set(plain.pixels(c).values()) != {255})
    for n in range(5, len(sys.argv), 3):
        edged, edge = Font(sys.argv[n]), sys.argv[n + 2]
        compare_steps(edged, int(sys.argv[n + 1]))
        bad.extend(f"{edge} of {c}" for c in letters if edged.pixels(c) != grow(plain.pixels(c), edge))
    print("\n".join(bad[:10]))
    sys.exit(bool(bad))


main()
