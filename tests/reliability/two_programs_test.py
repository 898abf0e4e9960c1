#!/usr/bin/env python3
"""Two programs at once, of one user: their builds never take each other's data, and no key that both store is lost."""
import os
import sqlite3
import sys
import tempfile
import time

sys.dont_write_bytecode = True
from driver import rounds, run_folders, start  # noqa: E402


def together(what, count, home, **changes):
    """Runs two drivers to their ends; what they wrote, without the lines that are no news."""
    begin = time.monotonic()
    two = [start(what, who, count, home=home, **changes) for who in ("Ada", "Bob")]
    written = [driver.communicate()[0].splitlines() for driver in two]
    for driver, lines in zip(two, written):
        # On a busy machine the other one's writes may leave no gap for 0.8 s: the key is then reported, and kept.
        news = [line for line in lines if not line.startswith("built ") and "is stored as soon as possible." not in line]
        if driver.returncode != 0 or news != ["done"]:
            sys.exit(f"{what}, TEMP {changes.get('TEMP', 'unset')}: ended with {driver.returncode}: {news[:5]}")
    print(f"2 x {count} x {what}, TEMP {'shared' if changes else 'unset'}: {time.monotonic() - begin:.1f} s")


def keys_in_the_store(home):
    with sqlite3.connect(os.path.join(home, "config", "wagemill", "settings.sqlite")) as store:
        return dict(store.execute("SELECT key, value FROM settings"))


with tempfile.TemporaryDirectory() as home:
    shared = os.path.join(home, "shared")
    os.mkdir(shared)
    together("build", rounds(25, 500), home)
    together("build", rounds(25, 500), home, TEMP=shared)
    if left := os.listdir(shared) + run_folders(home):
        sys.exit(f"the builds left {left}")
    writes = rounds(200, 10_000)
    together("store", writes, home)
    stored = keys_in_the_store(home)
    lost = [f"{who}{number}" for who in ("Ada", "Bob") for number in range(writes)
            if stored.get(f"{who}{number}") != str(number)]
    if lost:
        sys.exit(f"{len(lost)} keys are lost: {lost[:5]}")
