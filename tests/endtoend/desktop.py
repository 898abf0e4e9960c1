"""A virtual desktop with a window manager and an accessibility bus, to drive a program by real keys and clicks."""
import os
import re
import shutil
import subprocess
import tempfile
import time


class StepFailed(Exception):
    """A step of a guided run did not happen; the text says which."""


def expect(condition, what):
    if not condition:
        raise StepFailed(what)


class Desktop:
    """Xvfb, openbox and a session bus of their own, with a fresh home folder. Use as a context manager.

    locale           of the programs started in it; C.UTF-8 reads as United States English
    failure_picture  where a picture of the screen is left when a step fails
    """

    def __init__(self, size="1280x960", locale="C.UTF-8", failure_picture=None):
        self.size = size
        self.failure_picture = failure_picture
        self.home = tempfile.mkdtemp(prefix="wagemill-home-")
        self.environment = {key: value for key, value in os.environ.items()
                            if not key.startswith(("LC_", "XDG_", "QT_")) and key not in ("TEMP", "WAYLAND_DISPLAY")}
        self.environment.update(HOME=self.home, LANG=locale, XDG_RUNTIME_DIR=os.path.join(self.home, "run"),
                                QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
        os.mkdir(self.environment["XDG_RUNTIME_DIR"], 0o700)
        self.processes = []

    def __enter__(self):
        try:
            self._start_display()
            self._start_bus()
            self._start_window_manager()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, failure=None, *_):
        if failure and self.failure_picture:
            self.screenshot(self.failure_picture)
        for process in reversed(self.processes):
            process.terminate()
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                process.kill()
        shutil.rmtree(self.home, ignore_errors=True)

    def start_program(self, path, **environment):
        """Starts a program in this desktop; its output goes to home/program.log. It must not heed its command line,
        which would leave it without a window."""
        log = open(os.path.join(self.home, "program.log"), "ab")
        return self._start(path, "-platform", "offscreen", stdout=log, stderr=log, env={**self.environment, **environment})

    def window(self, title, seconds=20):
        """The visible window of that exact title; waits for it."""
        return self.wait_for(lambda: self._search(title), f"the window \"{title}\" to appear", seconds)

    def is_shown(self, title):
        return bool(self._search(title))

    def click(self, x, y, button=1):
        self._move(x, y)
        self._xdotool("click", str(button))

    def _move(self, x, y):
        """Without --sync, which waits for ever when the pointer is there already."""
        self._xdotool("mousemove", str(x), str(y))
        time.sleep(0.05)

    def key(self, *names):
        self._xdotool("key", "--delay", "20", *names)

    def type(self, text):
        self._xdotool("type", "--delay", "15", text)

    def screenshot(self, path, window=None):
        """A PNG of one window, or of the whole screen."""
        subprocess.run(["import", "-window", window or "root", path], env=self.environment, check=True)

    def wait_for(self, condition, what, seconds=20):
        """What the condition answers as soon as that is true. Raises StepFailed after so many seconds."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            answer = condition()
            if answer:
                return answer
            time.sleep(0.05)
        raise StepFailed(f"waited {seconds} s for {what}")

    def _start(self, *command, **options):
        quiet = {"env": self.environment, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        self.processes.append(subprocess.Popen(command, **{**quiet, **options}))
        return self.processes[-1]

    def _start_display(self):
        reading, writing = os.pipe()
        # Without -noreset the display would start again, and end its clients, whenever a tool was alone on it and left.
        self._start("Xvfb", "-displayfd", str(writing), "-screen", "0", self.size + "x24", "-nolisten", "tcp",
                    "-noreset", pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as answer:
            number = answer.readline().strip()
        expect(number, "the virtual display did not start")
        self.environment["DISPLAY"] = ":" + number

    def _start_bus(self):
        address = os.path.join(self.home, "run", "bus")
        self._start("dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=unix:path=" + address)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + address
        self.wait_for(lambda: os.path.exists(address), "the session bus to start")

    def _start_window_manager(self):
        """Windows shown before it manages them are moved, or lose the keyboard, in the middle of a step."""
        self._start("openbox")
        asked = ("xdotool", "get_num_desktops")
        self.wait_for(lambda: subprocess.run(asked, env=self.environment, capture_output=True).returncode == 0,
                      "the window manager to start")

    def _xdotool(self, *arguments):
        return subprocess.run(["xdotool", *arguments], env=self.environment, check=True, capture_output=True,
                              text=True).stdout

    def _search(self, title):
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{re.escape(title)}$"], env=self.environment,
                               capture_output=True, text=True).stdout.split()
        return found[-1] if found else None
