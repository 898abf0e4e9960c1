#!/usr/bin/env python3
"""run_under_wine.py BUILD [GTEST ARGUMENTS]: the automation tests of a finished build for Windows, under Wine.

Makes a Wine prefix of its own in the build folder, registers the test automation server there as the class that the
program creates, runs the tests and ends everything that was started. Exit code 0: all passed."""
import os
import shutil
import subprocess
import sys
import tempfile
import time

PATIENCE = 900  # seconds for all tests
NEEDED = ["wine", "wineserver", "xvfb-run"]


def wine_environment(prefix, runtime):
    """The user's own settings and display stay out of it; a crash ends its process instead of starting a debugger."""
    kept = {name: os.environ[name] for name in ("PATH", "LANG", "LC_ALL") if name in os.environ}
    return {**kept, "HOME": runtime, "XDG_RUNTIME_DIR": runtime, "WINEPREFIX": prefix, "WINEDEBUG": "-all",
            "WINEDLLOVERRIDES": "winedbg.exe=d;winemenubuilder.exe=d;mscoree=d;mshtml=d"}


def run(command, environment, **options):
    return subprocess.run(["xvfb-run", "-a", *command], env=environment, timeout=PATIENCE, check=False, **options)


def prepare(prefix, server, environment):
    os.makedirs(prefix, exist_ok=True)
    run(["wineboot", "-i"], environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    if run(["wine", server, "/RegServer"], environment).returncode != 0:
        sys.exit("The automation server cannot be registered.")


def main():
    build, arguments = os.path.abspath(sys.argv[1]), sys.argv[2:]
    server = os.path.join(build, "tests", "excel", "server", "automation_server.exe")
    tests = os.path.join(build, "tests", "excel", "excel_test.exe")
    missing = [name for name in NEEDED if not shutil.which(name)] + [f for f in (server, tests) if not os.path.exists(f)]
    if missing:
        sys.exit("The automation tests need " + ", ".join(missing) + ".")
    with tempfile.TemporaryDirectory(prefix="wagemill-wine-") as runtime:
        environment = wine_environment(os.path.join(build, "tests", "excel", "prefix"), runtime)
        start = time.monotonic()
        try:
            prepare(environment["WINEPREFIX"], server, environment)
            passed = run(["wine", tests, *arguments], environment).returncode == 0
        except subprocess.TimeoutExpired:
            passed = False
            print(f"The automation tests did not end within {PATIENCE} seconds.")
        finally:
            subprocess.run(["wineserver", "-k"], env=environment, check=False)
        print(f"Automation under Wine: {'passed' if passed else 'FAILED'} in {time.monotonic() - start:.0f} s.")
    return 0 if passed else 1


sys.exit(main())
