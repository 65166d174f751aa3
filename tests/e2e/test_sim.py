"""talv-sim alone: what it says on a real pseudo-terminal, and how it lives."""
import contextlib
import os
import signal
import subprocess
import time
import unittest

from harness import BIN, BROADCAST, LineTest, SLOW, frame

ASKED = [  # frame to device 5, and its answer
    ("03 00 00 FF", "03 80 05 7A"),
    ("03 41 05 B9", "0C 81 05 00 48 41 2D 38 43 48 20 20 C0"),
    ("0C 20 05 00 48 3C 32 28 1E 14 0A 00 C0", "0C A0 05 00 48 3C 32 28 1E 14 0A 00 40"),
    ("05 60 05 00 08 92", "0C A0 05 00 48 3C 32 28 1E 14 0A 00 40"),
    ("03 67 05 93", "04 A7 05 00 53"),
]


class Protocol(LineTest):
    def test_answers_byte_by_byte(self):
        self.start_sim("--devices", "5:HA-8CH")
        port = self.open_port()
        for asked, answer in ASKED:
            with self.subTest(asked):
                self.assertEqual(port.ask(asked), answer)
        self.assertTrue(port.is_quiet())

    def test_all_devices_answer_the_broadcast_in_turn(self):
        self.start_sim("--devices", "9,2:B,255")
        port = self.open_port()
        port.write(BROADCAST)
        self.assertEqual([port.read_frame() for _ in range(3)], [frame(0x80, n) for n in (2, 9, 255)])

    def test_what_is_no_request_of_its_own_is_not_answered(self):
        self.start_sim("--devices", "5")
        port = self.open_port()
        for text in ("03 00 00 FE", "03 41 01 BD", "05 60 05 01 08 91", "03 63 05 97", "00 00 FF 68 65"):
            port.write(text)
        self.assertEqual(port.ask(BROADCAST), frame(0x80, 5))
        self.assertTrue(port.is_quiet())

    def test_half_a_frame_is_forgotten(self):
        sim = self.start_sim("--devices", "5")
        port = self.open_port()
        port.write("05 20 05")
        sim.wait_event("rx", bytes="05 20 05", text="half a frame")
        self.assertEqual(port.ask(BROADCAST), frame(0x80, 5))

    def test_a_turn_is_reported_and_kept(self):
        sim = self.start_sim("--devices", "1")
        port = self.open_port()
        self.assertEqual(sim.turn(1, "gain", 3, 40), {
            "event": "turned", "id": 1, "param": "gain", "ch": 3, "value": 40, "report": "05 A0 01 03 20 3B"})
        self.assertEqual(port.read_frame(), "05 A0 01 03 20 3B")
        self.assertIsNone(sim.turn(1, "meterMode", 1)["report"])
        self.assertEqual(port.ask(frame(0x60, 1, 3, 1)), "05 A0 01 03 20 3B")
        state = sim.state(1)
        self.assertEqual((state["gain"][3], state["meterMode"]), (40, 1))


class LineQuality(LineTest):
    def seconds_of_answers(self, *options):
        """The time that eight answers of 13 bytes take, and the number of reads that they came in."""
        self.start_sim("--devices", "1", *options)
        port = self.open_port()
        start = time.monotonic()
        port.write(" ".join([frame(0x60, 1, 0, 8)] * 8))
        self.assertEqual(port.read(8 * 13), " ".join([frame(0xA0, 1, 0, *[0] * 8)] * 8))
        return port.arrived[-1][0] - start, len(port.arrived)

    def test_pacing_takes_ten_bits_a_byte(self):
        seconds, _ = self.seconds_of_answers("--baud", "2400")
        self.assertGreater(seconds, 0.43)
        self.assertLess(seconds, 0.43 + 0.3 * SLOW)

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

    def test_options_and_commands_that_are_refused(self):
        for options in ((), ("--bogus",), ("--link", self.link, "--baud", "x"), ("--link", self.link, "--drop", "101"),
                        ("--link", self.link, "--devices", "1,1"), ("--link",)):
            with self.subTest(options):
                done = self.run_program("talv-sim", *options)
                self.assertEqual((done.returncode, done.stdout, done.stderr.count("\n")), (2, "", 1))
        for option in ("--help", "--version"):
            done = self.run_program("talv-sim", option)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertIn("talv-sim", done.stdout)
        sim = self.start_sim("--devices", "1")
        for line in ("bogus", "turn 1", "turn 2 gain 0 1", "turn 1 gain 8 1", "turn 1 gain 0 x", "raw 0", 'turn "1'):
            self.assertEqual(sim.command(line)["event"], "error", line)
        sim.send("", "# a remark", "   ")
        self.assertEqual(sim.command("help")["event"], "help")


if __name__ == "__main__":
    unittest.main()
