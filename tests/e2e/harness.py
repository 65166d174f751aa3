"""Starts the programs on real pseudo-terminals, talks to them in JSON Lines, and ends them whatever happens.

TALV_BUILD_DIR  the build tree that holds bin/ (default: build/release of this tree)
TALV_SLOW       multiplies all time-outs (default: 3 with TALV_SANITIZE, as builds with sanitizers have it, otherwise 1)
"""
import contextlib
import json
import os
import select
import shutil
import signal
import subprocess
import tempfile
import threading
import time
import unittest
from pathlib import Path

import jsonschema

ROOT = Path(__file__).resolve().parents[2]
BIN = Path(os.environ.get("TALV_BUILD_DIR", ROOT / "build" / "release")) / "bin"
SLOW = float(os.environ.get("TALV_SLOW", "3" if os.environ.get("TALV_SANITIZE") else "1"))


def frame(command, device, *payload):
    """A frame as text: "05 20 01 03 20 BB"."""
    body = [command, device, *payload]
    whole = [len(body) + 1, *body, ~sum(body) & 0xFF]
    return " ".join(f"{byte:02X}" for byte in whole)


CONSOLE = json.loads((ROOT / "docs" / "console.schema.json").read_text())


def follows_schema(item, *form):
    """Fails when an object of the console hasn't this form of its schema."""
    schema = {"$ref": "/".join(("#/$defs", *form)), "$defs": CONSOLE["$defs"]}
    jsonschema.Draft202012Validator(schema).validate(item)


BROADCAST = frame(0x00, 0)


class Program:
    """A running program. What it prints is kept as (time, object) in the order of its coming."""

    def __init__(self, name, *options, **popen):
        self.name = name
        self.process = subprocess.Popen(
            [BIN / name, *map(str, options)],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, bufsize=1, **popen)
        self.printed = []
        self.errors = ""
        self.news = threading.Condition()
        self.finished = False
        self.threads = [threading.Thread(target=reader, daemon=True) for reader in (self._read, self._read_errors)]
        for thread in self.threads:
            thread.start()

    def _read(self):
        for line in self.process.stdout:
            try:
                item = json.loads(line)
            except ValueError:
                item = {"event": "no JSON", "text": line}
            with self.news:
                self.printed.append((time.monotonic(), item))
                self.news.notify_all()
        with self.news:
            self.finished = True
            self.news.notify_all()

    def _read_errors(self):
        self.errors = self.process.stderr.read()

    def send(self, *lines):
        """All of them in one write."""
        self.process.stdin.write("".join(line + "\n" for line in lines))
        self.process.stdin.flush()

    def mark(self):
        """Where wait() and all() may begin, so that they see only what comes from now on."""
        with self.news:
            return len(self.printed)

    def wait(self, wanted, timeout=5, since=0):
        """The first object for which wanted(object) holds; fails when there is none in time."""
        at = since

        def found():
            nonlocal at
            while at < len(self.printed) and not wanted(self.printed[at][1]):
                at += 1
            return at < len(self.printed) or self.finished
        with self.news:
            self.news.wait_for(found, timeout * SLOW)
            if at < len(self.printed):
                return self.printed[at][1]
            last = [item for _, item in self.printed[-8:]]
        raise AssertionError(f"{self.name}: not seen in {timeout} s; last: {last} {self.errors}")

    def wait_event(self, event, timeout=5, since=0, **fields):
        return self.wait(lambda item: matches(item, event=event, **fields), timeout, since)

    def all(self, since=0, **fields):
        """Every object so far that has these fields."""
        with self.news:
            return [item for _, item in self.printed[since:] if matches(item, **fields)]

    def times(self, since=0, **fields):
        """When each of them was read, for the benchmarks."""
        with self.news:
            return [when for when, item in self.printed[since:] if matches(item, **fields)]

    def end(self, timeout=10):
        """Waits for the end; the exit status, negative for a signal."""
        status = self.process.wait(timeout * SLOW)
        for thread in self.threads:
            thread.join(5 * SLOW)
        return status

    def signal(self, number):
        self.process.send_signal(number)

    def stop(self):
        """Ends it, by force if it must be. Harmless when it has ended."""
        self.process.terminate()
        try:
            self.process.wait(10 * SLOW)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        for thread in self.threads:
            thread.join(5 * SLOW)
        for pipe in (self.process.stdin, self.process.stdout, self.process.stderr):
            with contextlib.suppress(BrokenPipeError):
                pipe.close()


def matches(item, **fields):
    return all(key in item and item[key] == value for key, value in fields.items())


