#!/usr/bin/env python3
"""A signal that asks the program to end, in the middle of building, leaves no file; a kill leaves them to the
next start, which removes them."""
import os
import random
import signal
import sys
import tempfile
import time

sys.dont_write_bytecode = True
from driver import rounds, run_folders, start  # noqa: E402


def end_while_building(home, number, **changes):
    driver = start("build", "Ada", 1_000_000, home=home, **changes)
    driver.stdout.readline()
    time.sleep(random.uniform(0, 0.2))
    driver.send_signal(number)
    written = driver.communicate(timeout=10)[0]
    if "wrong" in written or "message" in written:
        sys.exit(f"{signal.strsignal(number)}: {written}")
    return driver.returncode


with tempfile.TemporaryDirectory() as home:
    os.mkdir(chosen := os.path.join(home, "chosen"))
    for turn, number in enumerate(rounds(3, 100) * [signal.SIGTERM, signal.SIGINT, signal.SIGHUP]):
        if (ended := end_while_building(home, number, **({"TEMP": chosen} if turn % 2 else {}))) != 0:
            sys.exit(f"{signal.strsignal(number)} ended the program with {ended}")
        if left := run_folders(home) + os.listdir(chosen):
            sys.exit(f"{signal.strsignal(number)} left {left}")
    for _ in range(rounds(2, 20)):
        end_while_building(home, signal.SIGKILL)
        if len(left := run_folders(home)) != 1:
            sys.exit(f"a killed run leaves its folder to the next start, and no other: {left}")
    end_while_building(home, signal.SIGTERM)
    if left := run_folders(home):
        sys.exit(f"the start after a kill left {left}")
