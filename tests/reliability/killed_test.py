#!/usr/bin/env python3
"""Kills the entry window at random moments while keys are typed: every key whose write had returned is in the store at
the next start, and that start and its first write are quick."""
import random
import re
import sys
import tempfile
import threading
import time

sys.dont_write_bytecode = True
from driver import rounds, start  # noqa: E402

KILLS = rounds(25, 1000)
LONGEST_START = 1.0  # seconds from the start of the process to the end of its first write


class Store:
    """What the store may hold: the last text known to be written, or the one that was being written at the kill."""

    def __init__(self):
        self.allowed = {}

    def told(self, line):
        """One line of the driver."""
        kind, _, rest = line.rstrip("\n").partition(" ")
        key, _, text = rest.partition("\t")
        if kind == "was":
            if text not in self.allowed.setdefault(key, {text}):
                sys.exit(f"{key} holds {text!r} after a kill, not {' or '.join(map(repr, self.allowed[key]))}")
            # A start stores money as it shows it; a kill may fall before or after that.
            self.allowed[key] = {text, *([f"${float(text):.2f}"] if re.fullmatch(r"\d+", text) else [])}
        elif kind == ">":
            self.allowed[key].add(text)
        elif kind == "=":
            self.allowed[key] = {text}
        elif kind == "message":
            sys.exit(f"the program showed: {rest}")


def typed_until_killed(store, home, number):
    """Seconds until the first write after the start; None when the kill came before it."""
    begin, first_write, keys = time.monotonic(), None, 0
    driver = start("type", number, home=home)
    threading.Timer(random.uniform(0, 0.5) if number % 3 == 0 else random.uniform(0.2, 1), driver.kill).start()
    typing = False
    for line in driver.stdout:
        store.told(line)
        typing |= line == "ready\n"
        if typing and line.startswith("="):
            first_write = first_write or time.monotonic() - begin
            keys += 1
    driver.wait()
    return first_write, keys


with tempfile.TemporaryDirectory() as home:
    store = Store()
    starts = [typed_until_killed(store, home, number) for number in range(KILLS)]
    keys = sum(count for _, count in starts)
    times = sorted(seconds for seconds, _ in starts if seconds)
    print(f"{KILLS} kills, {keys} keys written: none lost; start and first write {times[len(times) // 2]:.2f} s at the "
          f"median, {times[-1]:.2f} s at most")
    if times[-1] > LONGEST_START:
        sys.exit(f"a start and its first write took {times[-1]:.2f} s")
