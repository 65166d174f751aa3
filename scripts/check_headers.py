#!/usr/bin/env python3
"""Compiles every header alone, so that none lives off what others include before it."""
import concurrent.futures
import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = ("pluginterfaces", "base", "frame", "public.sdk", "source", "host", "tools")
WARNINGS = "-Wall -Wextra -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Werror".split()


def glib_flags():
    return subprocess.run(["pkg-config", "--cflags", "glib-2.0"], check=True, capture_output=True, text=True).stdout.split()


def compile_alone(header):
    command = ["clang++-16", "-std=c++20", "-fsyntax-only", "-xc++", "-Wno-pragma-once-outside-header",
               f"-I{ROOT}", f"-I{ROOT / 'frame/include'}", *glib_flags(), *WARNINGS, "-Wno-unused-const-variable",
               str(header)]
    return header, subprocess.run(command, check=False, capture_output=True, text=True)


def main():
    headers = sorted(path for folder in FOLDERS for path in (ROOT / folder).rglob("*.h"))
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for header, result in pool.map(compile_alone, headers):
            if result.returncode:
                failed += 1
                print(f"{header.relative_to(ROOT)} doesn't compile alone:\n{result.stderr}")
    print(f"{len(headers) - failed} passed, {failed} failed")
    return 1 if failed or not headers else 0


if __name__ == "__main__":
    sys.exit(main())
