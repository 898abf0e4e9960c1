#!/usr/bin/env python3
"""Kills the program's parts, or runs two of them at once: processes_test.py DRIVER killed|two_programs|signals

Each scenario is run a few times for every change, and as often as promised in the long form (WAGEMILL_LONG=1).
"""
import os
import random
import signal
import sqlite3
import subprocess
import sys
import tempfile
import threading
import time


def rounds(short, long):
    return long if os.environ.get("WAGEMILL_LONG") == "1" else short


def start(home, *arguments, **changes):
    """The driver for a user with a home folder of their own, and no TEMP unless it is given."""
    plain = {key: value for key, value in os.environ.items() if not key.startswith("XDG_") and key != "TEMP"}
    os.makedirs(runtime := os.path.join(home, "run"), mode=0o700, exist_ok=True)
    environment = {**plain, "HOME": home, "XDG_CONFIG_HOME": os.path.join(home, "config"), "XDG_RUNTIME_DIR": runtime,
                   "QT_QPA_PLATFORM": "offscreen", **changes}
    return subprocess.Popen([sys.argv[1], *map(str, arguments)], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                            text=True, env=environment)


def run_folders(home):
    """The private folders of runs that are there."""
    return os.listdir(os.path.join(home, "run"))


def killed(home):
    """Kills the entry window at random moments while keys are typed: every key whose write had returned is in the store at
    the next start, and that start and its first write are quick."""
    # Seconds from the start of the process to the end of its first write. A busy machine may delay a single one; waiting
    # for something that the killed program left locked would take longer than either. Sanitizers slow a start down.
    usual, longest = (1.0, 5.0) if os.environ.get("WAGEMILL_SANITIZED") != "1" else (5.0, 25.0)
    allowed = {}
    kills = rounds(25, 1000)
    times, keys = [], 0
    for number in range(kills):
        begin, written = time.monotonic(), 0
        driver = start(home, "type", number)
        threading.Timer(random.uniform(0, 0.5) if number % 3 == 0 else random.uniform(0.2, 1), driver.kill).start()
        for line in driver.stdout:
            check_and_take(allowed, line)
            if line.startswith("="):
                written += 1
                if written == 1:
                    times.append(time.monotonic() - begin)
        driver.wait()
        keys += written
    times.sort()
    median = times[len(times) // 2]
    print(f"{kills} kills, {keys} keys written: none lost; start and first write {median:.2f} s at the median, "
          f"{times[-1]:.2f} s at most")
    if median > usual or times[-1] > longest:
        sys.exit("the start after a kill, or its first write, waits for something")


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


def two_programs(home):
    """Two programs at once, of one user: their builds never take each other's data, and no key that both store is lost."""
    os.mkdir(shared := os.path.join(home, "shared"))
    together(home, "build", rounds(25, 500))
    together(home, "build", rounds(25, 500), TEMP=shared)
    if left := os.listdir(shared) + run_folders(home):
        sys.exit(f"the builds left {left}")
    writes = rounds(200, 10_000)
    together(home, "store", writes)
    with sqlite3.connect(os.path.join(home, "config", "wagemill", "settings.sqlite")) as store:
        stored = set(store.execute("SELECT key, value FROM settings"))
    if lost := {(f"{who}{number}", str(number)) for who in ("Ada", "Bob") for number in range(writes)} - stored:
        sys.exit(f"{len(lost)} keys are lost: {sorted(lost)[:5]}")


def together(home, what, count, **changes):
    """Runs two drivers to their ends; what they wrote, without the lines that are no news."""
    begin = time.monotonic()
    two = [start(home, what, who, count, **changes) for who in ("Ada", "Bob")]
    written = [driver.communicate()[0].splitlines() for driver in two]
    for driver, lines in zip(two, written):
        # On a busy machine the other one's writes may leave no gap for 0.8 s: the key is then reported, and kept.
        news = [line for line in lines if not line.startswith("built ") and "is stored as soon as possible." not in line]
        if driver.returncode != 0 or news != ["done"]:
            sys.exit(f"{what}, TEMP {changes.get('TEMP', 'unset')}: ended with {driver.returncode}: {news[:5]}")
    print(f"2 x {count} x {what}, TEMP {'shared' if changes else 'unset'}: {time.monotonic() - begin:.1f} s")


def signals(home):
    """A signal that asks the program to end, in the middle of building, leaves no file; a kill leaves them to the next
    start, which removes them."""
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


def end_while_building(home, number, **changes):
    driver = start(home, "build", "Ada", 1_000_000, **changes)
    driver.stdout.readline()
    time.sleep(random.uniform(0, 0.2))
    driver.send_signal(number)
    written = driver.communicate(timeout=10)[0]
    if "wrong" in written or "message" in written:
        sys.exit(f"{signal.strsignal(number)}: {written}")
    return driver.returncode


with tempfile.TemporaryDirectory() as home:
    {scenario.__name__: scenario for scenario in (killed, two_programs, signals)}[sys.argv[2]](home)
