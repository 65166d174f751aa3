"""The floors of the house stay as they are drawn."""
import os
import pathlib
import shutil
import unittest

from floors_check import ROOT, Floors, check_dependencies, check_text, check_tree

FLOORS = Floors((ROOT / "cmake" / "floors.txt").read_text())


class Tree(unittest.TestCase):
    def test_nothing_includes_up_or_sideways(self):
        count, complaints = check_tree(FLOORS)
        self.assertGreater(count, 100)
        self.assertEqual(complaints, [])

    @unittest.skipUnless(shutil.which("ninja") and pathlib.Path(os.environ.get("TALV_BUILD_DIR", ""), "build.ninja").exists(),
                         "no Ninja build at hand")
    def test_the_compiler_reads_nothing_else(self):
        self.assertEqual(check_dependencies(FLOORS, os.environ["TALV_BUILD_DIR"]), [])


class Check(unittest.TestCase):
    """The check itself: planted faults are found, with their line."""

    ROWS = (
        ("base/source/planted.cpp", '#include "gui/uctrler.h"', "base/source/planted.cpp:2"),
        ("pluginterfaces/base/planted.h", '#include "base/source/fobject.h"', "planted.h:2"),
        ("frame/source/storage/planted.cpp", '#include "host/remote.h"', "planted.cpp:2"),
        ("host/planted.cpp", '#include "source/TALV_Extension/TALV_Manager.h"', "planted.cpp:2"),
        ("frame/source/gui/planted.cpp", "#include <glib.h>", None),
        ("frame/source/gui/uctrler_planted.cpp", "#include <glib.h>", "may not name GLib"),
        ("host/planted.cpp", "#include <xcb/xcb.h>", "may not name Windows"),
    )

    def test_planted_faults_are_found(self):
        for path, line, expected in self.ROWS:
            with self.subTest(path=path, line=line):
                complaints = check_text(FLOORS, path, f"// a file\n{line}\n")
                self.assertTrue(complaints)
                if expected:
                    self.assertIn(expected, complaints[0])

    def test_what_is_allowed_passes(self):
        self.assertEqual(check_text(FLOORS, "host/planted.cpp", '#include "gui/uctrler.h"\n#include <vector>\n'), [])


if __name__ == "__main__":
    unittest.main()
