"""Windows programs run under Wine, in a prefix (Wine's own Windows folder and registry) that the tests share."""
import contextlib
import fcntl
import glob
import os
import subprocess
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "endtoend"))
from desktop import Desktop, expect  # noqa: E402

# As on a Windows of today: smoothed letters, and a font for dialogs that this machine has.
SETTINGS = (
    [(r"HKCU\Software\Wine\Fonts\Replacements", font, "REG_SZ", "Liberation Sans")
     for font in ("Segoe UI", "Tahoma", "MS Shell Dlg", "MS Shell Dlg 2")] +
    [(r"HKCU\Control Panel\Desktop", "FontSmoothing", "REG_SZ", "2"),
     (r"HKCU\Control Panel\Desktop", "FontSmoothingType", "REG_DWORD", "2")])

PROGRAM_ID_KEY = r"HKLM\Software\Classes\Excel.Application"
SERVER_CLASS = "{5D3B1C52-7F0A-4E6E-9A41-2C6B58D017E3}"  # as in tests/excel/server/main.cpp


class WineDesktop(Desktop):
    """A desktop whose programs are Windows programs. Its prefix is used by one desktop at a time: others wait."""

    def __init__(self, prefix, failure_picture=None):
        super().__init__(failure_picture=failure_picture)
        self.prefix = os.path.abspath(prefix)
        for name in ("QT_QPA_PLATFORM", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "WAGEMILL_SPREADSHEET"):
            self.environment.pop(name, None)
        self.environment.update(WINEPREFIX=self.prefix, WINEDEBUG="-all",
                                # A crash ends its process instead of starting a debugger.
                                WINEDLLOVERRIDES="winedbg.exe,winemenubuilder.exe,mscoree,mshtml=")

    def __enter__(self):
        with contextlib.ExitStack() as opened:
            os.makedirs(os.path.dirname(self.prefix), exist_ok=True)
            lock = opened.enter_context(open(self.prefix + ".lock", "w"))
            fcntl.flock(lock, fcntl.LOCK_EX)
            super().__enter__()
            opened.callback(super().__exit__)
            self._prepare_prefix()
            self.prefix_in_use = opened.pop_all()
        return self

    def __exit__(self, failure=None, *details):
        if failure and self.failure_picture:
            self.screenshot(self.failure_picture)
        self.restart()
        self.prefix_in_use.close()

    def restart(self):
        """Ends all of Windows; what was set counts when the next program starts it."""
        for option in ("-k", "-w"):
            subprocess.run(["wineserver", option], env=self.environment, check=False)

    def start_program(self, path, *arguments, **environment):
        log = open(os.path.join(self.home, "program.log"), "ab")
        return self._start("wine", path, *arguments, stdout=log, stderr=log, env={**self.environment, **environment})

    def run(self, program, *arguments, seconds=60):
        """Runs a program to its end. Answers its exit code and what it wrote."""
        done = subprocess.run(["wine", program, *arguments], env=self.environment, timeout=seconds, encoding="utf-8",
                              errors="replace", stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        return done.returncode, done.stdout.replace("\r\n", "\n")

    def must_run(self, program, *arguments):
        code, output = self.run(program, *arguments)
        expect(code == 0, f"{program} {' '.join(arguments)} ended with {code}: {output}")

    def register_automation_server(self, program):
        """The program answers to "Excel.Application" from now on, until this is called with None."""
        self.run("reg", "delete", PROGRAM_ID_KEY, "/f")
        if program:
            for key, value in ((PROGRAM_ID_KEY + r"\CLSID", SERVER_CLASS),
                               (rf"HKLM\Software\Classes\CLSID\{SERVER_CLASS}\LocalServer32",
                                "Z:" + os.path.abspath(program).replace("/", "\\"))):
                self.must_run("reg", "add", key, "/ve", "/d", value, "/f")

    def size_of(self, window):
        """Width and height of a window, without its frame."""
        values = dict(line.split("=") for line in self._xdotool("getwindowgeometry", "--shell", window).splitlines())
        return int(values["WIDTH"]), int(values["HEIGHT"])

    def click_in(self, window, x, y):
        """Clicks at a place of the window, without its frame; negative ones count from its right and bottom."""
        width, height = self.size_of(window)
        self._xdotool("mousemove", "--window", window, str(x % width), str(y % height))
        self._xdotool("click", "1")

    def disk(self, *folders):
        """Where drive C is on this machine."""
        return os.path.join(self.prefix, "drive_c", *folders)

    def _prepare_prefix(self):
        made = os.path.join(self.prefix, "prepared")
        if os.path.exists(made):
            return
        self.must_run("wineboot", "-i")
        for key, name, kind, value in SETTINGS:
            self.must_run("reg", "add", key, "/v", name, "/t", kind, "/d", value, "/f")
        self._make_user_folders_real()
        self.restart()
        open(made, "w").close()

    def _make_user_folders_real(self):
        """Documents and its like lead to the home folder, which goes with this desktop; dialogs end badly without."""
        for link in filter(os.path.islink, glob.glob(self.disk("users", "*", "*"))):
            os.unlink(link)
            os.mkdir(link)
