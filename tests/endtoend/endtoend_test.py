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
from citizen_scenarios import CITIZEN_SCENARIOS, expect  # noqa: E402
from demo import run_demo  # noqa: E402
from desktop import Desktop, StepFailed  # noqa: E402
from hasty_scenarios import HASTY_SCENARIOS  # noqa: E402
from wagemill_guide import Guide  # noqa: E402

TOOLS = ("Xvfb", "openbox", "xdotool", "import", "dbus-daemon")


def temporary_files(desktop):
    """What the program keeps in its own temporary folder."""
    return sorted(os.path.basename(path) for path in glob.glob(os.path.join(desktop.home, "run", "wagemill-*", "*")))


def from_sample_to_saved_workbook(program):
    with tempfile.TemporaryDirectory() as output:
        for path in run_demo(program, output):
            expect(os.path.getsize(path) > 1000, f"{path} is too small to be what it should be")
        mask = os.umask(0)
        os.umask(mask)
        permissions = os.stat(os.path.join(output, "payroll.xls")).st_mode & 0o777
        expect(permissions == 0o666 & ~mask, f"the saved copy has the permissions {permissions:o}, not the user's own")


def refuses_what_is_not_a_number(program):
    with Desktop() as desktop:
        guide = Guide(desktop, program)
        guide.type_into("Medicare Tax (Percentage):", "abc")
        guide.expect_message("Please enter a valid input.")
        desktop.type("1.5")  # the refused text is selected, so typing replaces it
        desktop.key("Tab")
        desktop.wait_for(lambda: guide.screen.text("Medicare Tax (Percentage):") == "1.50", "the tidied number")


def goes_back_and_cleans_up(program):
    with Desktop() as desktop:
        guide = Guide(desktop, program)
        guide.load_sample_data()
        guide.build()
        files = temporary_files(desktop)
        expect(len(files) == 1 and files[0].startswith("kvarno"), f"after a build the folder holds {files}")
        guide.go_back()
        expect(temporary_files(desktop) == [], "the temporary workbook is still there after going back")
        expect(guide.screen.text("Name:") == "Ned Hollister", "the typed data is gone after going back")
        guide.type_into("Name:", "Ida Reed")
        guide.build()
        guide.close_window()
        expect(guide.process.wait(5) == 0, "closing the preview did not end the program in order")
        expect(glob.glob(os.path.join(desktop.home, "run", "wagemill-*")) == [], "the temporary folder is still there")


def prints_the_stub_into_a_file(program):
    with Desktop() as desktop:
        guide = Guide(desktop, program)
        guide.load_sample_data()
        guide.build()
        desktop.key("ctrl+p")
        desktop.window("Print")
        desktop.key("Return")  # "Print to File (PDF)", since the desktop has no printer
        printed = os.path.join(desktop.home, "Individual paystubs.pdf")
        desktop.wait_for(lambda: os.path.exists(printed) and open(printed, "rb").read().strip().endswith(b"%%EOF"),
                         "the stub in a PDF file")


def ends_with_a_message_without_excel(program):
    with Desktop() as desktop:
        process = desktop.start_program(program, WAGEMILL_SPREADSHEET="excel")
        desktop.window("Wagemill Payroll Workbook")
        expect(not desktop.is_shown("Wagemill"), "the entry window shows although there is no Excel")
        desktop.key("Return")
        expect(process.wait(5) == 0, "the program did not end in order")


def understands_other_regions(program):
    with Desktop(locale="de_DE.UTF-8") as desktop:
        guide = Guide(desktop, program, LC_ALL="de_DE.UTF-8")
        if "€" not in guide.screen.text("Hourly Wage:"):
            print("Skipped: the German locale is not installed")
            sys.exit(77)
        guide.type_into("Hourly Wage:", "12,5")
        desktop.wait_for(lambda: guide.screen.text("Hourly Wage:").startswith("12,50"), "12,50 €")
        guide.build()


SCENARIOS = {scenario.__name__: scenario for scenario in (
    from_sample_to_saved_workbook, refuses_what_is_not_a_number, goes_back_and_cleans_up, prints_the_stub_into_a_file,
    ends_with_a_message_without_excel, understands_other_regions, *CITIZEN_SCENARIOS, *HASTY_SCENARIOS)}


def main():
    missing = [tool for tool in TOOLS if not shutil.which(tool)]
    if missing:
        print("Skipped: the program was not driven, because these tools are missing:", *missing)
        sys.exit(77)
    try:
        SCENARIOS[sys.argv[2]](os.path.abspath(sys.argv[1]))
    except StepFailed as failure:
        sys.exit(f"{sys.argv[2]}: {failure}")


if __name__ == "__main__":
    main()