class Sim(Program):
    """talv-sim with --log; the link is there when the constructor returns."""

    REPLIES = ("turned", "raw", "unplugged", "plugged", "state", "help", "error")

    def __init__(self, link, *options, log=True, **popen):
        super().__init__("talv-sim", "--link", link, *options, *(["--log"] if log else []), **popen)
        self.replies = 0
        try:
            self.terminal = self.wait_event("line")["terminal"]
        except AssertionError:
            self.stop()
            raise

    def command(self, line, timeout=5):
        """The event that answers."""
        self.send(line)
        self.replies += 1
        nth = self.replies
        seen = 0

        def is_answer(item):
            nonlocal seen
            seen += item.get("event") in Sim.REPLIES
            return seen == nth
        return self.wait(is_answer, timeout)

    def turn(self, *words):
        answer = self.command("turn " + " ".join(map(str, words)))
        assert answer["event"] == "turned", answer
        return answer

    def raw(self, text):
        answer = self.command("raw " + text)
        assert answer["event"] == "raw", answer

    def state(self, device):
        return self.command(f"state {device}")

    def heard(self, since=0, device=None):
        """The host's frames so far, as text."""
        fields = {} if device is None else {"id": device}
        return [item["bytes"] for item in self.all(since, event="rx", **fields)]

    def wait_heard(self, text, timeout=5, since=0):
        return self.wait_event("rx", timeout, since, bytes=text)


class Host(Program):
    """talv-host --console, with its files below a folder of the test."""

    def __init__(self, folder, *options, **popen):
        self.user_folder = Path(folder) / "user"
        self.settings = self.user_folder / "VOREN TALV Extension" / "Setup.xml"
        serial = Path(folder) / "dev"
        serial.mkdir(exist_ok=True)
        super().__init__("talv-host", "--console", "--user-folder", self.user_folder, "--serial-dir", f"{serial}/",
                         "--serial-prefix", "tty.", *options, **popen)
        self.commands = 0

    def command(self, line, timeout=10):
        """The reply, whether the command was refused or not, in its proper form."""
        self.send(line)
        answer = self.reply(self.count(), timeout)
        follows_schema(answer, *(("replies", line.split()[0]) if answer["ok"] else ("refusal",)))
        return answer

    def count(self, lines=1):
        """Counts lines that were sent by hand; the number of the last one."""
        self.commands += lines
        return self.commands

    def reply(self, number, timeout=10):
        return self.wait(lambda item: item.get("reply") == number, timeout)

    def ask(self, line, timeout=10):
        """The reply of a command that must not be refused."""
        answer = self.command(line, timeout)
        assert answer["ok"] is True, (line, answer)
        return answer

    def wait_ready(self, timeout=20):
        self.ask(f"wait ready {int(timeout * SLOW * 1000)}", timeout + 2)

    def value(self, device, param, *channel):
        return self.ask(" ".join(map(str, ("get", device, param, *channel))))["value"]

    def wait_value(self, device, param, value, ch=None, timeout=5, since=0):
        fields = {} if ch is None else {"ch": ch}
        return self.wait_event("value", timeout, since, id=device, param=param, value=value, **fields)

    def quit(self):
        self.ask("quit")
        status = self.end()
        for item in self.all():
            if "event" in item:
                follows_schema(item, "event")
        return status


class Port:
    """The line as a host has it open, for looking at the simulator alone."""

    def __init__(self, path):
        self.handle = os.open(path, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)

    def write(self, text):
        os.write(self.handle, bytes.fromhex(text))

    def read(self, count, timeout=5):
        """Count bytes as text; fewer when no more come in time or the line hangs up."""
        got = b""
        deadline = time.monotonic() + timeout * SLOW
        while len(got) < count and select.select([self.handle], [], [], max(0, deadline - time.monotonic()))[0]:
            with contextlib.suppress(OSError):  # it hangs up
                piece = os.read(self.handle, count - len(got))
                got += piece
                if piece:
                    continue
            break
        return " ".join(f"{byte:02X}" for byte in got)

    def ask(self, text, timeout=5):
        """Writes a frame and reads one."""
        self.write(text)
        return self.read_frame(timeout)

    def read_frame(self, timeout=5):
        head = self.read(1, timeout)
        return head and head + " " + self.read(int(head, 16), timeout)

    def close(self):
        if self.handle >= 0:
            os.close(self.handle)
        self.handle = -1


class LineTest(unittest.TestCase):
    """A folder of its own for each test, with dev/tty.sim in it; whatever was started is ended."""

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="talv-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        (self.folder / "dev").mkdir()
        self.link = self.folder / "dev" / "tty.sim"

    def start_sim(self, *options, link=None, **how):
        sim = Sim(link or self.link, *options, **how)
        self.addCleanup(sim.stop)
        return sim

    def start_host(self, *options, **how):
        host = Host(self.folder, *options, **how)
        self.addCleanup(host.stop)
        return host

    def open_port(self, path=None):
        port = Port(path or self.link)
        self.addCleanup(port.close)
        return port

    def run_program(self, name, *options, timeout=10, **how):
        """Runs it to its end."""
        return subprocess.run([BIN / name, *map(str, options)], capture_output=True, text=True,
                              timeout=timeout * SLOW, stdin=subprocess.DEVNULL, **how)
