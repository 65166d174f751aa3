"""The whole remote: talv-host with the extension on talv-sim, over a real pseudo-terminal."""
import random
import resource
import signal
import threading
import time
import unittest

from harness import BROADCAST, LineTest, SLOW, frame

REQUESTS = [(0x50,), (0x60, 0, 8), (0x61, 0, 8), (0x62, 0, 8), (0x64, 0, 8), (0x65,), (0x66,), (0x67,), (0x68, 0, 8)]
TO_WIRE = {  # parameter: setting command, largest value, byte on the line
    "devMode": (0x01, 3, lambda value: value),
    "wordClock": (0x10, 5, lambda value: value),
    "gain": (0x20, 72, lambda value: 72 - value),
    "plus48V": (0x21, 1, lambda value: value),
    "hpf": (0x22, 1, lambda value: value),
    "gainTrim": (0x24, 30, lambda value: (value - 15) & 0xFF),
    "panelLock": (0x25, 1, lambda value: value),
    "brightness": (0x26, 7, lambda value: value),
    "hpfFreq": (0x28, 59, lambda value: value + 4),
}
CHANNEL_PARAMS = ("gain", "plus48V", "hpf", "gainTrim", "hpfFreq")


def setting(device, param, value, channel=None):
    command, _, to_byte = TO_WIRE[param]
    return frame(command, device, *([] if channel is None else [channel]), to_byte(value))


def requests(device):
    return [frame(command, device, *payload) for command, *payload in REQUESTS]


def name_report(device, mode, name):
    return frame(0x81, device, mode, *name.ljust(8).encode("mac-roman"))


def is_setting(text):
    return int(text[3:5], 16) < 0x40 and text != BROADCAST


def words(*parts):
    return " ".join(str(part) for part in parts if part is not None)


def settings_file(port, channels=()):
    """The bytes of the whole file; channels maps an id to its channel."""
    lines = ['\ufeff<?xml version="1.0" encoding="utf-8"?>', "<VOREN-HA-Remote>", f'\t<ComPortName str="{port}"/>']
    lines += [f'\t<DevId-Ch id="{n}" ch="{dict(channels).get(n, -1)}"/>' for n in range(1, 256)]
    return "".join(line + "\r\n" for line in [*lines, "</VOREN-HA-Remote>"]).encode()


class RemoteTest(LineTest):
    def start(self, *sim_options):
        """Both programs, the devices found, and nothing under way any more."""
        sim = self.start_sim(*(sim_options or ("--devices", "1:Drums")))
        host = self.start_host()
        host.wait_ready()
        self.settle(sim, host)
        return sim, host

    def start_scripted(self):
        """A simulator whose devices are mute: device 1 is what the test says by raw bytes, and nothing else."""
        sim = self.start_sim("--drop", "100")
        host = self.start_host()
        sim.wait_heard(BROADCAST, 10)
        sim.raw(frame(0x80, 1))
        sim.wait_heard(frame(0x41, 1))
        host.wait_ready()
        return sim, host

    def settle(self, sim, host, device=1):
        """Until the host has taken all that was said and has nothing to say: a turn of the brightness goes through as
        the only thing."""
        for _ in range(30):
            before = len(sim.heard())
            used = (host.value(device, "brightness"), sim.state(device)["brightness"])
            fresh = next(value for value in range(1, 8) if value not in used)
            mark = host.mark()
            sim.turn(device, "brightness", fresh)
            host.wait_value(device, "brightness", fresh, timeout=60, since=mark)
            time.sleep(0.1 * SLOW)
            if len(sim.heard()) == before:
                return
        self.fail("the line never falls silent")


