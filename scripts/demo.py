#!/usr/bin/env python3
"""Three simulated head amps and the host on them: a live view on a terminal, a short tour without one."""
import os
import pathlib
import random
import signal
import subprocess
import sys
import tempfile
import threading

DEVICES = "1:STAGE-L,2:STAGE-R,3:DRUMS"
PANEL_PERIOD = 0.7  # seconds between two turns of a front panel
TURNS = (("gain", 72), ("plus48V", 1), ("hpf", 1), ("hpfFreq", 59), ("gainTrim", 30))
TOUR = """
wait ready 20000
sleep 6000
devices
set 1 gain 0 40
set 1 plus48V 0 1
get 1 gain 0
assign 1 0
connection 0
sleep 500
"""


def turn_panels(simulator, done):
    """What hands at the front panels do, until the host ends."""
    chance = random.Random(1)
    while not done.wait(PANEL_PERIOD):
        param, highest = chance.choice(TURNS)
        line = f"turn {chance.randint(1, 3)} {param} {chance.randint(0, 7)} {chance.randint(0, highest)}\n"
        try:
            simulator.stdin.write(line)
            simulator.stdin.flush()
        except OSError:
            return


def run_host(programs, folder, options):
    command = [programs / "talv-host", "--serial-dir", f"{folder}/", "--serial-prefix", "tty.",
               "--user-folder", folder / "user", *options]
    on_terminal = sys.stdin.isatty() and sys.stdout.isatty()
    if not on_terminal:
        command.append("--console")
    with subprocess.Popen(command, stdin=None if on_terminal else subprocess.PIPE, text=True) as host:
        signal.signal(signal.SIGTERM, lambda *_: host.terminate())  # it ends in order, and we behind it
        host.communicate(None if on_terminal else TOUR)
    return host.returncode


def main():
    programs, options = pathlib.Path(sys.argv[1]), sys.argv[2:]
    signal.signal(signal.SIGINT, signal.SIG_IGN)  # the host's own: it ends in order
    signal.signal(signal.SIGTERM, lambda *_: sys.exit())  # until there is a host
    with tempfile.TemporaryDirectory(prefix="talv-") as name:
        folder = pathlib.Path(name)
        simulator = subprocess.Popen([programs / "talv-sim", "--link", folder / "tty.sim", "--devices", DEVICES],
                                     stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                     preexec_fn=os.setpgrp)
        try:
            simulator.stdout.readline()  # the line stands
            threading.Thread(target=lambda: simulator.stdout.read(), daemon=True).start()
            done = threading.Event()
            threading.Thread(target=turn_panels, args=(simulator, done), daemon=True).start()
            code = run_host(programs, folder, options)
            done.set()
        finally:
            simulator.terminate()
            simulator.wait()
    return code


if __name__ == "__main__":
    sys.exit(main())
