#!/usr/bin/env python3
"""Drives the Windows program under Wine by real keys and clicks: smoke_test.py FOLDER PROGRAM TOOLS SCENARIO

FOLDER  where the Wine prefix is, and where the pictures of the screen are left
TOOLS   the folder of clipboard_text.exe; excel.exe is looked for beside it in excel/server
Ends with 0 when everything happened, else with 1 and a reason.
"""
import glob
import os
import re
import shutil
import subprocess
import sys
import time

from wine import WineDesktop, expect

UNINSTALL_KEY = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Wagemill"
KEY = r"HKCU\Software\VB and VBA Program Settings\Quellory\Wagemill"
MISSING_APPLICATION = ("\nError 842001. A normal instance of Excel could not be created.\n\n"
                       "1. Please make sure Excel is installed on this computer.\n\n2. ")

# Places in the windows, without their frames; negative ones count from the right and the bottom. Wine's accessibility
# does not find the controls, so they are listed here; an entry window of another size says that they have moved.
SAMPLE_DATA, START = (164, -24), (-74, -24)
NAME, WAGE = (265, 142), (265, 177)
ZOOM_IN, SAVE, BACK = (66, 44), (-188, 44), (-60, 44)
TITLE, MESSAGE_TITLE = "Wagemill", "Wagemill Payroll Workbook"
FOLDER = "Löhne Ж"  # holds letters that no code page of one byte has side by side
STUB_BLUE = "#1B4F72"  # "accent" of the template


class Windows(WineDesktop):
    """What the scenarios do with the program."""

    def __init__(self, folder, program, tools):
        super().__init__(os.path.join(folder, "wine"), os.path.join(folder, "failure.png"))
        self.folder, self.program, self.tools = folder, program, tools

    def start(self, **environment):
        self.process = self.start_program(self.program, **environment)

    def entry_window(self):
        window = self.window(TITLE, 60)
        self.wait_for(lambda: self.size_of(window)[0] > 600, "the entry window in its size")
        self.settled(window, "entry")
        return window

    def picture(self, window, name):
        path = os.path.join(self.folder, f"{name}.png")
        self.screenshot(path, window)
        return path

    def settled(self, window, name):
        """A picture once nothing changes any more; windows come up piece by piece. No window: of the whole screen."""
        def pixels():
            return subprocess.run(["convert", self.picture(window, name), "RGB:-"], check=True, capture_output=True).stdout
        def is_settled():
            before = pixels()
            time.sleep(0.2)
            return before == pixels() and any(before)  # an undrawn window is black
        self.wait_for(is_settled, f"the screen to settle ({name})")

    def stored(self, name):
        """Kind and text of a setting, as the system's own tool lists them; None when there is none."""
        code, output = self.run("reg", "query", KEY, "/v", name)
        found = re.search(rf"^ +{name} +(REG_\w+) {{4}}(.*)$", output, re.MULTILINE)
        return found.groups() if code == 0 and found else None

    def expect_stored(self, name, text):
        self.wait_for(lambda: self.stored(name) == ("REG_SZ", text), f"{name} to be \"{text}\" in the registry")

    def clipboard_text(self):
        return self.run(os.path.join(self.tools, "clipboard_text.exe"))[1]

    def expect_copied(self, is_expected, what):
        """Presses Ctrl+C until that puts the expected text on the clipboard."""
        def copied():
            self.key("ctrl+c")
            return self.clipboard_text()
        self.wait_for(lambda: is_expected(copied()), what)

    def name_file(self, dialog, path):
        self.window(dialog, 30)
        self.settled(None, dialog)
        self.key("ctrl+a")
        self.type(path)
        self.key("Return")

    def expect_end(self):
        code = self.process.wait(20)
        expect(code == 0, f"the program ended with {code}")


def blue_pixels(picture):
    """How much of the picture is of the stub's darkest colour."""
    # The stub's paper is white as well, so it becomes black first.
    done = subprocess.run(["convert", picture, "-fill", "black", "-opaque", "white", "-fuzz", "2%", "-fill", "white",
                           "-opaque", STUB_BLUE, "-fill", "black", "+opaque", "white",
                           "-format", "%[fx:round(mean*w*h)]", "info:"], check=True, capture_output=True, text=True)
    return int(float(done.stdout))


def ends_with_its_message_without_excel(windows):
    windows.start()
    windows.window(MESSAGE_TITLE, 60)
    windows.picture(None, "missing-application")
    windows.expect_copied(lambda text: MISSING_APPLICATION in text, "the message")
    expect(not windows.is_shown(TITLE), "the entry window shows although there is no Excel")
    windows.key("Return")
    windows.expect_end()


def stores_what_is_typed_and_shows_what_is_stored(windows):
    windows.must_run("reg", "add", KEY, "/v", "txtName0", "/t", "REG_SZ", "/d", "Ida Reed", "/f")
    windows.start(WAGEMILL_SPREADSHEET="embedded")
    entry = windows.entry_window()
    windows.click_in(entry, *NAME)
    windows.key("ctrl+a")
    windows.expect_copied(lambda copied: copied == "Ida Reed", "the stored name to show")
    windows.type("Zoe Quill")
    windows.expect_stored("txtName0", "Zoe Quill")
    windows.click_in(entry, *WAGE)
    windows.type("12.5")
    windows.expect_stored("txtHourlyWage0", "12.5")
    windows.key("Tab")
    windows.expect_stored("txtHourlyWage0", "$12.50")
    windows.key("alt+F4")
    windows.expect_end()
    left = windows.clipboard_text()
    expect(left == "Ida Reed", f"the clipboard holds \"{left}\" after the end, not what was copied")


