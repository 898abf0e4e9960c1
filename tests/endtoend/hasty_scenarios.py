"""Scenarios of a user who presses twice, closes too early or ends the program from outside: one build, nothing left."""
import contextlib
import os
import signal
import time

from desktop import Desktop, expect
from wagemill_guide import START, Guide

LONG = os.environ.get("WAGEMILL_LONG") == "1"
PRESSES = {
    "mouse": lambda guide, button: guide.desktop._xdotool("click", "1"),
    "Space": lambda guide, button: guide.desktop._xdotool("key", "space"),
    "shortcut": lambda guide, button: guide.desktop._xdotool("key", "alt+s"),
    "screen reader": lambda guide, button: button.queryAction().doAction(0),
}


def one_build_however_often_pressed(program):
    """So many employees, the second press so many milliseconds after the first, by every way to press."""
    with Desktop() as desktop:
        for employees in (1, 3, 5, 25) if LONG else (3, 25):
            delays = (0, 10, 30, 100, 150, 300, 600) if LONG else (10 * employees - 20,)
            for has_temp in (True, False) if LONG else (employees == 3,):
                guide = Guide(desktop, program, has_temp=has_temp, WAGEMILL_EMPLOYEES=str(employees))
                guide.load_sample_data()
                for way, press in PRESSES.items():
                    for delay in delays:
                        press_twice(guide, press, delay, f"{employees} employees, {way}, {delay} ms")
                guide.process.kill()
                guide.process.wait()


def press_twice(guide, press, delay, what):
    button = focused_start_button(guide)
    box = guide.box(button)
    guide.desktop._move(box.x + box.width // 2, box.y + box.height // 2)
    press(guide, button)
    time.sleep(delay / 1000)
    with contextlib.suppress(Exception):  # the screen reader's button may be gone with its window
        press(guide, button)
    back = guide.find("push button", "< Back")
    time.sleep(0.5)
    if guide.desktop.is_shown("Save File"):  # the second Alt+S reached the preview, where it saves
        guide.key("Escape")
        guide.expect_message("Done.")
    kept = [name for name in guide.files() if name.startswith("kvarno")]
    expect(len(kept) == 1 and not guide.message() and not any(guide.all("push button", START)),
           f"{what}: files {guide.files()}, message \"{guide.message()}\"")
    back.queryAction().doAction(0)
    guide.find("push button", START)
    guide.wait_for(lambda: guide.files() == [], f"no file to be left after going back: {what}", 5)


def focused_start_button(guide):
    button = guide.find("push button", START)
    button.queryComponent().grabFocus()
    return button


def closing_early_leaves_nothing(program):
    """Alt+F4 so many milliseconds after the press that starts a build."""
    with Desktop() as desktop:
        for delay in range(0, 301, 20 if LONG else 100):
            guide = Guide(desktop, program, has_temp=delay % 40 == 0, WAGEMILL_EMPLOYEES="25")
            PRESSES["Space"](guide, focused_start_button(guide))
            time.sleep(delay / 1000)
            guide.close_window()
            if guide.ended(1) is None:
                guide.close_window()  # the window manager found no window in front between the two
            expect_clean_end(guide, f"Alt+F4 {delay} ms after the press")


def expect_clean_end(guide, what):
    status = guide.ended()
    expect(status == 0 and not guide.files(), f"{what}: the program ended with {status} and left {guide.files()}")


def signals_leave_nothing(program):
    """A signal that asks the program to end, in the preview, with a dialog open in it, or during a build."""
    def in_the_preview(guide):
        guide.build()

    def in_a_dialog(guide):
        guide.build()
        guide.key("ctrl+s")
        guide.find("text", "File name:")

    def during_a_build(guide):
        PRESSES["Space"](guide, focused_start_button(guide))
        time.sleep(0.03)

    def in_a_failed_build(guide):
        os.mkdir(os.path.join(guide.temp, "template.xlt"))
        guide.click("push button", START)
        guide.wait_for(guide.message, "the error dialog")

    with Desktop() as desktop:
        for place in (in_the_preview, in_a_dialog, during_a_build, in_a_failed_build):
            for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP) if LONG else (signal.SIGTERM,):
                guide = Guide(desktop, program, has_temp=True, WAGEMILL_EMPLOYEES="25")
                place(guide)
                guide.process.send_signal(number)
                guide.process.send_signal(number)
                if place is in_a_failed_build:
                    guide.ended()
                    os.rmdir(os.path.join(guide.temp, "template.xlt"))
                expect_clean_end(guide, f"{signal.strsignal(number)} {place.__name__}")
