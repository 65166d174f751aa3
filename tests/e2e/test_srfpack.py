"""srfpack as its users have it: exit codes, one line on what went wrong, and nothing written where it doesn't belong."""
import json
import os
import pathlib
import pty
import resource
import signal
import struct
import subprocess
import tempfile
import time
import unittest
import xml.etree.ElementTree
import zlib

from harness import BIN, ROOT

GOLDEN = ROOT / "tests" / "frame" / "source" / "storage" / "golden"
HEADER = b"Tessarine Resource File\r\n"
ZLIB_ID = b"443752F15680439CAC5CB48A13A8D6DE"

SCROLLBAR = ("back", "handle_base", "handle_top", "handle_bottom", "handle_center")
BITMAPS = {"back_ha_remote", "back_ha_remote_no_scrl", "hs_scroll_up", "hs_scroll_down",
           *(f"hs_scrollbar_{part}" for part in SCROLLBAR)}


def entry(name, flags=10, offset=25, size=3, full=None):
    numbers = [offset, size] if full is None else [offset, size, full]
    return struct.pack(f"<i{len(numbers)}q", flags, *numbers) + name + b"\0"


CLOSING = entry(b"..", 9, 0, 0)


def archive(*entries, data=b"abc", engine=ZLIB_ID):
    """Of version 3."""
    table = b"".join(entries)
    return HEADER + data + table + engine + struct.pack("<3i", len(table), len(entries), 48) + b"SRF3"


def write_sparse(path, size, table, count):
    """Of version 1, with so many bytes of zeros before the table's."""
    with path.open("wb") as file:
        file.write(HEADER)
        file.seek(25 + size)
        file.write(table + struct.pack("<3i", len(table) or size, count, 16) + b"SRFF")


def run(*words, code=0, **options):
    done = subprocess.run([BIN / "srfpack", *words], capture_output=True, timeout=120, **options)
    assert done.returncode == code, f"{words}: {done.returncode}, {done.stderr}"
    assert (code == 0 and done.stderr == b"") or (code and done.stderr.count(b"\n") == 1), done.stderr
    return done.stderr if code else done.stdout


class FolderTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.file = self.folder / "x.srf"

    def tree(self, **files):
        folder = self.folder / "tree"
        folder.mkdir()
        for name, content in files.items():
            (folder / name).write_bytes(content)
        return folder

    def names(self):
        return sorted(path.relative_to(self.folder).as_posix() for path in self.folder.rglob("*"))