def builds_previews_and_saves(windows, **environment):
    folder = windows.disk(FOLDER)
    shutil.rmtree(folder, ignore_errors=True)
    os.mkdir(folder)
    temporary = os.path.join(folder, "kvarno*.xls")
    # No ending is added to a name.
    saved, printed = windows.disk("saved by the test"), windows.disk("printed by the test.pdf")
    for earlier in filter(os.path.exists, (saved, printed)):
        os.remove(earlier)
    windows.run("reg", "delete", KEY, "/f")
    windows.must_run("reg", "add", r"HKCU\Environment", "/v", "TEMP", "/d", "C:\\" + FOLDER, "/f")
    windows.restart()
    windows.start(**environment)
    entry = windows.entry_window()
    windows.click_in(entry, *SAMPLE_DATA)
    windows.expect_stored("txtName0", "Ned Hollister")
    windows.click_in(entry, *START)
    preview = windows.wait_for(lambda: (shown := windows.window(TITLE)) != entry and shown, "the preview to show", 60)
    windows.wait_for(lambda: blue_pixels(windows.picture(preview, "preview")) > 1000, "the stub in its colours")
    natural = blue_pixels(windows.picture(preview, "preview"))
    windows.click_in(preview, *ZOOM_IN)
    windows.wait_for(lambda: blue_pixels(windows.picture(preview, "zoomed")) > 1.1 * natural, "the stub to grow")
    expect(len(glob.glob(temporary)) == 1, f"the temporary folder holds {glob.glob(temporary)}")
    windows.key("ctrl+p")  # Wine has no printer
    windows.name_file("Print to PDF File", "C:\\printed by the test.pdf")
    windows.wait_for(lambda: os.path.exists(printed) and open(printed, "rb").read().strip().endswith(b"%%EOF"),
                     "the stub in a PDF file")
    windows.click_in(preview, *SAVE)
    windows.name_file("Save File", "C:\\saved by the test")
    windows.window(MESSAGE_TITLE, 30)
    windows.expect_copied(lambda text: "\nDone.\n" in text, "the message \"Done.\"")
    windows.key("Return")
    with open(saved, "rb") as workbook:
        expect(workbook.read(8).hex() == "d0cf11e0a1b11ae1" and os.path.getsize(saved) > 10000,
               "the saved file is not a workbook")
    windows.click_in(preview, *BACK)
    windows.wait_for(lambda: windows.window(TITLE) == entry, "the entry window again")
    expect(not glob.glob(temporary), "the temporary workbook is still there after going back")
    windows.key("alt+F4")
    windows.expect_end()


def works_without_excel_where_told_to(windows):
    builds_previews_and_saves(windows, WAGEMILL_SPREADSHEET="embedded")


def works_with_an_automation_server(windows):
    windows.register_automation_server(os.path.join(windows.tools, "..", "excel", "server", "excel.exe"))
    try:
        builds_previews_and_saves(windows)
    finally:
        windows.register_automation_server(None)


def installs_starts_and_removes(windows):
    setups = glob.glob(os.path.join(os.path.dirname(windows.program), "..", "..", "wagemill-*-setup.exe"))
    expect(setups, "there is no installer")
    def in_users_folder(*names):
        return glob.glob(windows.disk("users", "*", "AppData", *names))
    def installed():
        return in_users_folder("Local", "Programs", "Wagemill")
    def uninstall_entry():
        return windows.run("reg", "query", UNINSTALL_KEY)[0] == 0
    windows.must_run("reg", "add", KEY, "/v", "txtName0", "/t", "REG_SZ", "/d", "Ida Reed", "/f")
    windows.must_run(setups[0], "/S")
    folder, = installed()
    menu = {os.path.basename(path) for path in
            in_users_folder("Roaming", "Microsoft", "Windows", "Start Menu", "Programs", "Wagemill", "*")}
    expect(menu == {f"Wagemill{kind}.lnk" for kind in ("", " without Excel", " for 25 employees", " manual")},
           f"the Start menu holds {menu}")
    with open(os.path.join(folder, "documents", "manual.html"), encoding="utf-8") as manual:
        for picture in re.findall(r'src="([^"]+)"', manual.read()):
            expect(os.path.exists(os.path.join(folder, "documents", picture)), f"the manual lacks {picture}")
    windows.start_program("cmd", "/c", os.path.join(folder, "Wagemill without Excel.cmd"))
    windows.entry_window()
    windows.picture(None, "installed")
    for program in (setups[0], os.path.join(folder, "uninstall.exe")):
        windows.run(program, "/S")
    time.sleep(2)  # the uninstaller goes on as a copy of itself
    expect(os.path.exists(os.path.join(folder, "HAND-M.CUR")) and uninstall_entry(), "it was removed while it ran")
    windows.key("alt+F4")
    windows.wait_for(lambda: not windows.is_shown(TITLE), "the program to end")
    open(os.path.join(folder, "mine.txt"), "w").close()
    windows.must_run(setups[0], "/S")  # over the version that is there
    expect(uninstall_entry(), "there is no uninstall entry after the upgrade")
    os.remove(os.path.join(folder, "mine.txt"))  # fails if the upgrade took what is not its own
    windows.run(os.path.join(folder, "uninstall.exe"), "/S")
    windows.wait_for(lambda: not installed() and not uninstall_entry(), "everything to be removed")
    expect(not in_users_folder("Roaming", "Microsoft", "Windows", "Start Menu", "Programs", "Wagemill"),
           "the Start menu is not empty")
    expect(windows.stored("txtName0") == ("REG_SZ", "Ida Reed"), "what the user typed is gone")


*folders, chosen = sys.argv[1:]
with Windows(*map(os.path.abspath, folders)) as driven:
    globals()[chosen](driven)
