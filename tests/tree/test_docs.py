"""What the docs promise is there: links lead somewhere, each folder says what it is for, and options, commands and
parameters of the programs are all told."""
import json
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(os.environ.get("TALV_SOURCE_DIR", pathlib.Path(__file__).resolve().parents[2]))
BIN = pathlib.Path(os.environ.get("TALV_BUILD_DIR", ROOT / "build/debug")) / "bin"
FENCE = re.compile(r"^```.*?^```$", re.M | re.S)
LINK = re.compile(r"\]\(([^()\s]+)\)")
HEADING = re.compile(r"^#+ +(.*)$", re.M)
HIDDEN_OR_BUILT = re.compile(r"^(\.|build$|__pycache__$)")


def pages():
    skipped = {ROOT / "build", ROOT / ".git"}
    for folder, names, files in os.walk(ROOT):
        names[:] = [name for name in names if pathlib.Path(folder, name) not in skipped]
        yield from (pathlib.Path(folder, name) for name in files if name.endswith(".md"))


def prose(page):
    return FENCE.sub("", page.read_text(encoding="utf-8"))


def anchors(page):
    """As the usual viewers make them of headings."""
    return {re.sub(r"[^\w\- ]", "", text.strip().lower()).replace(" ", "-") for text in HEADING.findall(prose(page))}


def help_of(program):
    return subprocess.run([BIN / program, "--help"], check=True, capture_output=True, text=True, timeout=30).stdout


def dead_links(page):
    for link in LINK.findall(prose(page)):
        if re.match(r"[a-z]+:", link):
            continue
        path, _, anchor = link.partition("#")
        target = page.parent / path if path else page
        if not target.exists() or (anchor and anchor not in anchors(target)):
            yield link


class Docs(unittest.TestCase):
    def test_links_lead_somewhere(self):
        found = list(pages())
        self.assertGreater(len(found), 10)
        for page in found:
            with self.subTest(page.relative_to(ROOT)):
                self.assertEqual(list(dead_links(page)), [])

    def test_each_top_folder_says_what_it_is_for(self):
        for folder in sorted(path for path in ROOT.iterdir() if path.is_dir() and not HIDDEN_OR_BUILT.match(path.name)):
            with self.subTest(folder.name):
                self.assertTrue((folder / "README.md").exists())

    def test_man_pages_tell_each_option(self):
        for program in ("talv-host", "talv-sim", "srfpack"):
            page = (ROOT / "man" / f"{program}.1").read_text(encoding="utf-8")
            told = set(re.findall(r"Fl Fl ([a-z-]+)", page))
            offered = set(re.findall(r"--([a-z][a-z-]+)", help_of(program)))
            with self.subTest(program):
                self.assertEqual(told, offered)

    def test_the_console_page_tells_each_command(self):
        page = (ROOT / "docs" / "console.md").read_text(encoding="utf-8")
        with tempfile.TemporaryDirectory() as folder:
            run = subprocess.run([BIN / "talv-host", "--console", "--serial-dir", folder, "--user-folder", folder],
                                 input="help\n", check=True, capture_output=True, text=True, timeout=60)
        replies = [json.loads(line) for line in run.stdout.splitlines()]
        commands = next(reply["commands"] for reply in replies if "reply" in reply)
        self.assertEqual([command for command in commands if f"`{command}`" not in page], [])

    def test_both_pages_tell_each_parameter(self):
        header = (ROOT / "host" / "remote.h").read_text(encoding="utf-8")
        params = re.findall(r'\{"(\w+)",\s+TALV::kPrm', header)
        self.assertGreater(len(params), 0)
        for page in ("docs/console.md", "man/talv-host.1"):
            text = (ROOT / page).read_text(encoding="utf-8")
            with self.subTest(page):
                self.assertEqual([param for param in params if not re.search(rf"\b{param}\b", text)], [])


if __name__ == "__main__":
    unittest.main()