class Discovery(RemoteTest):
    def test_the_first_answer_ends_the_search(self):
        sim = self.start_sim("--devices", "2:Drums,1:Choir 12,255")
        host = self.start_host()
        host.wait_ready()
        self.settle(sim, host, 255)
        self.assertEqual(sim.heard().count(BROADCAST), 1)
        found = host.ask("devices")
        self.assertEqual((found["ready"], found["count"]), (True, 3))
        self.assertEqual(found["devices"], [
            {"id": 1, "name": "Choir 12", "mode": 3, "channel": -1},
            {"id": 2, "name": "Drums   ", "mode": 3, "channel": -1},
            {"id": 255, "name": "HA-8CH  ", "mode": 3, "channel": -1}])
        self.assertEqual(sorted(item["id"] for item in host.all(event="device")), [1, 2, 255])
        for device in (1, 2, 255):
            mode = setting(device, "devMode", 3)
            self.assertEqual([text for text in sim.heard(device=device) if is_setting(text)], [mode] * 2)

    def test_each_answer_has_its_effect_once(self):
        sim, host = self.start_scripted()
        sim.raw(name_report(1, 3, "HA-8CH"))
        host.wait_value(1, "devName", "HA-8CH  ")
        sim.wait_heard(requests(1)[-1])
        mode = setting(1, "devMode", 3)
        self.assertEqual(sim.heard(), [BROADCAST, mode, frame(0x41, 1), mode, *requests(1)])
        mark = sim.mark()
        sim.raw(frame(0x80, 1))  # known already: greeted again, its values stay
        sim.wait_heard(frame(0x41, 1), since=mark)
        self.assertEqual(host.value(1, "devName"), "HA-8CH  ")
        self.assertEqual(host.ask("devices")["count"], 1)

    def test_255_devices(self):
        self.start_sim("--devices", ",".join(map(str, range(1, 256))), log=False)
        host = self.start_host()
        host.wait_ready(60)
        self.assertEqual([item["id"] for item in host.ask("devices")["devices"]], list(range(1, 256)))


class Values(RemoteTest):
    def test_a_set_is_one_frame(self):
        sim, host = self.start()
        mark = sim.mark()
        sets = [("wordClock", 2, None), ("gain", 40, 3), ("gain", 1, 0), ("plus48V", 1, 0), ("hpf", 1, 7),
                ("gainTrim", 10, 2), ("gainTrim", 30, 7), ("panelLock", 1, None), ("brightness", 0, None),
                ("hpfFreq", 59, 4), ("hpfFreq", 0, 0)]
        for param, value, channel in sets:
            answer = host.ask(words("set", 1, param, channel, value))
            expected = {"id": 1, "param": param, "value": value} | ({} if channel is None else {"ch": channel})
            self.assertEqual({key: answer.get(key) for key in expected}, expected)
            self.assertEqual("ch" in answer, channel is not None)
            sim.wait_heard(setting(1, param, value, channel), since=mark)
        self.settle(sim, host)
        self.assertEqual(sim.heard(mark), [setting(1, param, value, channel) for param, value, channel in sets])
        self.assertEqual(sim.heard(mark)[1], "05 20 01 03 20 BB")
        self.assertEqual(sim.state(1)["gain"][3], 40)
        host.wait_value(1, "gain", 40, ch=3)

    def test_what_stands_already_or_has_no_way_is_no_frame(self):
        sim, host = self.start()
        mark = sim.mark()
        for line, value in (("gain 3 72", 72), ("gain 3 999", 72), ("meterMode 1", 1), ("meter 4 100", 100),
                            ("meter 4 -3", 0), ("plus48VMaster 1", 1), ('devName "Pit 1"', "Pit 1")):
            self.assertEqual(host.ask("set 1 " + line)["value"], value, line)
        self.settle(sim, host)
        self.assertEqual(sim.heard(mark), [])

    def test_a_report_does_not_come_back(self):
        sim, host = self.start()
        mark = sim.mark()
        for param, value, channel in (
                ("wordClock", 4, None), ("gain", 0, 0), ("gain", 41, 7), ("plus48V", 1, 3), ("hpf", 1, 5),
                ("gainTrim", 0, 2), ("gainTrim", 30, 6), ("panelLock", 1, None), ("plus48VMaster", 1, None),
                ("hpfFreq", 59, 4), ("hpfFreq", 0, 1)):
            host_mark = host.mark()
            sim.turn(*words(1, param, channel, value).split())
            host.wait_value(1, param, value, channel, since=host_mark)
            self.assertEqual(host.value(*words(1, param, channel).split()), value)
        sim.turn(1, "meter", 3, 99)
        self.settle(sim, host)
        self.assertEqual(host.value(1, "meter", 3), 0)
        self.assertEqual(sim.heard(mark), [])

    def test_mode_and_name_do_come_back(self):
        sim, host = self.start_scripted()
        sim.raw(name_report(1, 3, "A"))
        sim.wait_heard(requests(1)[-1])
        # a name has no way to the device, but the report has its requests
        for mode, expected in ((3, []), (2, [setting(1, "devMode", 2)])):
            mark = sim.mark()
            sim.raw(name_report(1, mode, "B \u00e4"))
            sim.wait_heard(requests(1)[-1], since=mark)
            self.assertEqual(sim.heard(mark), [*expected, *requests(1)])
        self.assertEqual(host.value(1, "devName"), "B \u00e4     ")

    def test_a_flood_keeps_its_order_and_loses_nothing(self):
        sim, host = self.start_scripted()
        dice = random.Random(4)
        stands, lines, frames = {}, [], []
        for _ in range(3000):
            param = dice.choice(list(TO_WIRE))
            channel = dice.randrange(8) if param in CHANNEL_PARAMS else None
            value = dice.randint(0, TO_WIRE[param][1])
            lines.append(words("set", 1, param, channel, value))
            if stands.get((param, channel), 0) != value:
                frames.append(setting(1, param, value, channel))
            stands[param, channel] = value
        mark = sim.mark()
        host.send(*lines)
        host.reply(host.count(len(lines)), 60)
        deadline = time.monotonic() + 20 * SLOW
        while len(sim.heard(mark)) < len(frames) and time.monotonic() < deadline:
            time.sleep(0.05)
        self.assertEqual(sim.heard(mark), frames)
        self.assertEqual(len([item for _, item in host.printed if item.get("ok") is False]), 0)


