"""Runs the benchmarks of a build and prints their tables: for each program ours beside its peers, then what stands alone.

report.py BUILD_DIR [--quick]     TALV_BUILD_DIR is set for the measures of the whole program

A row "Family<Peer>/argument" stands beside "Family<Ours>/argument"; a row without "<" has no peer. Times are those of
one item, medians over the repetitions of one run; a ratio is ours by the peer's.
"""
import argparse
import json
import os
import re
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
OURS = "Ours"
ROW = re.compile(r"(?P<family>\w+)(?:<(?P<peer>\w+)>)?(?P<argument>/\d+)?")
UNIT_NS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
AIMS_NS = {
    "Notify/1": 12,
    "Notify/8": 3,
    "Notify/100": 2,
    "AddRemove/1": 55,
    "NotifyBesideThread/1": 12,
    "NotifyBesideThread/8": 3,
    "NotifyBesideThread/100": 2,
    "AddRemoveBesideThread/1": 55,
    "Append/1000000": 1.4,
    "OrderedLookup/100000": 40,
    "HashLookup/100000": 8,
    "Utf8ToUtf16Ascii": 50,
    "RoundTripAscii": 100,
    "Utf8ToUtf16Mixed": 500,
    "RoundTripMixed": 1000,
    "Print16": 200,
    "CompareIgnoringCase": 35,
    "CompareNatural": 30,
    "XmlRead/50": 1e9 / 450e3,
    "XmlRead/5000": 1e9 / 450e3,
    "XmlWrite/50": 1e9 / 520e3,
    "XmlWrite/5000": 1e9 / 520e3,
    "WriteBinaryBag/100000": 100,
    "ReadBinaryBag/100000": 200,
    "WriteXmlBag/100000": 450,
    "ReadXmlBag/100000": 800,
    "OpenResources": 150,
    "ReadCompressedResources": 1e9 * 1024 / 680e6,
    "ReadStoredResources": 1e9 * 1024 / 9e9,
    "PackResources": 1e9 * 1024 / 84e6,
    "ParseGainReport": 50,
    "FillRect": 200,
    "DrawNineCells": 2000,
    "DrawLabel": 2900,
    "Desaturate": 0.5,
    "AdjustHSL": 12,
    "Tint": 5,
    "Mirror": 0.3,
    "Rotate": 2.5,
    "Scale/333": 2e6,
    "Scale/1500": 6e6,
    "ModuleLoad": 20e6,
    "StartWithCachedBundles/200": 20e6,
}
NEARLY = 1.1  # what a busy machine adds and takes


def item_ns(result):
    """Processor time of one item, since a busy machine lengthens the other; real time where only that was taken."""
    scale = UNIT_NS[result["time_unit"]]
    if "manual_time" in result["run_name"]:
        return result["real_time"] * scale
    if "items_per_second" in result:
        return 1e9 / result["items_per_second"]
    return result["cpu_time"] * scale


def peers_of(program):
    """Who has rows in the program; None for rows without a peer."""
    listed = subprocess.run([program, "--benchmark_list_tests"], capture_output=True, text=True, check=True).stdout
    return dict.fromkeys(ROW.match(row)["peer"] for row in listed.splitlines())


def run(program, peer, quick):
    """Row -> nanoseconds, of one peer. Each has a process of its own, so that nobody inherits a heap others left."""
    options = ["--benchmark_format=json", "--benchmark_report_aggregates_only=true",
               "--benchmark_filter=" + (f"<{peer}>" if peer else "^[^<]*$")]
    options += ["--benchmark_min_time=0.02", "--benchmark_repetitions=3"] if quick else [
        "--benchmark_min_time=0.1", "--benchmark_repetitions=9"]
    done = subprocess.run([program, *options], capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"{program.name} failed: {done.stderr}")
    times = {}
    for result in json.loads(done.stdout)["benchmarks"]:
        if result.get("error_occurred"):
            sys.exit(f"{result['name']}: {result['error_message']}")
        if result.get("aggregate_name") == "median":
            row = ROW.match(result["run_name"])
            times[row["family"] + (row["argument"] or "")] = item_ns(result)
    return times


def amount_text(row, number):
    """Rows of memory hold bytes."""
    return f"{number:.0f} bytes" if row.startswith("Memory") else time_text(number)


def time_text(nanoseconds):
    for unit in ("ms", "us"):
        if nanoseconds >= UNIT_NS[unit]:
            return f"{nanoseconds / UNIT_NS[unit]:.2f} {unit}"
    return f"{nanoseconds:.2f} ns"


def beside_text(row, ours, theirs):
    return f"{amount_text(row, theirs)} ({ours / theirs:.2f})" if theirs else ""


def verdict(value, aim):
    return "met" if value <= aim else "within 10 %" if value <= aim * NEARLY else "missed"


def print_table(head, rows):
    rows = [head, ["---"] * len(head), *rows]
    widths = [max(len(row[column]) for row in rows) for column in range(len(head))]
    for row in rows:
        print("| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |")
    print(flush=True)


def print_beside_peers(times):
    """One row a benchmark, for each peer its time and ours as a multiple of it."""
    peers = [peer for peer in times if peer not in (None, OURS)]
    if not peers:
        return
    table = []
    for row, ours in times[OURS].items():
        beside = [times[peer].get(row) for peer in peers]
        table.append([row, amount_text(row, ours), *(beside_text(row, ours, each) for each in beside)])
    print_table(["what", "ours", *(f"{peer} (ratio)" for peer in peers)], table)


def print_alone(times, measures):
    table = []
    for row, ours in (times[OURS] | times[None]).items():
        aim = AIMS_NS.get(row)
        if aim or row in times[None]:
            table.append([row, time_text(ours), time_text(aim) if aim else "", verdict(ours, aim) if aim else ""])
    for each in measures:
        value, unit, aim = each["value"], each["unit"], each.get("aim")
        table.append([each["measure"], f"{value:.2f} {unit}", f"{aim} {unit}" if aim else "",
                      verdict(value, aim) if aim else ""])
    print_table(["what", "measured", "aim", ""], table)


def measure_remote(build, quick):
    environment = {**os.environ, "TALV_BUILD_DIR": str(build)}
    done = subprocess.run([sys.executable, "-B", HERE / "remote_measures.py", *(["--quick"] if quick else [])],
                          env=environment, stdout=subprocess.PIPE, text=True)
    if done.returncode != 0:
        sys.exit("remote_measures.py failed")
    return [json.loads(line) for line in done.stdout.splitlines()]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=Path)
    parser.add_argument("--quick", action="store_true", help="fewer repetitions, shorter measures")
    options = parser.parse_args()
    alone = {OURS: {}, None: {}}
    for program in sorted((options.build / "bench").glob("*_bench")):
        times = {OURS: {}}
        for peer in peers_of(program):
            print(f"running {program.name}, {peer or 'no peer'} ...", file=sys.stderr)
            times[peer] = run(program, peer, options.quick)
        alone[OURS].update(times[OURS])
        alone[None].update(times.get(None, {}))
        print_beside_peers(times)
    print("running remote_measures.py ...", file=sys.stderr)
    print_alone(alone, measure_remote(options.build.resolve(), options.quick))


if __name__ == "__main__":
    main()
