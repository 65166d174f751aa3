"""Draws the bitmaps of TALV/bitmaps: plain shapes in the colours below. Needs nothing but Python.

make_bitmaps.py FOLDER
"""
import struct
import sys
import zlib
from pathlib import Path

BACK, PANEL, LINE, ACCENT, TEXT = (0x23, 0x26, 0x2B), (0x2E, 0x32, 0x38), (0x45, 0x4B, 0x54), (0x5C, 0xA8, 0xD8), (0xC8,) * 3
CLEAR = (0, 0, 0, 0)
BAR_WIDTH = 12


class Drawing:
    def __init__(self, width, height, color):
        self.rows = [[color] * width for _ in range(height)]

    def box(self, left, top, right, bottom, color):
        """The right and bottom edges are outside."""
        for row in self.rows[top:bottom]:
            row[left:right] = [color] * (right - left)
        return self

    def write(self, path):
        def chunk(kind, data):
            return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
        lines = b"".join(b"\0" + b"".join(bytes(c if len(c) == 4 else (*c, 255)) for c in row) for row in self.rows)
        header = struct.pack(">2I5B", len(self.rows[0]), len(self.rows), 8, 6, 0, 0, 0)
        path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(lines, 9)) +
                         chunk(b"IEND", b""))


def background(with_bar):
    drawing = Drawing(330, 500, BACK).box(0, 0, 330, 62, PANEL).box(0, 62, 330, 63, LINE)
    drawing.box(17, 30, 77, 32, TEXT)  # stands for "Port"
    drawing.box(7, 78, 40, 80, TEXT).box(46, 78, 275, 80, TEXT)  # the two columns
    drawing.box(0, 490, 330, 491, LINE)
    return drawing.box(313, 96, 327, 479, LINE) if with_bar else drawing


def arrow(up):
    drawing = Drawing(BAR_WIDTH, BAR_WIDTH, PANEL)
    for i in range(4):
        row = 4 + i if up else 7 - i
        drawing.box(5 - i, row, 7 + i, row + 1, TEXT)
    return drawing


def drawings():
    yield "back_ha_remote", background(True)
    yield "back_ha_remote_no_scrl", background(False)
    yield "hs_scroll_up", arrow(True)
    yield "hs_scroll_down", arrow(False)
    yield "hs_scrollbar_back", Drawing(BAR_WIDTH, 16, BACK)
    yield "hs_scrollbar_handle_base", Drawing(BAR_WIDTH, 8, LINE)
    yield "hs_scrollbar_handle_top", Drawing(BAR_WIDTH, 4, LINE).box(0, 0, BAR_WIDTH, 1, CLEAR).box(1, 0, 11, 1, ACCENT)
    yield "hs_scrollbar_handle_bottom", Drawing(BAR_WIDTH, 4, LINE).box(0, 3, BAR_WIDTH, 4, CLEAR).box(1, 3, 11, 4, ACCENT)
    center = Drawing(BAR_WIDTH, 9, CLEAR)
    for row in (0, 4, 8):
        center.box(3, row, 9, row + 1, TEXT)
    yield "hs_scrollbar_handle_center", center


def main():
    for name, drawing in drawings():
        drawing.write(Path(sys.argv[1], name + ".png"))


if __name__ == "__main__":
    main()
