"""talv-sim alone: what it says on a real pseudo-terminal, and how it lives."""
import contextlib
import os
import signal
import subprocess
import time
import unittest

from harness import BIN, BROADCAST, LineTest, SLOW, frame


class Protocol(LineTest):
    def test_half_a_frame_is_forgotten(self):
        sim = self.start_sim("--devices", "5")
        port = self.open_port()
        port.write("05 20 05")
        sim.wait_event("rx", bytes="05 20 05", text="half a frame")
        self.assertEqual(port.ask(BROADCAST), frame(0x80, 5))


class LineQuality(LineTest):
    def test_a_line_that_nobody_reads_loses_what_does_not_fit(self):
        sim = self.start_sim("--devices", "1", "--baud", "0")
        for _ in range(4):
            sim.raw("55" * 4000)
        sim.turn(1, "gain", 0, 1)
        sim.wait_event("lost")
        port = self.open_port()
        while port.read(4096, 0.3):
            pass
        self.assertEqual(port.ask(BROADCAST), frame(0x80, 1))


class Life(LineTest):
    def test_unplug_hangs_up_and_plug_opens_anew(self):
        sim = self.start_sim("--devices", "1")
        port = self.open_port()
        sim.turn(1, "gain", 0, 9)
        self.assertEqual(port.read_frame(), frame(0xA0, 1, 0, 63))
        self.assertEqual(sim.command("unplug"), {"event": "unplugged"})
        self.assertFalse(os.path.lexists(self.link))
        self.assertEqual(port.read(1, 1), "")
        self.assertEqual(sim.command("unplug")["event"], "error")
        self.assertIsNone(sim.turn(1, "gain", 0, 10)["report"])
        self.assertEqual(sim.command("plug")["event"], "plugged")
        self.assertEqual(self.open_port().ask(frame(0x60, 1, 0, 1)), frame(0xA0, 1, 0, 62))

    def test_the_link_goes_with_the_program(self):
        for end in ("quit", signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(end):
                sim = self.start_sim()
                if end == "quit":
                    sim.send("quit")
                else:
                    sim.signal(end)
                self.assertEqual(sim.end(), 0)
                self.assertEqual(sim.printed[-1][1], {"event": "stopped"})
                self.assertFalse(os.path.lexists(self.link))

    def test_the_end_of_the_input_is_not_the_end(self):
        sim = self.start_sim("--devices", "1")
        sim.send("turn 1 gain 0 5")
        sim.process.stdin.write("turn 1 gain 1 6")  # the last line needs no end
        sim.process.stdin.close()
        sim.wait_event("turned", ch=1, value=6)
        self.assertEqual(self.open_port().ask(frame(0x60, 1, 0, 2)), frame(0xA0, 1, 0, 67))
        self.assertIsNone(sim.process.poll())

    def test_it_ends_when_nobody_reads_its_output(self):
        process = subprocess.Popen([BIN / "talv-sim", "--link", self.link], stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.addCleanup(process.kill)
        self.assertIn(b'"line"', process.stdout.readline())
        process.stdout.close()
        self.assertEqual(process.wait(5 * SLOW), 1)
        self.assertFalse(os.path.lexists(self.link))
        process.stdin.close()

    def test_it_ends_by_a_signal_when_its_output_is_full(self):
        process = subprocess.Popen([BIN / "talv-sim", "--link", self.link], stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE)
        self.addCleanup(process.kill)
        os.set_blocking(process.stdin.fileno(), False)
        with contextlib.suppress(BlockingIOError):
            for _ in range(100):
                os.write(process.stdin.fileno(), b"help\n" * 1000)
                time.sleep(0.01)
        process.terminate()
        self.assertEqual(process.wait(5 * SLOW), 0)
        process.stdin.close()
        process.stdout.close()


if __name__ == "__main__":
    unittest.main()
