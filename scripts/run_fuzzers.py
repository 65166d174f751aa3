#!/usr/bin/env python3
"""Runs each fuzzer over its corpus for some seconds; what it finds new is kept out of the tree.

run_fuzzers.py BUILD-FOLDER SECONDS"""
import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent


def run(program, seconds):
    reader = program.name.removesuffix("_fuzz")
    corpus = ROOT / "fuzz" / "corpus" / reader
    dictionary = ROOT / "fuzz" / "dict" / f"{reader}.dict"
    with tempfile.TemporaryDirectory() as found:
        command = [program, f"-max_total_time={seconds}", "-print_final_stats=1", "-timeout=10", "-rss_limit_mb=2048",
                   f"-artifact_prefix={found}/", found, corpus]
        if dictionary.exists():
            command.insert(1, f"-dict={dictionary}")
        result = subprocess.run(command, check=False, capture_output=True, text=True)
    runs = re.search(r"number_of_executed_units: *(\d+)", result.stderr)
    passed = result.returncode == 0
    report = f"{reader}: {runs.group(1) if runs else '?'} runs in {seconds} s, {'nothing found' if passed else 'FAILED'}"
    return passed, report if passed else f"{report}\n{result.stderr[-6000:]}"


def main():
    build, seconds = pathlib.Path(sys.argv[1]), int(sys.argv[2])
    programs = sorted((build / "fuzz").glob("*_fuzz"))
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for passed, report in pool.map(run, programs, [seconds] * len(programs)):
            failed += not passed
            print(report, flush=True)
    print(f"{len(programs) - failed} passed, {failed} failed")
    return 1 if failed or not programs else 0


if __name__ == "__main__":
    sys.exit(main())
