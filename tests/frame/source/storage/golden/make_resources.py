"""Writes the resource files of this folder: one of each version, by the description of the format alone.

make_resources.py FOLDER
"""
import struct
import sys
import zlib
from pathlib import Path

HEADER = b"Tessarine Resource File\r\n"
ZLIB_ID = b"443752F15680439CAC5CB48A13A8D6DE"
FOLDER, FILE, COMPRESSED, UTF8 = 1, 2, 4, 8
TEXT = b"<skin>" + b"<item gain=\"-12\"/>" * 40 + b"</skin>\n"
NOISE = bytes((i * i * 7 + i // 3) & 0xFF for i in range(300))

# names, then bytes of a file (with "packed" behind it to be compressed) or the content of a folder
TREE = [
    ("bitmaps", [("Häkchen ✓.png", NOISE[::-1]), ("back.png", NOISE), ("empty", [])]),
    ("nothing.txt", b""),
    ("skin.xml", TEXT, "packed"),
]


def name_bytes(name):
    return (b"" if name.isascii() else b"\xef\xbb\xbf") + name.encode() + b"\0"


class Writer:
    def __init__(self, version, packs):
        self.version, self.packs = version, packs
        self.data, self.table, self.count = bytearray(HEADER), bytearray(), 0

    def entry(self, flags, offset, sizes, name):
        self.table += struct.pack("<i", flags | UTF8)
        self.table += struct.pack(f"<{1 + len(sizes)}{'q' if self.version >= 3 else 'i'}", offset, *sizes)
        self.table += name_bytes(name)
        self.count += 1

    def file(self, name, content, packed):
        stored = zlib.compress(content, 9) if packed else content
        offset = len(self.data)
        self.data += stored
        if packed:
            self.entry(FILE | COMPRESSED, offset, [len(stored), len(content)], name)
        else:
            self.entry(FILE, offset, [len(stored)], name)

    def folder(self, children):
        for name, content, *how in children:
            if isinstance(content, bytes):
                self.file(name, content, how and self.packs)
                continue
            self.entry(FOLDER, 0, [0], name)
            self.folder(content)
            self.entry(FOLDER, 0, [0], "..")

    def bytes(self):
        self.folder(TREE)
        ending = b"" if self.version == 1 else ZLIB_ID if self.packs else bytes(32)
        numbers = len(self.table), self.count, len(ending) + 16
        magic = {1: b"SRFF", 2: b"SRF2", 3: b"SRF3"}[self.version]
        return bytes(self.data + self.table + ending + struct.pack("<3i", *numbers) + magic)


def main():
    for name, version, packs in [("v1", 1, False), ("v2", 2, True), ("v2plain", 2, False), ("v3", 3, True)]:
        Path(sys.argv[1], f"resources-{name}.srf").write_bytes(Writer(version, packs).bytes())


if __name__ == "__main__":
    main()