class Packing(FolderTest):
    def test_what_is_packed_comes_back(self):
        for golden in sorted(GOLDEN.glob("*.srf")):
            with self.subTest(golden.name):
                out = self.folder / golden.stem
                run("extract", golden, out)
                for option in ((), ("--compress",)):
                    run("create", *option, out, self.file)
                    run("verify", self.file)
                    run("extract", self.file, self.folder / "again")
                    subprocess.run(["diff", "-r", out, self.folder / "again"], check=True)
                    first = self.file.read_bytes()
                    run("create", *option, out, self.file)
                    self.assertEqual(self.file.read_bytes(), first)

    def test_list_tells_the_table(self):
        rows = json.loads(run("list", "--json", GOLDEN / "resources-v3.srf"))
        self.assertEqual([row["path"] for row in rows], ["bitmaps", "bitmaps/Häkchen ✓.png", "bitmaps/back.png",
                                                         "bitmaps/empty", "nothing.txt", "skin.xml"])
        self.assertEqual(rows[0], {"path": "bitmaps", "folder": True, "offset": 0, "stored": 0, "size": 0, "compressed": False})
        self.assertEqual((rows[5]["size"], rows[5]["compressed"]), (734, True))
        self.file.write_bytes(archive(entry(b"\x1b[2J", size=1), entry("\ufeff\x9b2J".encode(), offset=26, size=1)))
        shown = run("list", self.file)
        self.assertIn(b"\\x1b[2J", shown)
        self.assertNotIn(b"\x9b", shown)

    def test_replace_and_compact_keep_the_rest_and_rewrite_only_the_file_itself(self):
        run("extract", GOLDEN / "resources-v3.srf", self.folder / "out")
        name = "n" * 250 + ".srf"
        file, link, mine = (self.folder / each for each in (name, "link.srf", f"~{name}"))
        file.write_bytes((GOLDEN / "resources-v3.srf").read_bytes())
        file.chmod(0o640)
        link.symlink_to(file.name)
        mine.write_bytes(b"mine")
        new = self.folder / "out" / "bitmaps" / "back.png"
        new.write_bytes(b"new" * 1000)
        run("replace", link, "bitmaps/back.png", new)
        run("compact", link)
        run("extract", file, self.folder / "again")
        subprocess.run(["diff", "-r", self.folder / "out", self.folder / "again"], check=True)
        self.assertTrue(link.is_symlink())
        self.assertEqual(file.stat().st_mode & 0o777, 0o640)
        self.assertEqual(sorted(self.folder.glob("*srf*")), sorted((file, link, mine)))
        self.assertEqual(mine.read_bytes(), b"mine")

    def test_what_cannot_be_packed_is_named_and_nothing_written(self):
        obstacles = [lambda tree: os.close(os.open(os.fsencode(tree) + b"/\xff", os.O_CREAT)),
                     lambda tree: os.truncate(tree / "a", 2**31), lambda tree: os.mkfifo(tree / "pipe"),
                     lambda tree: (tree / "dangling").symlink_to("nowhere")]
        for number, obstacle in enumerate(obstacles):
            with self.subTest(number):
                tree = self.tree(a=b"a")
                obstacle(tree)
                run("create", tree, self.file, code=1)
                self.assertFalse(self.file.exists())
                subprocess.run(["rm", "-r", tree], check=True)
        tree, pipe = self.tree(), self.folder / "pipe"
        os.mkfifo(pipe)
        for words in (("no-folder", self.file), (self.folder, self.file), (tree, self.folder / "no" / "x.srf"),
                      (tree, f"{self.folder}/no/"), (tree, pipe)):
            run("create", *words, code=1)
        self.assertTrue(pipe.is_fifo())

    def test_links_to_files_are_read_those_to_folders_passed_over_and_progress_is_for_a_terminal(self):
        tree = self.tree(a=bytes(1 << 20))
        (tree / "link").symlink_to("a")
        (tree / "loop").symlink_to("..")
        host, terminal = pty.openpty()
        done = subprocess.run([BIN / "srfpack", "create", tree, self.file], stderr=terminal, timeout=60)
        os.close(terminal)
        self.assertEqual((done.returncode, b"100%" in os.read(host, 1000)), (0, True))
        os.close(host)
        self.assertEqual([row["path"] for row in json.loads(run("list", "--json", self.file))], ["a", "link"])

    def test_a_signal_leaves_nothing_half_written(self):
        tree, size = self.tree(a=b""), 1 << 29
        os.truncate(tree / "a", size)
        write_sparse(self.file, size, struct.pack("<3i", 10, 25, size) + b"a\0", 1)
        before, stamp = self.names(), self.file.stat()
        for words in (("create", tree, self.file), ("extract", self.file, self.folder / "out"),
                      ("compact", self.file), ("replace", self.file, "a", tree / "a")):
            with self.subTest(words[0]):
                running = subprocess.Popen([BIN / "srfpack", *words], stderr=subprocess.PIPE)
                while running.poll() is None and not [name for name in self.names() if name not in (*before, "out")]:
                    time.sleep(0.001)
                running.terminate()
                said = running.communicate(timeout=60)[1]
                self.assertEqual((running.returncode, said), (-signal.SIGTERM, b""))
                self.assertEqual([name for name in self.names() if name != "out"], before)
                self.assertEqual(self.file.stat().st_ino, stamp.st_ino)

    def test_a_full_disk_is_named_and_leaves_nothing(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (100_000, 100_000))

        tree = self.tree(a=bytes(200_000))
        run("create", tree, self.file)
        old, names = self.file.read_bytes(), self.names()
        for words in (("create", tree, self.file), ("extract", self.file, self.folder), ("compact", self.file),
                      ("replace", self.file, "a", tree / "a")):
            with self.subTest(words[0]):
                self.assertIn(b": File too large", run(*words, code=1, preexec_fn=limit))
                self.assertEqual((self.names(), self.file.read_bytes()), (names, old))
        with open("/dev/full", "wb") as full:
            for words in (("srfpack", "--help"), ("srfpack", "list", self.file), ("srfpack", "list", "--json", self.file),
                          ("talv-sim", "--help"), ("talv-host", "--help")):
                done = subprocess.run([BIN / words[0], *words[1:]], stdout=full, stderr=subprocess.PIPE, timeout=60)
                why = f"{words[0]}: standard output: No space left on device\n".encode()
                self.assertEqual((done.returncode, done.stderr), (1, why))

    def test_bad_usage(self):
        for words in ("", "pack", "a\nb", "list", "list a b", "list --compress a", "--bogus", "verify "):
            with self.subTest(words):
                run(*(words.split(" ") if words else ()), code=2)


class Skin(FolderTest):
    def test_the_bundle_has_the_window_and_each_bitmap_that_its_skin_names(self):
        [packed] = (BIN.parent / "lib").rglob("TALV.srf")
        run("extract", packed, self.folder / "skin")
        skin = xml.etree.ElementTree.parse(self.folder / "skin" / "skin.xml")
        self.assertEqual([each.get("name") for each in skin.iter("template")], ["VOREN_HARemoteSetupWindow"])
        bitmaps = {each.get("name"): (self.folder / "skin" / each.get("path")).read_bytes() for each in skin.iter("bitmap")}
        self.assertEqual(set(bitmaps), BITMAPS)
        self.assertTrue(all(content.startswith(b"\x89PNG") for content in bitmaps.values()))


