#!/usr/bin/env python3
"""run_under_wine.py BUILD [GTEST ARGUMENTS]: the automation tests of a finished build for Windows, under Wine.

Makes a Wine prefix of its own in the build folder, registers the test automation server there as the class that the
program creates, runs the tests and ends everything that was started. Exit code 0: all passed."""
import os
import shutil
import signal
import subprocess
import sys
import time

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "windows"))
from wine import WineDesktop  # noqa: E402

PATIENCE = 900  # seconds for all tests


def run_tests(folder, arguments):
    """One desktop for everything: Wine's own processes do not outlive the display that they were started on."""
    with WineDesktop(os.path.join(folder, "wine")) as desktop:
        desktop.register_automation_server(os.path.join(folder, "server", "excel.exe"))
        command = ["wine", os.path.join(folder, "excel_test.exe"), *arguments]
        return subprocess.run(command, env=desktop.environment, timeout=PATIENCE, check=False).returncode == 0


def main():
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # so that what was started ends too
    folder = os.path.join(os.path.abspath(sys.argv[1]), "tests", "excel")
    if not shutil.which("wine"):
        sys.exit("The automation tests need wine.")
    start = time.monotonic()
    try:
        passed = run_tests(folder, sys.argv[2:])
    except subprocess.TimeoutExpired:
        passed = False
        print(f"The automation tests did not end within {PATIENCE} seconds.")
    print(f"Automation under Wine: {'passed' if passed else 'FAILED'} in {time.monotonic() - start:.0f} s.")
    return 0 if passed else 1


sys.exit(main())
