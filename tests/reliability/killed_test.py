#!/usr/bin/env python3
"""Kills the entry window at random moments while keys are typed: every key whose write had returned is in the store at
the next start, and that start and its first write are quick."""
import os
import random
import sys
import tempfile
import threading
import time

sys.dont_write_bytecode = True
from driver import rounds, start  # noqa: E402

KILLS = rounds(25, 1000)
# Seconds from the start of the process to the end of its first write. A busy machine may delay a single one; waiting
# for something that the killed program left locked would take longer than either. Sanitizers slow a start down.
USUAL_START, LONGEST_START = (1.0, 5.0) if os.environ.get("WAGEMILL_SANITIZED") != "1" else (5.0, 25.0)


def check_and_take(allowed, line):
    """Learns from one line of the driver what the store may hold, by key: the last text known to be written, or the one
    that was being written at the kill."""
    kind, _, rest = line.rstrip("\n").partition(" ")
    key, _, text = rest.partition("\t")
    if kind == "was" and text not in allowed.setdefault(key, {text}):
        sys.exit(f"{key} holds {text!r} after a kill, not {' or '.join(map(repr, allowed[key]))}")
    if kind == "message":
        sys.exit(f"the program showed: {rest}")
    if kind == ">":
        allowed[key].add(text)
    elif kind in ("was", "="):
        allowed[key] = {text}


def typed_until_killed(allowed, home, number):
    """Seconds until the first write after the start, None when the kill came before it; and how many keys were written."""
    begin, first_write, keys = time.monotonic(), None, 0
    driver = start("type", number, home=home)
    threading.Timer(random.uniform(0, 0.5) if number % 3 == 0 else random.uniform(0.2, 1), driver.kill).start()
    typing = False
    for line in driver.stdout:
        check_and_take(allowed, line)
        typing |= line == "ready\n"
        if typing and line.startswith("="):
            first_write = first_write or time.monotonic() - begin
            keys += 1
    driver.wait()
    return first_write, keys


with tempfile.TemporaryDirectory() as home:
    allowed = {}
    starts = [typed_until_killed(allowed, home, number) for number in range(KILLS)]
    keys = sum(count for _, count in starts)
    times = sorted(seconds for seconds, _ in starts if seconds)
    median, longest = times[len(times) // 2], times[-1]
    quick = sum(seconds < USUAL_START for seconds in times)
    print(f"{KILLS} kills, {keys} keys written: none lost; start and first write {median:.2f} s at the median, "
          f"{longest:.2f} s at most, {quick} of {len(times)} under {USUAL_START:.0f} s")
    if median > USUAL_START or longest > LONGEST_START:
        sys.exit("the start after a kill, or its first write, waits for something")
