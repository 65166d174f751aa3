#!/usr/bin/env python3
"""clang-tidy over what changed against the last landing, or over all sources. A changed header stands for its source.

check_tidy.py BUILD-FOLDER changed|all"""
import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
BEFORE = ("origin/main", "HEAD~10")  # the first that this clone knows


def git(*arguments):
    result = subprocess.run(["git", "-C", ROOT, *arguments], check=False, capture_output=True, text=True)
    return result.stdout.split("\n") if result.returncode == 0 else None


def changed_files():
    for before in BEFORE:
        base = git("merge-base", "HEAD", before)
        if base and base[0] != git("rev-parse", "HEAD")[0]:
            return set(git("diff", "--name-only", base[0])) | set(git("ls-files", "--others", "--exclude-standard"))
    return set(git("ls-files"))  # too young to say


def source_of(name):
    """A header's source, wherever headers that others include stand."""
    return re.sub(r"\.h$", ".cpp", re.sub("^frame/include/", "frame/source/", name))


def sources(build, which):
    compiled = {pathlib.Path(entry["file"]).resolve() for entry in json.loads((build / "compile_commands.json").read_text())}
    outside = ROOT / "build", ROOT / "tests"  # the analyzer takes as long for tests as for all the rest
    inside = {path for path in compiled
              if path.is_relative_to(ROOT) and not any(path.is_relative_to(each) for each in outside)}
    if which == "all":
        return sorted(inside)
    changed = {(ROOT / source_of(name)).resolve() for name in changed_files()}
    return sorted(inside & changed)


def check(build, source):
    command = ["clang-tidy-16", "-p", build, "--quiet", "--extra-arg=-Wno-unknown-warning-option",
               "--extra-arg=-Wno-ignored-optimization-argument", source]
    return source, subprocess.run(command, check=False, capture_output=True, text=True)


def main():
    build, which = pathlib.Path(sys.argv[1]), sys.argv[2]
    files, failed = sources(build, which), 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for source, result in pool.map(lambda each: check(build, each), files):
            if result.returncode:
                failed += 1
                print(f"{source.relative_to(ROOT)}:\n{result.stdout}{result.stderr}")
    print(f"{len(files) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
