"""What the products show to the loader, and what they load: host and module must never meet in a symbol."""
import os
import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(os.environ.get("TALV_SOURCE_DIR", pathlib.Path(__file__).resolve().parents[2]))
BUILD = pathlib.Path(os.environ.get("TALV_BUILD_DIR", ROOT / "build/debug"))
ENTRIES = {"GetPluginFactory", "InitModule", "DeinitModule", "bundleEntry", "bundleExit"}
OF_EXTENSION = re.compile(r"((vtable|VTT|typeinfo|typeinfo name|guard variable) for |(non-)?virtual thunk to )?"
                          r"(TALV|TALV_HWSetup)::[\w~:]+(\[abi:\w+\])?(\(.*\)( const)?)?(::\w+)?")
OURS = re.compile(r"\b(Tessarine|TALV|TALV_HWSetup)::")
WINDOWS = re.compile(r"lib(X11|xcb|xkbcommon|cairo|pango|gtk|gdk|fontconfig|wayland|Qt)", re.I)


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True, timeout=60).stdout


def exported(file):
    """The names as the linker has them, and for people."""
    names = [line.split()[-1].partition("@")[0] for line in output_of("nm", "-D", "--defined-only", file).splitlines()]
    shown = subprocess.run(["c++filt"], check=True, input="\n".join(names), capture_output=True, text=True).stdout
    return list(zip(names, shown.splitlines()))


def loaded_by(file):
    return re.findall(r"^\s*(\S+)", output_of("ldd", file), re.M)


class Symbols(unittest.TestCase):
    def setUp(self):
        found = list(BUILD.glob("lib/talv-host/Components/*.bundle/Contents/*/*.so"))
        self.assertEqual(len(found), 1)
        self.module = found[0]

    def test_the_module_shows_its_entries_and_the_extensions_classes(self):
        symbols = exported(self.module)
        names = {name for name, _ in symbols}
        self.assertLessEqual(ENTRIES, names)
        others = [shown for name, shown in symbols if name not in ENTRIES and not OF_EXTENSION.fullmatch(shown)]
        self.assertEqual(others, [])
        for each in ("TALV::TALV_Manager::initialize(Tessarine::FUnknown*)", "TALV_HWSetup::MainWindowManager::k_classId",
                     "TALV::TALV_PrmAccessor::totalDevices() const", "vtable for TALV::TALV_Manager"):
            self.assertIn(each, [shown for _, shown in symbols])

    def test_the_script_engine_shows_its_entries_alone(self):
        [engine] = BUILD.glob("lib/tessarine/Components/*.bundle/Contents/*/*.so")
        self.assertEqual({name for name, _ in exported(engine)}, {"GetPluginFactory", "bundleEntry", "bundleExit"})

    def test_nobody_else_needs_the_interpreter(self):
        for file in (self.module, *(BUILD / "bin" / name for name in ("talv-host", "talv-sim", "srfpack"))):
            self.assertEqual([name for name in loaded_by(file) if name.startswith("liblua")], [], file.name)

    def test_a_program_shows_nothing_of_ours(self):
        for program in ("talv-host", "talv-sim", "srfpack"):
            found = [shown for name, shown in exported(BUILD / "bin" / program)
                     if name in ENTRIES or OURS.search(shown)]
            self.assertEqual(found, [], program)

    def test_no_unique_symbols(self):
        for file in (self.module, BUILD / "bin/talv-host"):
            unique = [line for line in output_of("nm", "-D", file).splitlines() if re.search(r"\bu\b", line)]
            self.assertEqual(unique, [], f"{file.name}: these pin the module, and are shared with the host")

    def test_no_window_system_is_loaded(self):
        for file in (self.module, *(BUILD / "bin" / name for name in ("talv-host", "talv-sim", "srfpack"))):
            self.assertEqual([name for name in loaded_by(file) if WINDOWS.match(name)], [], file.name)

    def test_nothing_of_the_extension_is_linked_into_the_host(self):
        # its own copy of the framework the host has, hidden
        shown = subprocess.run(["nm", "-C", "--defined-only", BUILD / "bin/talv-host"], check=True,
                               capture_output=True, text=True).stdout
        self.assertEqual(re.findall(r" (?:TALV::TALV_Manager|TALV::TALV_PrmAccessor)::.*", shown), [])


if __name__ == "__main__":
    unittest.main()
