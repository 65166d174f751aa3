"""Minutes under load on a line that damages and drops: memory stays flat, nothing hangs, and what is set arrives."""
import os
import random
import statistics
import threading
import time
import unittest

from harness import LineTest, SLOW
from test_remote import CHANNEL_PARAMS, settings_file

SECONDS = float(os.environ.get("TALV_SOAK_SECONDS", "120"))
DEVICES = (1, 2, 3, 200)
HOST_CHANNELS, PANEL_CHANNELS = range(0, 4), range(4, 8)
HIGHEST = {"gain": 72, "plus48V": 1, "hpf": 1, "gainTrim": 30, "hpfFreq": 59}
FLAT = 512  # KB that the later half may lie above the earlier one
SAMPLES = 60


def resident(program):
    """KB."""
    with open(f"/proc/{program.process.pid}/status", encoding="ascii") as status:
        return next(int(line.split()[1]) for line in status if line.startswith("VmRSS:"))


def threads_of(program):
    return len(os.listdir(f"/proc/{program.process.pid}/task"))


class Soak(LineTest):
    def test_two_minutes_of_noise(self):
        sim = self.start_sim("--devices", ",".join(map(str, DEVICES)), "--corrupt", "5", "--drop", "5", "--seed", "7",
                             "--split", log=False)
        host = self.start_host()
        host.wait_ready()
        self.wait_for_devices(sim, host)
        end = time.monotonic() + SECONDS
        panel = threading.Thread(target=self.turn_panels, args=(sim, end))
        panel.start()
        self.addCleanup(panel.join)
        threads, memory, sets = threads_of(host), [], 0
        dice = random.Random(1)
        next_sample = time.monotonic() + SECONDS / 10
        while time.monotonic() < end:
            self.one_command(host, dice)
            sets += 1
            time.sleep(0.02)
            if time.monotonic() >= next_sample:
                memory.append((resident(host), resident(sim)))
                next_sample += SECONDS * 0.9 / SAMPLES
        panel.join()
        self.assertGreater(sets, SECONDS)
        self.assertEqual(threads_of(host), threads)
        self.check_flat(memory)
        self.assertGreater(len(host.all(event="value")), sets, "the panels were heard, too")
        self.check_last_sets(sim, host)
        started = time.monotonic()
        self.assertEqual(host.quit(), 0)
        self.assertLess(time.monotonic() - started, 3 * SLOW)
        self.assertEqual(host.errors, "")
        self.assertEqual(host.all(event="no JSON"), [])
        self.assertEqual(host.settings.read_bytes(), settings_file("tty.sim", self.assigned))

    assigned = {}

    def wait_for_devices(self, sim, host):
        """The answers to the search may be lost, and nobody asks again: then the device says who it is."""
        for device in DEVICES:
            for _ in range(100):
                if device in [item["id"] for item in host.ask("devices")["devices"]]:
                    break
                sim.raw(f"03 80 {device:02X} {~(0x80 + device) & 0xFF:02X}")
                time.sleep(0.2)
            else:
                self.fail(f"device {device} isn't found")

    @staticmethod
    def turn_panels(sim, end):
        dice = random.Random(2)
        while time.monotonic() < end:
            param = dice.choice(CHANNEL_PARAMS)
            sim.turn(dice.choice(DEVICES), param, dice.choice(PANEL_CHANNELS), dice.randint(0, HIGHEST[param]))
            time.sleep(0.1)

    def one_command(self, host, dice):
        device, param = dice.choice(DEVICES), dice.choice(CHANNEL_PARAMS)
        kind = dice.random()
        if kind < 0.9:
            value = dice.randint(0, HIGHEST[param])
            answer = host.ask(f"set {device} {param} {dice.choice(HOST_CHANNELS)} {value}")
            self.assertEqual(answer["value"], value)
        elif kind < 0.95:
            channel = dice.randrange(64)
            host.ask(f"assign {device} {channel}")
            self.assigned = {key: place for key, place in self.assigned.items() if place != channel} | {device: channel}
        else:
            self.assertEqual(host.ask("devices")["count"], len(DEVICES))

    def check_flat(self, memory):
        self.assertGreater(len(memory), SAMPLES / 2)
        if os.environ.get("TALV_SANITIZE"):
            return  # what was freed is kept for the reports
        half = len(memory) // 2
        for name, column in (("talv-host", 0), ("talv-sim", 1)):
            earlier, later = ([row[column] for row in part] for part in (memory[:half], memory[half:]))
            growth = statistics.median(later) - statistics.median(earlier)
            self.assertLess(growth, FLAT, f"{name} grows: {earlier[0]} to {later[-1]} KB")

    def check_last_sets(self, sim, host):
        """One more change of each value: it arrives, since only what devices say is damaged."""
        wanted = {}
        for device in DEVICES:
            for param in CHANNEL_PARAMS:
                for channel in HOST_CHANNELS:
                    value = (host.value(device, param, channel) + 1) % (HIGHEST[param] + 1)
                    host.ask(f"set {device} {param} {channel} {value}")
                    wanted[device, param, channel] = value
        time.sleep(1 * SLOW)
        for device in DEVICES:
            state = sim.state(device)
            for (owner, param, channel), value in wanted.items():
                if owner == device:
                    self.assertEqual(state[param][channel], value, (device, param, channel))


if __name__ == "__main__":
    unittest.main()
