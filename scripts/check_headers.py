#!/usr/bin/env python3
"""Compiles every header alone with both compilers, so that none lives off what others include before it."""
import concurrent.futures
import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = ("pluginterfaces", "base", "frame", "public.sdk", "source", "host", "tools")
COMPILERS = ("clang++-16", "g++")
WARNINGS = "-Wall -Wextra -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Werror".split()


def package_flags():
    """Of all libraries that floors.txt finds by pkg-config."""
    lines = (ROOT / "cmake/floors.txt").read_text().splitlines()
    packages = [name for line in lines if line.startswith("pkgconfig") for name in line.partition("=")[2].split()]
    return subprocess.run(["pkg-config", "--cflags", *packages], check=True, capture_output=True, text=True).stdout.split()


def compile_alone(compiler, header, flags):
    """Included by an otherwise empty source: as a main file it would draw remarks that mean nothing here."""
    command = [compiler, "-std=c++20", "-fsyntax-only", "-xc++", f"-I{ROOT}", f"-I{ROOT / 'frame/include'}", *flags,
               *WARNINGS, "-"]
    result = subprocess.run(command, check=False, capture_output=True, text=True, input=f'#include "{header}"\n')
    return compiler, header, result


def main():
    headers = sorted(path for folder in FOLDERS for path in (ROOT / folder).rglob("*.h"))
    flags, failed = package_flags(), 0
    jobs = [(compiler, header) for compiler in COMPILERS for header in headers]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for compiler, header, result in pool.map(lambda job: compile_alone(*job, flags), jobs):
            if result.returncode:
                failed += 1
                print(f"{header.relative_to(ROOT)} doesn't compile alone with {compiler}:\n{result.stderr}")
    print(f"{len(jobs) - failed} passed, {failed} failed")
    return 1 if failed or not headers else 0


if __name__ == "__main__":
    sys.exit(main())