class BadLine(RemoteTest):
    def test_a_device_that_vanishes(self):
        sim, host = self.start()
        standing = host.value(1, "gain", 2)
        sim.command("unplug")
        start = time.monotonic()
        self.assertEqual(host.ask("set 1 gain 2 33")["value"], 33)
        self.assertLess(time.monotonic() - start, 2.0 + 1.5 * SLOW)
        self.assertNotEqual(standing, 33)
        self.assertEqual(host.value(1, "gain", 2), 33)
        self.assertEqual((host.ask("ready")["ready"], host.ask("devices")["count"]), (True, 1))
        sim.command("plug")  # a new line of the same name: nothing tells the host of it
        self.assertEqual(host.value(1, "gain", 2), 33)
        self.assertEqual(host.quit(), 0)
        self.assertEqual(host.settings.read_bytes(), settings_file("tty.sim"))

    def test_a_babbling_line_does_not_hold_up_the_end(self):
        sim = self.start_sim("--devices", "1", "--baud", "0", log=False)
        host = self.start_host()
        host.wait_ready()
        done = threading.Event()

        def babble():
            while not done.wait(0.005):
                sim.send("raw " + "00" * 2000)
        babbler = threading.Thread(target=babble)
        babbler.start()
        self.addCleanup(babbler.join)
        self.addCleanup(done.set)
        time.sleep(1)
        start = time.monotonic()
        host.signal(signal.SIGTERM)
        self.assertEqual(host.end(), 0)
        self.assertLess(time.monotonic() - start, 3 * SLOW)


