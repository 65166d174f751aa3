"""Measures of the whole program: talv-host with the extension, on a pseudo-terminal whose other end is in this script.

remote_measures.py [--quick]      prints one JSON object for each measure
"""
import argparse
import json
import os
import random
import select
import statistics
import sys
import tempfile
import threading
import time
import tty
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tests" / "e2e"))
from harness import Host, frame  # noqa: E402

NUM_DEVICES = 32
IDENTIFY, NAME_REQUEST, GAIN_SET, NAME_REPORT, GAIN_REPORT, HERE = 0x00, 0x41, 0x20, 0x81, 0xA0, 0x80
MODE = 3
POLLS_MS = 500 + 50  # the host looks at its port, then takes a frame
OWN_WAY_MS = 20  # for all the rest: two timers that may be late, the pipe to this script


class Line:
    """The devices' end. A thread answers what a host asks when it starts; settings are left unanswered, and their
    time of arrival is kept."""

    def __init__(self, link, devices):
        self.devices = devices
        self.master, self.slave = os.openpty()  # the slave is held, so that the line never hangs up
        tty.setraw(self.slave)
        os.symlink(os.ttyname(self.slave), link)
        self.settings = []  # (time, frame as text)
        self.news = threading.Condition()
        self.ended = False
        self.thread = threading.Thread(target=self._answer, daemon=True)
        self.thread.start()

    def _answer(self):
        pending = b""
        while not self.ended:
            if not select.select([self.master], [], [], 0.2)[0]:
                continue
            pending += os.read(self.master, 4096)
            arrived = time.perf_counter()
            while pending and len(pending) > pending[0]:
                size = pending[0] + 1
                self._take(pending[:size], arrived)
                pending = pending[size:]

    def _take(self, taken, arrived):
        command, device = taken[1], taken[2]
        if command == IDENTIFY:
            for each in self.devices:
                self.say(frame(HERE, each))
        elif command == NAME_REQUEST:
            self.say(frame(NAME_REPORT, device, MODE, *b"HA-8CH  "))
        elif command == GAIN_SET:
            with self.news:
                self.settings.append((arrived, taken.hex(" ").upper()))
                self.news.notify()

    def say(self, text):
        os.write(self.master, bytes.fromhex(text))

    def wait_setting(self, number, timeout=5):
        with self.news:
            if not self.news.wait_for(lambda: len(self.settings) > number, timeout):
                raise AssertionError("the setting never came")
            return self.settings[number]

    def close(self):
        self.ended = True
        self.thread.join()
        os.close(self.master)
        os.close(self.slave)


class Running:
    """A host that has found the devices and has nothing more to do."""

    def __init__(self, num_devices):
        self.folder = tempfile.TemporaryDirectory(prefix="talv-")
        (Path(self.folder.name) / "dev").mkdir()
        self.line = Line(Path(self.folder.name) / "dev" / "tty.bench", range(1, num_devices + 1))
        self.host = Host(self.folder.name)
        self.num_devices = num_devices

    def __enter__(self):
        self.host.wait_ready(30)
        for device in range(1, self.num_devices + 1):
            self.host.wait_value(device, "devName", "HA-8CH  ", timeout=60)
        time.sleep(0.5)
        return self

    def __exit__(self, *failure):
        self.host.stop()
        self.line.close()
        self.folder.cleanup()


def percentile(times, percent):
    return sorted(times)[min(len(times) - 1, int(len(times) * percent / 100))]


def set_to_wire(count):
    """Milliseconds from the command's write to the arrival of its frame, one at a time."""
    times = []
    with Running(1) as running:
        for number in range(count):
            channel, gain = number % 8, 1 + number // 8 % 70
            begin = time.perf_counter()
            running.host.send(f"set 1 gain {channel} {gain}")
            arrived, text = running.line.wait_setting(number)
            if text != frame(GAIN_SET, 1, channel, 72 - gain):
                raise AssertionError(f"another frame came: {text}")
            times.append((arrived - begin) * 1e3)
            time.sleep(random.uniform(0.002, 0.02))  # meets the host in every phase of its polls
    yield {"measure": "set to wire, median", "value": statistics.median(times), "unit": "ms", "aim": 1, "count": count}
    yield {"measure": "set to wire, 99th percentile", "value": percentile(times, 99), "unit": "ms", "aim": 5}


def report_to_value(count):
    """Milliseconds from a report's write to the host's line about the new value."""
    times = []
    with Running(1) as running:
        for number in range(count):
            gain = 1 + number % 70
            mark = running.host.mark()
            begin = time.monotonic()
            running.line.say(frame(GAIN_REPORT, 1, 0, 72 - gain))
            running.host.wait_value(1, "gain", gain, ch=0, since=mark)
            seen = running.host.times(mark, event="value", id=1, param="gain", ch=0)[0]
            times.append((seen - begin) * 1e3)
            time.sleep(random.uniform(0, 0.5))
    yield {"measure": "report to value, median", "value": statistics.median(times), "unit": "ms", "count": count}
    yield {"measure": "report to value, longest", "value": max(times), "unit": "ms", "aim": POLLS_MS + OWN_WAY_MS}


def cpu_seconds(pid):
    fields = Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")  # user and system


def status_sum(files, key):
    return sum(int(line.split()[1]) for file in files for line in file.read_text().splitlines() if line.startswith(key))


def idle(seconds):
    with Running(NUM_DEVICES) as running:
        time.sleep(2)
        process = Path(f"/proc/{running.host.process.pid}")
        threads = [each / "status" for each in (process / "task").iterdir()]
        cpu, wakes = cpu_seconds(process.name), status_sum(threads, "voluntary_ctxt_switches:")
        time.sleep(seconds)
        cpu = cpu_seconds(process.name) - cpu
        wakes = status_sum(threads, "voluntary_ctxt_switches:") - wakes
        memory = status_sum([process / "status"], "VmRSS:")
    yield {"measure": f"idle with {NUM_DEVICES} devices, CPU", "value": 100 * cpu / seconds, "unit": "% of a core",
           "aim": 0.5, "seconds": seconds}
    yield {"measure": f"idle with {NUM_DEVICES} devices, wake-ups", "value": wakes / seconds, "unit": "a second"}
    yield {"measure": f"idle with {NUM_DEVICES} devices, resident memory", "value": memory / 1024, "unit": "MB"}


def main():
    random.seed(1)
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--quick", action="store_true", help="fewer and shorter")
    quick = parser.parse_args().quick
    for measure in (set_to_wire(100 if quick else 1000), report_to_value(5 if quick else 30), idle(5 if quick else 20)):
        for each in measure:
            print(json.dumps(each), flush=True)


if __name__ == "__main__":
    main()
