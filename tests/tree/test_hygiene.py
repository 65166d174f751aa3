"""What every file of the tree owes: its form, no words of another house, no paths of one machine."""
import pathlib
import re
import shutil
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
FORMATTER = "clang-format-16"
UNWANTED = (
    (re.compile(r"(^|[^\w.])/(work|farm|root)/"), "a path of one machine"),
    (re.compile(r"https?://\S*(debian|npmjs|pypi|proxy)", re.I), "a host of a registry"),
    (re.compile(r"\b(specifica" r"tion|spec\.m" r"d)\b|\bPart [0-9]{1,2}\.[0-9]", re.I), "a text outside the tree"),
    (re.compile(r"\b(TO" r"DO|FIX" r"ME|X" r"XX|HA" r"CK)\b"), "something left undone"),
)


def tree_files():
    listed = subprocess.run(["git", "-C", ROOT, "ls-files", "--cached", "--others", "--exclude-standard"], check=True,
                            capture_output=True, text=True).stdout.split("\n")
    return [ROOT / name for name in listed
            if name and not name.startswith("fuzz/corpus/") and not name.endswith(".png") and (ROOT / name).is_file()]


class Hygiene(unittest.TestCase):
    def test_texts_speak_of_the_tree_alone(self):
        for path in tree_files():
            text = path.read_bytes().decode("utf-8", errors="replace")
            for number, line in enumerate(text.splitlines(), 1):
                for pattern, what in UNWANTED:
                    self.assertIsNone(pattern.search(line), f"{path.relative_to(ROOT)}:{number} names {what}")

    def test_text_files_end_and_break_as_agreed(self):
        for path in tree_files():
            if path.suffix in (".cpp", ".h", ".py", ".md", ".txt", ".cmake", ".sh"):
                data = path.read_bytes()
                self.assertNotIn(b"\r\n", data, path)
                self.assertTrue(not data or data.endswith(b"\n"), path)

    @unittest.skipUnless(shutil.which(FORMATTER), "no formatter here")
    def test_the_formatter_has_the_last_word(self):
        files = [path for path in tree_files() if path.suffix in (".cpp", ".h")]
        result = subprocess.run([FORMATTER, "--dry-run", "--Werror", *files], check=False, capture_output=True, text=True)
        self.assertEqual(result.returncode, 0, result.stderr[:4000])


if __name__ == "__main__":
    unittest.main()
