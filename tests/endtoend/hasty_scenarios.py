"""Scenarios of a user who presses twice, closes too early or ends the program from outside: one build, nothing left."""
import os
import signal
import subprocess
import tempfile
import time

from desktop import Desktop, StepFailed
from wagemill_guide import START, Guide

LONG = os.environ.get("WAGEMILL_LONG") == "1"
PRESSES = {
    "mouse": lambda guide, button: guide.desktop._xdotool("click", "1"),
    "Space": lambda guide, button: guide.desktop._xdotool("key", "space"),
    "shortcut": lambda guide, button: guide.desktop._xdotool("key", "alt+s"),
    "screen reader": lambda guide, button: button.queryAction().doAction(0),
}


class Files:
    """The folder that holds the run's intermediate files: TEMP, or the private one."""

    def __init__(self, desktop, has_temp):
        self.desktop = desktop
        self.temp = tempfile.mkdtemp(dir=desktop.home) if has_temp else None
        self.environment = {"TEMP": self.temp} if has_temp else {}

    def names(self):
        run = os.path.join(self.desktop.home, "run")
        folders = [self.temp] if self.temp else [os.path.join(run, name) for name in os.listdir(run)
                                                 if name.startswith("wagemill-")]
        return sorted(name for folder in folders for name in os.listdir(folder) if not name.startswith("."))

    def expect_none(self, what):
        self.desktop.wait_for(lambda: self.names() == [], f"no file to be left {what}; there are {self.names()}", 5)


def one_build_however_often_pressed(program):
    """So many employees, the second press so many milliseconds after the first, by every way to press."""
    with Desktop() as desktop:
        for employees in (1, 3, 5, 25) if LONG else (3, 25):
            delays = (0, 10, 30, 100, 150, 300, 600) if LONG else (10 * employees - 20,)
            for has_temp in (True, False) if LONG else (employees == 3,):
                files = Files(desktop, has_temp)
                guide = Guide(desktop, program, WAGEMILL_EMPLOYEES=str(employees), **files.environment)
                guide.load_sample_data()
                for way, press in PRESSES.items():
                    for delay in delays:
                        press_twice(guide, files, press, delay, f"{employees} employees, {way}, {delay} ms")
                guide.process.kill()
                guide.process.wait()


def press_twice(guide, files, press, delay, what):
    desktop = guide.desktop
    button = guide.screen.find("push button", START)
    button.queryComponent().grabFocus()
    box = guide.screen.box(button)
    desktop._move(box.x + box.width // 2, box.y + box.height // 2)
    press(guide, button)
    time.sleep(delay / 1000)
    try:
        press(guide, button)
    except Exception:  # the screen reader's button is gone with its window
        pass
    back = guide.screen.find("push button", "< Back")
    time.sleep(0.5)
    if desktop.is_shown("Save File"):  # the second Alt+S reached the preview, where it saves
        desktop.key("Escape")
        guide.expect_message("Done.")
    kept = [name for name in files.names() if name.startswith("kvarno")]
    if len(kept) != 1 or guide.message() or any(guide.screen.all("push button", START)):
        raise StepFailed(f"{what}: files {files.names()}, message \"{guide.message()}\"")
    back.queryAction().doAction(0)
    guide.screen.find("push button", START)
    files.expect_none("after going back: " + what)


def closing_early_leaves_nothing(program):
    """Alt+F4 so many milliseconds after the press that starts a build."""
    with Desktop() as desktop:
        for delay in range(0, 301, 20 if LONG else 100):
            files = Files(desktop, has_temp=delay % 40 == 0)
            guide = Guide(desktop, program, WAGEMILL_EMPLOYEES="25", **files.environment)
            guide.screen.find("push button", START).queryComponent().grabFocus()
            PRESSES["Space"](guide, None)
            time.sleep(delay / 1000)
            guide.close_window()
            if not has_ended(guide, 1):
                guide.close_window()  # the window manager found no window in front between the two
            expect_ended(guide, files, f"Alt+F4 {delay} ms after the press")


def has_ended(guide, seconds):
    try:
        return guide.process.wait(seconds) is not None
    except subprocess.TimeoutExpired:
        return False


def expect_ended(guide, files, what):
    if not has_ended(guide, 20) or guide.process.returncode != 0:
        raise StepFailed(f"{what}: the program ended with {guide.process.returncode}")
    if files.names():
        raise StepFailed(f"{what} left {files.names()}")


def signals_leave_nothing(program):
    """A signal that asks the program to end, in the preview, with a dialog open in it, or during a build."""
    def in_the_preview(guide):
        guide.build()

    def in_a_dialog(guide):
        guide.build()
        guide.desktop.key("ctrl+s")
        guide.screen.find("text", "File name:")

    def during_a_build(guide):
        guide.screen.find("push button", START).queryComponent().grabFocus()
        PRESSES["Space"](guide, None)
        time.sleep(0.03)

    def in_a_failed_build(guide):
        os.mkdir(os.path.join(guide.temp, "template.xlt"))
        guide.screen.click("push button", START)
        guide.desktop.wait_for(guide.message, "the error dialog")

    with Desktop() as desktop:
        for place in (in_the_preview, in_a_dialog, during_a_build, in_a_failed_build):
            for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP) if LONG else (signal.SIGTERM,):
                files = Files(desktop, has_temp=True)
                guide = Guide(desktop, program, WAGEMILL_EMPLOYEES="25", **files.environment)
                guide.temp = files.temp
                place(guide)
                guide.process.send_signal(number)
                guide.process.send_signal(number)
                if place is in_a_failed_build:
                    guide.desktop.wait_for(lambda: guide.process.poll() is not None, "the program to end")
                    os.rmdir(os.path.join(files.temp, "template.xlt"))
                expect_ended(guide, files, f"{signal.strsignal(number)} {place.__name__}")


HASTY_SCENARIOS = (one_build_however_often_pressed, closing_early_leaves_nothing, signals_leave_nothing)
