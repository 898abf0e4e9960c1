"""The way of a user through Wagemill, step by step; each step waits for what it should bring and fails when it does not."""
import contextlib
import glob
import os
import subprocess
import tempfile
import time

from desktop import Desktop, expect
from screen import Screen

ENTRY = PREVIEW = "Wagemill"
START = "Start Creating Template"
SAVE = "Save Results To Excel File"


@contextlib.contextmanager
def guided(program, size="1280x960", locale="C.UTF-8", **options):
    """The program in a desktop of its own."""
    with Desktop(size, locale) as desktop:
        yield Guide(desktop, program, **options)


class Guide(Screen):
    def __init__(self, desktop, program, message=None, has_temp=False, **environment):
        """message: what the program says before its window shows."""
        super().__init__(desktop)
        self.key, self.type, self.wait_for = desktop.key, desktop.type, desktop.wait_for
        self.temp = tempfile.mkdtemp(dir=desktop.home)
        self.process = desktop.start_program(program, **{**environment, **({"TEMP": self.temp} if has_temp else {})})
        if message:
            self.expect_message(message)
        self.find("push button", START)

    def load_sample_data(self):
        self.click("push button", "Load Sample/Example Data")
        self.wait_for(lambda: self.text("Company Name:") == "ACME Inc", "the sample data to show")

    def type_into(self, label, text):
        """Clicks into the field with that label and types over what it holds, then leaves it by Tab."""
        self.click("text", label)
        self.type(text)
        self.key("Tab")

    def build(self):
        """Presses the button; answers the seconds until the preview shows."""
        begin = time.monotonic()
        self.click("push button", START)
        self.find("push button", SAVE)
        seconds = time.monotonic() - begin
        expect(not self.message(), "the build showed a message: " + self.message())
        return seconds

    def zoom_in(self):
        self.click("push button", "Zoom In")

    def save_as(self, path):
        """Saves under that name through the file dialog, whatever dialog it is."""
        self.click("push button", SAVE)
        self.desktop.window("Save File")
        self.key("ctrl+a")
        self.type(path)
        self.key("Return")
        self.expect_message("Done.")
        expect(os.path.exists(path), f"\"Done.\" was shown, but there is no {path}")

    def expect_message(self, text):
        """Waits for a message box with that text and presses its OK."""
        self.wait_for(lambda: text in self.message(), f"the message \"{text}\"")
        self.click("push button", "OK")
        self.wait_for(lambda: text not in self.message(), f"the message \"{text}\" to go")

    def close_window(self):
        """Closes the window in front by the window manager's key, which asks it as its close box does."""
        self.key("alt+F4")

    def files(self):
        """The run's intermediate files: in TEMP, or in the private folders."""
        folders = [self.temp, *glob.glob(os.path.join(self.desktop.home, "run", "wagemill-*"))]
        return sorted(name for folder in folders for name in os.listdir(folder) if not name.startswith("."))

    def ended(self, seconds=20):
        """The exit status; None when the program does not end in that time."""
        with contextlib.suppress(subprocess.TimeoutExpired):
            return self.process.wait(seconds)
