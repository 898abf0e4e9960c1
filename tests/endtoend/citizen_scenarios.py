"""Scenarios of the program as a citizen of the desktop: without a mouse, by ear, on small screens, for many employees."""
import os
import sqlite3

from desktop import Desktop, StepFailed
from wagemill_guide import PREVIEW, START, Guide

SAVE = "Save Results To Excel File"
NED = "Pay stub of Ned Hollister: gross pay $997.00, net pay $688.90."


def expect(condition, what):
    if not condition:
        raise StepFailed(what)


def names_every_control_for_a_screen_reader(program):
    with Desktop() as desktop:
        guide = Guide(desktop, program)
        screen = guide.screen
        expect_names(screen, "the entry window", at_least=22)
        desktop.key("F1")
        screen.find("push button", "OK")
        expect_names(screen, "a message", at_least=24)
        desktop.key("Escape")
        guide.load_sample_data()
        guide.build()
        expect_names(screen, "the preview", at_least=6)
        said = screen.find("image", "Picture of the payroll sheet").description
        expect(said == NED, f"the picture says \"{said}\"")
        desktop.key("ctrl+s")
        screen.find("text", "File name:")
        expect_names(screen, "the save dialog", at_least=12)


def expect_names(screen, where, at_least):
    controls = list(screen.focusable())
    expect(len(controls) >= at_least, f"{where} shows only {len(controls)} controls")
    unnamed = [control.getRoleName() for control in controls if not control.name]
    expect(not unnamed, f"{where} has controls without a name: {unnamed}")


def needs_no_mouse(program):
    with Desktop() as desktop:
        guide = Guide(desktop, program)
        desktop.key("alt+l")
        desktop.wait_for(lambda: guide.screen.text("Name:") == "Ned Hollister", "the sample data")
        desktop.key("Escape", "alt+s")
        guide.screen.find("push button", SAVE)
        desktop.key("Escape", "ctrl+s")
        guide.screen.find("text", "File name:")
        desktop.window("Save File")
        desktop.type(os.path.join(desktop.home, "run", "March"))
        desktop.key("Return")
        desktop.wait_for(lambda: "Done." in guide.message(), "\"Done.\"")
        expect(os.path.exists(os.path.join(desktop.home, "run", "March")), "the file was not saved as it was named")
        desktop.key("Escape")
        desktop.wait_for(lambda: guide.message() == "", "the message to go")
        desktop.key("alt+b")
        guide.screen.find("push button", START)


def pays_twenty_five_employees(program):
    with Desktop() as desktop:
        guide = Guide(desktop, program, WAGEMILL_EMPLOYEES="99", message="WAGEMILL_EMPLOYEES is \"99\", but the window "
                      "can hold 1 to 25 employees. It opens with 25.")
        desktop.key("alt+l")
        guide.screen.click("label", "Serial Number : 1 of 25")
        for _ in range(24):
            desktop._xdotool("click", "5")  # the wheel, a notch down
        desktop.key("alt+e")  # the ID of the employee in view
        for text in ("E25", "Ida Reed", "20"):
            desktop.type(text)
            desktop.key("Tab")
        desktop.key("alt+s")
        guide.screen.find("push button", SAVE)
        said = guide.screen.find("image", "Picture of the payroll sheet").description.split("\n")
        expect(said == [NED, "Pay stub of Ida Reed: gross pay $0.00, net pay $0.00.",
                        "23 pay stubs without amounts."], f"the picture says {said}")
        guide.close_window()
        guide.process.wait(5)
        again = Guide(desktop, program, WAGEMILL_EMPLOYEES="25")
        expect("Ida Reed" in again.screen.texts("Name:"), "the last employee is not there at the next start")


def fits_a_small_screen(program):
    with Desktop(size="700x800") as desktop:  # the fields are in one column
        guide = Guide(desktop, program)
        bars = [bar.name for bar in guide.screen.all("scroll bar")]
        expect(bars == ["Employee shown"], f"there is room for the whole window, yet it has the scroll bars {bars}")
        guide.load_sample_data()
        expect_all_on_screen(guide.screen, 700, 800)
        guide.build()
        desktop.window(PREVIEW)
        expect_all_on_screen(guide.screen, 700, 800)


def expect_all_on_screen(screen, width, height):
    for control in screen.focusable():
        box = screen.box(control)
        expect(box.x >= 0 and box.y >= 0 and box.x + box.width <= width and box.y + box.height <= height,
               f"\"{control.name}\" is not whole on the screen: {box.x}, {box.y}, {box.width} x {box.height}")


def survives_a_curious_screen_reader(program):
    """Windows and scroll bars come and go while everything is asked for its children, and for one beyond the last."""
    with Desktop(size="800x480") as desktop:
        guide = Guide(desktop, program)
        for walk in range(1000 if os.environ.get("WAGEMILL_LONG") == "1" else 12):
            if walk % 2 == 0:
                desktop.key("alt+s" if walk % 4 == 0 else "alt+b")
            for control in guide.screen.walk():
                control.getChildAtIndex(control.childCount)
            expect(guide.process.poll() is None, f"the program ended while it was looked at: {guide.process.poll()}")


def stores_what_a_lock_kept_waiting(program):
    with Desktop() as desktop:
        guide = Guide(desktop, program)
        other = sqlite3.connect(os.path.join(desktop.home, ".config", "wagemill", "settings.sqlite"),
                                isolation_level=None)

        def stored():
            return other.execute("SELECT value FROM settings WHERE key = 'txtName0'").fetchone()[0]

        def type_under_lock(letter):
            other.execute("BEGIN EXCLUSIVE")
            desktop.type(letter)
            guide.expect_message("another program has locked them. What you typed stays in the window")

        guide.screen.click("text", "Name:")
        type_under_lock("Z")
        expect(guide.screen.text("Name:") == "Z", "the key is not in its field")
        other.execute("ROLLBACK")
        desktop.wait_for(lambda: stored() == "Z", "the key to be stored without another one", 3)
        type_under_lock("o")
        guide.close_window()
        desktop.wait_for(lambda: "What you typed last is not stored yet." in guide.message(), "the warning")
        other.execute("ROLLBACK")
        desktop.key("Return")
        expect(guide.process.wait(5) == 0 and stored() == "Zo", f"closing lost a key: {stored()} is stored")


CITIZEN_SCENARIOS = (names_every_control_for_a_screen_reader, needs_no_mouse, pays_twenty_five_employees,
                     fits_a_small_screen, survives_a_curious_screen_reader, stores_what_a_lock_kept_waiting)