class Settings(RemoteTest):
    def stored(self, content):
        """Puts a settings file where the host will look."""
        path = self.folder / "user" / "VOREN TALV Extension" / "Setup.xml"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
        return path

    def test_the_file_is_exact_and_read_again(self):
        self.start_sim("--drop", "100")
        host = self.start_host()
        host.ask("assign 5 8")
        host.ask("assign 255 0")
        self.assertEqual(host.quit(), 0)
        expected = settings_file("tty.sim", {5: 8, 255: 0})
        self.assertEqual(host.settings.read_bytes(), expected)
        self.assertEqual(expected.split(b"\r\n")[257], b'\t<DevId-Ch id="255" ch="0"/>')
        self.assertEqual([path.name for path in host.settings.parent.iterdir()], ["Setup.xml"])
        self.assertIn(b"<Defaults>", (host.user_folder / "talv-host/Defaults.xml").read_bytes())
        again = self.start_host()
        self.assertEqual([again.ask(f"connection {n}")["id"] for n in (8, 0, 1)], [5, 255, 0])
        self.assertEqual(again.quit(), 0)
        self.assertEqual(host.settings.read_bytes(), expected)

    def test_port_option_changes_that_element_only(self):
        self.start_sim("--drop", "100")
        sim = self.start_sim("--drop", "100", link=self.folder / "dev" / "tty.other")
        for before, expected in ((settings_file("tty.sim", {3: 4}), settings_file("tty.other", {3: 4})),
                                 (b"", settings_file("tty.other"))):
            path, mark = self.stored(before), sim.mark()
            host = self.start_host("--port", "tty.other")
            sim.wait_heard(BROADCAST, 10, mark)
            self.assertEqual(path.read_bytes().count(b'<ComPortName str="tty.other"/>'), 1)
            self.assertEqual(host.quit(), 0)
            self.assertEqual(path.read_bytes(), expected)

    def test_killed_while_it_saves(self):
        self.start_sim("--drop", "100", log=False)
        dice = random.Random(8)
        channel = 0
        path = self.stored(settings_file("tty.sim", {1: channel}))
        for turn in range(1, 11):
            host = self.start_host()
            host.ask(f"assign 1 {turn}")
            host.send("quit")
            time.sleep(dice.uniform(0, 0.6))
            host.signal(signal.SIGKILL)
            host.end()
            content = path.read_bytes()
            self.assertIn(content, (settings_file("tty.sim", {1: channel}), settings_file("tty.sim", {1: turn})))
            channel = turn if content == settings_file("tty.sim", {1: turn}) else channel

    def test_a_full_disk_keeps_the_old_file(self):
        def small_files_only():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096))

        path = self.stored(settings_file("tty.sim", {1: 1}))
        host = self.start_host(preexec_fn=small_files_only)
        host.ask("assign 1 2")
        self.assertEqual(host.quit(), 0)
        self.assertEqual(path.read_bytes(), settings_file("tty.sim", {1: 1}))


class Console(RemoteTest):
    def test_what_is_refused_changes_nothing(self):
        sim, host = self.start()
        mark = sim.mark()
        for line in ("set 1 gain 0 loud", "set 1 gain 0 1.5", "set 1 gain 8 1", "set 2 gain 0 1", 'get 1 "gain'):
            self.assertIs(host.command(line)["ok"], False, line)
        self.assertEqual(host.ask('set 1 devName "a \\"\\u0062"')["value"], 'a "b')
        self.assertEqual(sim.heard(mark), [])

    def test_options(self):
        for program in ("talv-host", "talv-sim"):
            for option, status in (("--help", 0), ("--version", 0), ("--bogus", 2)):
                done = self.run_program(program, option)
                self.assertEqual((done.returncode, not done.stdout, done.stderr.count("\n")),
                                 (status, status != 0, int(status != 0)), (program, option))

    def test_assignments(self):
        sim, host = self.start("--devices", "1,2")
        for line, channel, device in (("assign 1 3", 3, 1), ("assign 2 3", 3, 2), ("assign 2 5", 3, 0),
                                      ("assign 0 5", 5, 0), ("assign 1 -1", 3, 0)):
            mark = host.mark()
            device_id, ch = map(int, line.split()[1:])
            answer = host.ask(line)
            self.assertEqual((answer["id"], answer["ch"]), (device_id, ch))
            host.wait_event("connection", since=mark)
            answer = host.ask(f"connection {channel}")
            self.assertEqual((answer["ch"], answer["id"]), (channel, device))
        host.ask("assign 2 7")
        self.assertEqual([item["channel"] for item in host.ask("devices")["devices"]], [-1, 7])


if __name__ == "__main__":
    unittest.main()
