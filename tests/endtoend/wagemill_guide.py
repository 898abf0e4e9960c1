"""The way of a user through Wagemill, step by step; each step waits for what it should bring and fails when it does not."""
import os
import time

from desktop import StepFailed
from screen import Screen

ENTRY = PREVIEW = "Wagemill"
START = "Start Creating Template"


class Guide:
    def __init__(self, desktop, program, message=None, **environment):
        """message: what the program says before its window shows."""
        self.desktop = desktop
        self.process = desktop.start_program(program, **environment)
        self.screen = Screen(desktop)
        if message:
            self.expect_message(message)
        self.screen.find("push button", START)

    def load_sample_data(self):
        self.screen.click("push button", "Load Sample/Example Data")
        self.desktop.wait_for(lambda: self.screen.text("Company Name:") == "ACME Inc", "the sample data to show")

    def type_into(self, label, text):
        """Clicks into the field with that label and types over what it holds, then leaves it by Tab."""
        self.screen.click("text", label)
        self.desktop.type(text)
        self.desktop.key("Tab")

    def build(self):
        """Presses the button; answers the seconds until the preview shows."""
        begin = time.monotonic()
        self.screen.click("push button", START)
        self.screen.find("push button", "Save Results To Excel File")
        seconds = time.monotonic() - begin
        if any(self.screen.all("dialog")) or any(self.screen.all("alert")):
            raise StepFailed("the build showed a message: " + self.message())
        return seconds

    def zoom_in(self):
        self.screen.click("push button", "Zoom In")

    def save_as(self, path):
        """Saves under that name through the file dialog, whatever dialog it is, and answers the messages."""
        self.screen.click("push button", "Save Results To Excel File")
        self.desktop.window("Save File")
        self.desktop.key("ctrl+a")
        self.desktop.type(path)
        self.desktop.key("Return")
        self.expect_message("Done.")
        if not os.path.exists(path):
            raise StepFailed(f"\"Done.\" was shown, but there is no {path}")

    def go_back(self):
        self.screen.click("push button", "< Back")
        self.screen.find("push button", START)

    def expect_message(self, text):
        """Waits for a message box with that text and presses its OK."""
        self.desktop.wait_for(lambda: text in self.message(), f"the message \"{text}\"")
        self.screen.click("push button", "OK")
        self.desktop.wait_for(lambda: text not in self.message(), f"the message \"{text}\" to go")

    def message(self):
        """The texts of the message box on the screen, empty when there is none."""
        boxes = [*self.screen.all("alert"), *self.screen.all("dialog")]
        return "\n".join(child.name for box in boxes for child in box if child.name)

    def close_window(self):
        """Closes the window in front by the window manager's key, which asks it as its close box does."""
        self.desktop.key("alt+F4")
