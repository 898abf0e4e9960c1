#!/usr/bin/env python3
"""Drives the program itself in a virtual display: endtoend_test.py PROGRAM SCENARIO

Ends with 0 when everything happened, 77 when a tool is missing, and 1 with a reason otherwise.
"""
import glob
import os
import shutil
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import citizen_scenarios  # noqa: E402
import hasty_scenarios  # noqa: E402
from demo import run_demo  # noqa: E402
from desktop import Desktop, StepFailed, expect  # noqa: E402
from wagemill_guide import START, guided  # noqa: E402

TOOLS = ("Xvfb", "openbox", "xdotool", "import", "dbus-daemon")


def from_sample_to_saved_workbook(program):
    with tempfile.TemporaryDirectory() as output:
        for path in run_demo(program, output):
            expect(os.path.getsize(path) > 1000, f"{path} is too small to be what it should be")
        mask = os.umask(0)
        os.umask(mask)
        permissions = os.stat(os.path.join(output, "payroll.xls")).st_mode & 0o777
        expect(permissions == 0o666 & ~mask, f"the saved copy has the permissions {permissions:o}, not the user's own")


def goes_back_and_cleans_up(program):
    with guided(program) as guide:
        guide.load_sample_data()
        guide.build()
        files = guide.files()
        expect(len(files) == 1 and files[0].startswith("kvarno"), f"after a build the folder holds {files}")
        guide.click("push button", "< Back")
        guide.find("push button", START)
        expect(guide.files() == [], "the temporary workbook is still there after going back")
        expect(guide.text("Name:") == "Ned Hollister", "the typed data is gone after going back")
        guide.type_into("Medicare Tax (Percentage):", "abc")
        guide.expect_message("Please enter a valid input.")
        guide.type("1.5")  # the refused text is selected, so typing replaces it
        guide.key("Tab")
        guide.wait_for(lambda: guide.text("Medicare Tax (Percentage):") == "1.50", "the tidied number")
        guide.build()
        guide.close_window()
        expect(guide.ended() == 0, "closing the preview did not end the program in order")
        expect(glob.glob(os.path.join(guide.desktop.home, "run", "wagemill-*")) == [], "the temporary folder is still there")


def ends_with_a_message_without_excel(program):
    with Desktop() as desktop:
        process = desktop.start_program(program, WAGEMILL_SPREADSHEET="excel")
        desktop.window("Wagemill Payroll Workbook")
        expect(not desktop.is_shown("Wagemill"), "the entry window shows although there is no Excel")
        desktop.key("Return")
        expect(process.wait(5) == 0, "the program did not end in order")


def understands_other_regions(program):
    with guided(program, locale="de_DE.UTF-8", LC_ALL="de_DE.UTF-8") as guide:
        if "€" not in guide.text("Hourly Wage:"):
            print("Skipped: the German locale is not installed")
            sys.exit(77)
        guide.type_into("Hourly Wage:", "12,5")
        guide.wait_for(lambda: guide.text("Hourly Wage:").startswith("12,50"), "12,50 €")
        guide.build()


def main():
    if missing := [tool for tool in TOOLS if not shutil.which(tool)]:
        print("Skipped: the program was not driven, because these tools are missing:", *missing)
        sys.exit(77)
    scenarios = {**globals(), **vars(citizen_scenarios), **vars(hasty_scenarios)}
    try:
        scenarios[sys.argv[2]](os.path.abspath(sys.argv[1]))
    except StepFailed as failure:
        sys.exit(f"{sys.argv[2]}: {failure}")


main()
