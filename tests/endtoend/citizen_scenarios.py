"""Scenarios of the program as a citizen of the desktop: without a mouse, by ear, on small screens, for many employees."""
import os
import sqlite3

from desktop import expect
from wagemill_guide import PREVIEW, SAVE, START, Guide, guided

NED = "Pay stub of Ned Hollister: gross pay $997.00, net pay $688.90."


def expect_said(guide, *expected):
    said = guide.find("image", "Picture of the payroll sheet").description.split("\n")
    expect(said == [*expected], f"the picture says {said}")


def names_every_control_for_a_screen_reader(program):
    with guided(program) as guide:
        expect_names(guide, "the entry window", at_least=22)
        guide.key("F1")
        guide.find("push button", "OK")
        expect_names(guide, "a message", at_least=24)
        guide.key("Escape")
        guide.load_sample_data()
        guide.build()
        expect_names(guide, "the preview", at_least=6)
        expect_said(guide, NED)
        guide.key("ctrl+s")
        guide.find("text", "File name:")
        expect_names(guide, "the save dialog", at_least=12)


def expect_names(guide, where, at_least):
    controls = list(guide.focusable())
    expect(len(controls) >= at_least, f"{where} shows only {len(controls)} controls")
    unnamed = [control.getRoleName() for control in controls if not control.name]
    expect(not unnamed, f"{where} has controls without a name: {unnamed}")


def needs_no_mouse(program):
    with guided(program) as guide:
        saved, printed = (os.path.join(guide.desktop.home, name) for name in ("run/March", "Individual paystubs.pdf"))
        guide.key("alt+l")
        guide.wait_for(lambda: guide.text("Name:") == "Ned Hollister", "the sample data")
        guide.key("Escape", "alt+s")
        guide.find("push button", SAVE)
        guide.key("ctrl+p")
        guide.desktop.window("Print")
        guide.key("Return")  # "Print to File (PDF)", since the desktop has no printer
        guide.wait_for(lambda: os.path.exists(printed) and open(printed, "rb").read().strip().endswith(b"%%EOF"),
                       "the stub in a PDF file")
        guide.key("Escape", "ctrl+s")
        guide.find("text", "File name:")
        guide.desktop.window("Save File")
        guide.type(saved)
        guide.key("Return")
        guide.wait_for(lambda: "Done." in guide.message(), "\"Done.\"")
        expect(os.path.exists(saved), "the file was not saved as it was named")
        guide.key("Escape")
        guide.wait_for(lambda: guide.message() == "", "the message to go")
        guide.key("alt+b")
        guide.find("push button", START)


def pays_twenty_five_employees(program):
    with guided(program, WAGEMILL_EMPLOYEES="99", message="WAGEMILL_EMPLOYEES is \"99\", but the window can hold 1 to 25 "
                "employees. It opens with 25.") as guide:
        guide.key("alt+l")
        guide.click("label", "Serial Number : 1 of 25")
        for _ in range(24):
            guide.desktop._xdotool("click", "5")  # the wheel, a notch down
        guide.key("alt+e")  # the ID of the employee in view
        for text in ("E25", "Ida Reed", "20"):
            guide.type(text)
            guide.key("Tab")
        guide.key("alt+s")
        guide.find("push button", SAVE)
        expect_said(guide, NED, "Pay stub of Ida Reed: gross pay $0.00, net pay $0.00.", "23 pay stubs without amounts.")
        guide.close_window()
        guide.ended()
        again = Guide(guide.desktop, program, WAGEMILL_EMPLOYEES="25")
        expect("Ida Reed" in again.texts("Name:"), "the last employee is not there at the next start")


def fits_a_small_screen(program):
    with guided(program, size="700x800") as guide:  # the fields are in one column
        bars = [bar.name for bar in guide.all("scroll bar")]
        expect(bars == ["Employee shown"], f"there is room for the whole window, yet it has the scroll bars {bars}")
        guide.load_sample_data()
        expect_all_on_screen(guide, 700, 800)
        guide.build()
        guide.desktop.window(PREVIEW)
        expect_all_on_screen(guide, 700, 800)


def expect_all_on_screen(guide, width, height):
    for control in guide.focusable():
        box = guide.box(control)
        expect(box.x >= 0 and box.y >= 0 and box.x + box.width <= width and box.y + box.height <= height,
               f"\"{control.name}\" is not whole on the screen: {box.x}, {box.y}, {box.width} x {box.height}")


def survives_a_curious_screen_reader(program):
    """Windows and scroll bars come and go while everything is asked for its children, and for one beyond the last."""
    with guided(program, size="800x480") as guide:
        for walk in range(1000 if os.environ.get("WAGEMILL_LONG") == "1" else 12):
            if walk % 2 == 0:
                guide.key("alt+s" if walk % 4 == 0 else "alt+b")
            for control in guide.walk():
                control.getChildAtIndex(control.childCount)
            expect(guide.process.poll() is None, f"the program ended while it was looked at: {guide.process.poll()}")


def stores_what_a_lock_kept_waiting(program):
    with guided(program) as guide:
        other = sqlite3.connect(os.path.join(guide.desktop.home, ".config", "wagemill", "settings.sqlite"),
                                isolation_level=None)

        def stored():
            return other.execute("SELECT value FROM settings WHERE key = 'txtName0'").fetchone()[0]

        def type_under_lock(letter):
            other.execute("BEGIN EXCLUSIVE")
            guide.type(letter)
            guide.expect_message("another program has locked them. What you typed stays in the window")

        guide.click("text", "Name:")
        type_under_lock("Z")
        expect(guide.text("Name:") == "Z", "the key is not in its field")
        other.execute("ROLLBACK")
        guide.wait_for(lambda: stored() == "Z", "the key to be stored without another one", 3)
        type_under_lock("o")
        guide.close_window()
        guide.wait_for(lambda: "What you typed last is not stored yet." in guide.message(), "the warning")
        other.execute("ROLLBACK")
        guide.key("Return")
        expect(guide.ended() == 0 and stored() == "Zo", f"closing lost a key: {stored()} is stored")
