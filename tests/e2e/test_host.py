"""How talv-host starts and ends whatever happens to its streams, and its live view on a real terminal."""
import fcntl
import os
import pty
import re
import select
import signal
import struct
import subprocess
import termios
import time
import unittest

from harness import BIN, LineTest, SLOW, frame
from test_remote import name_report

ESCAPES = re.compile(r"\x1b\[[?\d;]*[A-Za-z]")
HOME = "\x1b[H"


class HostTest(LineTest):
    def options(self):
        return ["--user-folder", self.folder / "user", "--serial-dir", self.link.parent, "--serial-prefix", "tty."]

    def start_raw(self, *options, **streams):
        """Without a reader behind it."""
        process = subprocess.Popen([BIN / "talv-host", *self.options(), *options], **streams)
        self.addCleanup(self.end_by_force, process)
        return process

    @staticmethod
    def end_by_force(process):
        if process.poll() is None:
            process.kill()
        process.wait()
        for pipe in (process.stdin, process.stdout):
            if pipe:
                pipe.close()

    def wait_until(self, is_so, timeout=10):
        deadline = time.monotonic() + timeout * SLOW
        while not is_so():
            self.assertLess(time.monotonic(), deadline, "not in time")
            time.sleep(0.0005)


class Ends(HostTest):
    def holds_signals(self, process):
        """It is in main: a signal isn't lost any more."""
        with open(f"/proc/{process.pid}/status", encoding="ascii") as status:
            blocked = int(re.search(r"SigBlk:\s*(\w+)", status.read())[1], 16)
        return blocked >> (signal.SIGTERM - 1) & 1

    def test_a_signal_long_before_the_module_runs(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number):
                process = self.start_raw("--console", stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
                self.wait_until(lambda: self.holds_signals(process))
                process.send_signal(number)
                output = process.stdout.read()
                self.assertEqual(process.wait(10 * SLOW), 0)
                self.assertTrue(output.endswith('{"event":"stopped"}\n'), output)

    def test_an_ignored_hangup_stays_ignored(self):
        process = self.start_raw("--console", stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                 preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        self.assertIn("started", process.stdout.readline())
        process.send_signal(signal.SIGHUP)
        process.stdin.write("sleep 100\nquit\n")
        process.stdin.flush()
        self.assertIn('"reply":2,"ok":true', process.stdout.read())
        self.assertEqual(process.wait(10 * SLOW), 0)

    def test_nobody_reads_what_it_says(self):
        process = self.start_raw("--console", stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        os.set_blocking(process.stdin.fileno(), False)
        try:
            for _ in range(100):  # until it stands still, with both pipes full
                os.write(process.stdin.fileno(), b"help\n" * 1000)
                time.sleep(0.01)
        except BlockingIOError:
            pass
        time.sleep(0.3 * SLOW)
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(10 * SLOW), 0)
        self.assertTrue((self.folder / "user/VOREN TALV Extension/Setup.xml").exists())

    def test_streams_that_are_closed(self):
        for stream in (0, 1):
            process = self.start_raw("--console", stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                     preexec_fn=lambda: os.close(stream))
            self.assertEqual(process.wait(10 * SLOW), 0)

    def test_the_reader_goes_away(self):
        process = self.start_raw("--console", stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        process.stdout.readline()
        process.stdout.close()
        process.stdin.write(b"help\n")
        process.stdin.flush()
        self.assertEqual(process.wait(10 * SLOW), 0)
        process.stdout = None

    def test_commands_from_a_file_are_all_run_before_the_end(self):
        script = self.folder / "script"
        script.write_text("sleep 50\nready\n# done\nhelp")
        with script.open() as commands:
            process = self.start_raw("--console", stdin=commands, stdout=subprocess.PIPE, text=True)
        output = process.stdout.read()
        self.assertEqual(process.wait(10 * SLOW), 0)
        self.assertEqual(re.findall(r'"reply":(\d)', output), ["1", "2", "3"])
        self.assertRegex(output, r'^{"event":"started","module":".+","version":".+"}\n')
        self.assertTrue(output.endswith('{"event":"stopped"}\n'))

    def test_a_module_that_is_none(self):
        text = self.folder / "text.so"
        text.write_text("no module")
        for module in (self.folder / "none", text, "/usr/bin/env", self.folder / "dev"):
            done = self.run_program("talv-host", "--console", *self.options(), "--module", module)
            self.assertEqual((done.returncode, done.stdout, done.stderr.count("\n")), (1, "", 1), module)
            self.assertIn(str(module), done.stderr)


class Terminal:
    """A terminal with somebody before it."""

    def __init__(self, rows, columns):
        self.master, self.slave = pty.openpty()
        self.resize(rows, columns)
        self.before = termios.tcgetattr(self.slave)
        self.output = ""

    def resize(self, rows, columns):
        fcntl.ioctl(self.slave, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))

    def type(self, text):
        os.write(self.master, text.encode())

    def read(self, seconds=0.1):
        while select.select([self.master], [], [], seconds)[0]:
            self.output += os.read(self.master, 65536).decode(errors="replace")
            seconds = 0

    def screen(self):
        """The last whole page, as lines."""
        self.read()
        pages = self.output.split(HOME)
        return ESCAPES.sub("", pages[-1]).replace("\r", "").split("\n")

    def close(self):
        os.close(self.master)
        os.close(self.slave)


class LiveView(HostTest):
    def start_view(self, *sim_options, size=(30, 90)):
        sim = self.start_sim(*(sim_options or ("--devices", "1:Drums,2:Choir")))
        terminal = Terminal(*size)
        self.addCleanup(terminal.close)
        process = self.start_raw(stdin=terminal.slave, stdout=terminal.slave)
        return sim, terminal, process

    def wait_line(self, terminal, pattern, timeout=10):
        wanted = re.compile(pattern)
        deadline = time.monotonic() + timeout * SLOW
        while not any(wanted.search(line) for line in terminal.screen()):
            self.assertLess(time.monotonic(), deadline, f"{pattern} isn't in\n" + "\n".join(terminal.screen()))

    def test_it_shows_what_changes_and_takes_commands(self):
        sim, terminal, process = self.start_view()
        self.wait_line(terminal, "^TALV remote.*ready$")
        self.wait_line(terminal, r"^1 +Drums +unassigned +mode 3")
        self.wait_line(terminal, r"^2 +Choir +unassigned +mode 3")
        sim.turn(1, "gain", 2, 17)
        self.wait_line(terminal, r"^  gain +\d+ +\d+ +17 ")
        sim.turn(1, "hpfFreq", 1, 8)
        self.wait_line(terminal, r"^  freq +80 Hz +31.5 Hz +80 Hz ")
        sim.turn(2, "plus48V", 7, 1)
        self.wait_line(terminal, r"^  \+48V( +off){7} +on *$")
        terminal.type("set 1 gain 0 3x\x7f3\r")
        self.wait_line(terminal, r"^  gain +33 +\d+ +17 ")
        sim.wait_heard(frame(0x20, 1, 0, 72 - 33))
        terminal.type("assign 2 8\r")
        self.wait_line(terminal, r"^2 +Choir +inputs 8-15 ")
        terminal.type("undo\r")
        self.wait_line(terminal, "^ok  steps device 2 off$")
        terminal.type("redo\r")
        terminal.type("set 1 gain 9 1\rhel")
        self.wait_line(terminal, "^refused: CH is 0 to 7")
        self.wait_line(terminal, "^> hel$")
        self.assertEqual(len(terminal.screen()), 30)
        terminal.type("\x03")
        self.assertEqual(process.wait(10 * SLOW), 0)
        terminal.read()
        self.assertTrue(terminal.output.endswith("\x1b[?1049l"))
        self.assertEqual(termios.tcgetattr(terminal.slave), terminal.before)
        self.assertIn(b'id="2" ch="8"', (self.folder / "user/VOREN TALV Extension/Setup.xml").read_bytes())

    def test_a_small_terminal_shows_some_of_many(self):
        _, terminal, process = self.start_view("--devices", ",".join(map(str, range(1, 10))), size=(24, 80))
        self.wait_line(terminal, "1 to 3 of 9 devices")
        self.wait_line(terminal, "^3 +HA-8CH +unassigned")
        terminal.type("\x1b[6~")
        self.wait_line(terminal, "4 to 6 of 9 devices")
        self.wait_line(terminal, "^4 +HA-8CH ")
        terminal.type("\x1b[6~\x1b[6~\x1b[6~")
        self.wait_line(terminal, "7 to 9 of 9 devices")
        terminal.resize(3, 10)
        process.send_signal(signal.SIGWINCH)
        terminal.read(0.5)
        terminal.resize(24, 80)
        process.send_signal(signal.SIGWINCH)
        self.wait_line(terminal, "7 to 9 of 9 devices")
        terminal.type("quit\r")
        self.assertEqual(process.wait(10 * SLOW), 0)

    def test_nobody_reads_the_terminal(self):
        sim, _, process = self.start_view("--devices", ",".join(map(str, range(1, 20))), size=(200, 200))
        for gain in range(40):
            sim.turn(1, "gain", 0, gain)
            time.sleep(0.1)
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(10 * SLOW), 0)

    def test_a_device_cannot_write_to_the_terminal(self):
        sim, terminal, process = self.start_view("--drop", "100")
        sim.wait_heard(frame(0x00, 0), 10)
        sim.raw(frame(0x80, 1))
        sim.raw(name_report(1, 3, "a\x1b[2J\x07b"))
        self.wait_line(terminal, r"^1 +a\?\[2J\?b ")
        self.assertEqual(terminal.output.count("\x1b[2J"), 1, "its own at the start")
        self.assertNotIn("\x07", terminal.output)
        terminal.type("\x04")
        self.assertEqual(process.wait(10 * SLOW), 0)


if __name__ == "__main__":
    unittest.main()