class Hostile(FolderTest):
    def test_nothing_is_written_from_a_damaged_file(self):
        packed = zlib.compress(bytes(100000))
        bad_sum = packed[:-1] + bytes([packed[-1] ^ 1])
        files = {
            "leads up": archive(entry(b"../up")),
            "up alone": archive(entry(b"..")),
            "no name": archive(entry(b"")),
            "bad UTF-8": archive(entry(b"\xef\xbb\xbf\xff")),
            "twice": archive(entry(b"a", size=1), entry(b"a", offset=26, size=1)),
            "file and folder": archive(entry(b"a", 9, 0, 0), CLOSING, entry(b"a")),
            "overlaps": archive(entry(b"a"), entry(b"b", offset=26, size=1)),
            "in the header": archive(entry(b"a", offset=24)),
            "past the end": archive(entry(b"a", size=4)),
            "far past the end": archive(entry(b"a", offset=2**62, size=2**62)),
            "negative size": archive(entry(b"a", size=-3)),
            "open folder": archive(entry(b"a", 9, 0, 0), entry(b"b")),
            "deep": archive(*[entry(b"a", 9, 0, 0)] * 10000, *[CLOSING] * 10000),
            "compressed, unsaid": archive(entry(b"a", 14, full=3), engine=bytes(32)),
            "unknown engine": archive(entry(b"a"), engine=b"0" * 31 + b"1"),
            "bomb": archive(entry(b"a", 14, size=len(packed), full=2**60), data=packed),
            "more than it says": archive(entry(b"a", 14, size=len(packed), full=99999), data=packed),
            "less than it says": archive(entry(b"a", 14, size=len(packed), full=100001), data=packed),
            "cut checksum": archive(entry(b"a", 14, size=len(packed) - 2, full=100000), data=packed[:-2]),
            "bad checksum": archive(entry(b"a", 14, size=len(packed), full=100000), data=bad_sum),
            "no file": b"",
            "another file": b"PK" * 100,
        }
        out = self.folder / "out"
        for name, content in files.items():
            self.file.write_bytes(content)
            for words in (["extract", self.file, out], ["verify", self.file], ["compact", self.file]):
                with self.subTest(name, command=words[0]):
                    said = run(*words, code=1)
                    self.assertEqual(b"Compression not supported!" in said, name == "unknown engine")
                    self.assertEqual(self.names(), ["x.srf"])
            self.assertEqual(self.file.read_bytes(), content)

    def test_links_below_the_target_are_not_followed(self):
        self.file.write_bytes(archive(entry(b"f", 9, 0, 0), entry(b"a"), CLOSING))
        elsewhere = self.folder / "elsewhere"
        elsewhere.mkdir()
        (elsewhere / "a").write_bytes(b"old")
        links = ("f", "../elsewhere"), ("f/a", "../../elsewhere/a"), ("f/a", "nowhere"), ("f/a", None)
        for number, (name, target) in enumerate(links):
            with self.subTest(name):
                link = self.folder / f"out-{number}" / name
                link.parent.mkdir(parents=True)
                link.symlink_to(target) if target else link.hardlink_to(elsewhere / "a")
                said = run("extract", self.file, self.folder / f"out-{number}", code=1 if target else 0)
                self.assertIn(f"{link}: a link".encode() if target else b"", said)
                self.assertEqual((elsewhere / "a").read_bytes(), b"old")

    @unittest.skipUnless(os.sysconf("SC_PHYS_PAGES") * os.sysconf("SC_PAGE_SIZE") < 48 << 30, "it has memory for that")
    def test_a_table_that_no_memory_holds_is_refused(self):
        count = (2**31 - 1) // 13
        write_sparse(self.file, count * 13, b"", count)  # zeros are entries without a name
        self.assertIn(b"memory", run("list", self.file, code=1))

    def test_a_failure_keeps_the_old_file(self):
        self.file.write_bytes(archive(entry(b"a")))
        old = self.file.read_bytes()
        for words in (["b", self.file], ["a", self.folder / "missing"], ["a", self.folder], ["a", "/dev/zero"]):
            run("replace", self.file, *words, code=1)
        self.assertEqual((self.names(), self.file.read_bytes()), (["x.srf"], old))
        large = self.folder / "large"
        large.write_bytes(b"")
        os.truncate(large, 2**31 - 26)
        self.file.write_bytes(archive(entry(b"a", size=1), entry(b"b", offset=26, size=2), engine=bytes(32)))
        self.assertIn(b"2 GiB", run("replace", self.file, "a", large, code=1))


if __name__ == "__main__":
    unittest.main()
