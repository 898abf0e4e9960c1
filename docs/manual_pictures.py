#!/usr/bin/env python3
"""Makes the manual's pictures from the running program: manual_pictures.py PROGRAM FOLDER

Goes the way of the manual in a virtual display, and leaves the pictures, and the workbook payroll.xls, in the folder.
"""
import multiprocessing
import os
import subprocess
import sys
import time

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "endtoend"))
from desktop import Desktop  # noqa: E402
from wagemill_guide import ENTRY, SAVE, Guide  # noqa: E402

MESSAGE = "Wagemill Payroll Workbook"
SCREEN = (1024, 640)  # small, so that a picture shows little besides what it is about


class Pictures:
    def __init__(self, desktop, screen, folder):
        self.desktop = desktop
        self.screen = screen
        self.folder = folder

    def take(self, name, title=ENTRY):
        """What the screen shows where that window is, with what is in front of it and without the pointer."""
        self._run("xdotool", "mousemove", str(SCREEN[0] - 1), str(SCREEN[1] - 1))
        time.sleep(0.5)  # for the last stroke of its drawing
        box = self.screen.box(self._window(title))
        self._run("import", "-window", "root", "-crop", f"{box.width}x{box.height}+{box.x}+{box.y}", "+repage",
                  os.path.join(self.folder, name + ".png"))

    def _window(self, title):
        programs = self.screen.pyatspi.Registry.getDesktop(0)
        return next(window for program in programs for window in program
                    if window.name == title and window.getState().contains(self.screen.pyatspi.STATE_SHOWING))

    def _run(self, *command):
        subprocess.run(command, env=self.desktop.environment, check=True)


def small_desktop():
    return Desktop(size="{}x{}".format(*SCREEN))


def pictures_of_entry(program, folder):
    with small_desktop() as desktop:
        guide = Guide(desktop, program)
        pictures = Pictures(desktop, guide, folder)
        pictures.take("entry-empty")
        guide.load_sample_data()
        pictures.take("entry-sample")
        guide.type_into("Medicare Tax (Percentage):", "4 %x")
        desktop.window(MESSAGE)
        pictures.take("invalid-input")
        guide.expect_message("Please enter a valid input.")


def pictures_of_preview(program, folder):
    with small_desktop() as desktop:
        documents = os.path.join(desktop.home, "Documents")
        os.mkdir(documents)
        guide = Guide(desktop, program)
        pictures = Pictures(desktop, guide, folder)
        guide.load_sample_data()
        guide.type_into("Tax Status:", "S")  # cells left empty are shown as 0 by some programs and as nothing by others
        guide.type_into("Federal Allowance (From W-4):", "1")
        guide.build()
        pictures.take("preview")
        for _ in range(3):
            guide.zoom_in()
        pictures.take("preview-zoomed")
        guide.click("push button", SAVE)
        desktop.window("Save File")
        desktop.type("Payroll March 2026.xls")
        pictures.take("save-dialog", "Save File")
        desktop.key("Return")
        guide.expect_message("Done.")
        guide.click("push button", SAVE)
        desktop.window("Save File")
        desktop.type("Payroll March 2026.xls")
        desktop.key("Return")
        desktop.window(MESSAGE)
        pictures.take("overwrite")
        os.replace(os.path.join(documents, "Payroll March 2026.xls"), os.path.join(folder, "payroll.xls"))


def picture_of_employees(program, folder):
    with small_desktop() as desktop:
        guide = Guide(desktop, program, WAGEMILL_EMPLOYEES="3")
        guide.load_sample_data()
        box = guide.box(next(guide.all("text", "Name:")))
        wheel_down = 5
        desktop.click(box.x, box.y, wheel_down)
        desktop.key("alt+e")
        for text in ("E119", "Ada Marsh", "18.5", "S", "1", "8"):
            desktop.type(text)
            desktop.key("Tab")
        Pictures(desktop, guide, folder).take("employees")


def picture_of_application_error(program, folder):
    """A number that was left half typed when the program was closed cannot be shown at the next start."""
    with small_desktop() as desktop:
        guide = Guide(desktop, program)
        guide.click("text", "Hourly Wage:")
        desktop.type("12..5")
        guide.close_window()
        guide.process.wait(5)
        desktop.start_program(program)
        desktop.window("Application Error")
        Pictures(desktop, guide, folder).take("application-error", "Application Error")


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    program, folder = (os.path.abspath(argument) for argument in sys.argv[1:])
    os.makedirs(folder, exist_ok=True)
    # A process can look at one desktop only, so each part is a process.
    context = multiprocessing.get_context("spawn")
    for make in (pictures_of_entry, pictures_of_preview, picture_of_employees, picture_of_application_error):
        process = context.Process(target=make, args=(program, folder))
        process.start()
        process.join()
        if process.exitcode != 0:
            sys.exit(f"The pictures could not be made: see {make.__name__} above.")


if __name__ == "__main__":
    main()
