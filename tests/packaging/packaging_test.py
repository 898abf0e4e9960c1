#!/usr/bin/env python3
"""Installs what was built into a folder of its own and looks at it: packaging_test.py BUILD_FOLDER SCENARIO

Ends with 0 when everything is right, 77 when a tool is missing, and 1 with a reason otherwise.
"""
import glob
import gzip
import os
import re
import shutil
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "endtoend"))
from desktop import Desktop, StepFailed, expect  # noqa: E402
from screen import Screen  # noqa: E402


def holds_every_file(stage):
    """Each place names files that must be there, and nothing of ours may be in a place beside them."""
    places = {
        "lib/wagemill": {"wagemill", "HAND-M.CUR", "x/o.cjs", "Splash/wagemill.png"},
        "bin": {"wagemill"},
        "share/doc/wagemill": {"manual.md", "licences.md", "CHANGELOG.md", "LICENSE"} | manual_pictures(stage),
        "share": {"man/man1/wagemill.1.gz", "applications/wagemill.desktop",
                  "metainfo/example.quellory.wagemill.metainfo.xml"},
        "share/icons/hicolor": {"scalable/apps/wagemill.svg"} | {
            f"{side}x{side}/apps/wagemill.png" for side in (16, 22, 24, 32, 48, 64, 96, 128, 192, 256, 512)},
    }
    expected = {os.path.join(place, name) for place, names in places.items() for name in names}
    found = {os.path.relpath(path, stage) for path in glob.glob(stage + "/**", recursive=True)
             if os.path.islink(path) or not os.path.isdir(path)}
    expect(found == expected, f"missing: {sorted(expected - found)}; not expected: {sorted(found - expected)}")
    expect(os.readlink(stage + "/bin/wagemill") == "../lib/wagemill/wagemill", "the command is not a link to the program")
    with gzip.open(stage + "/share/man/man1/wagemill.1.gz", "rt") as page:
        expect("@" not in page.read().replace("support@", ""), "the manual page has values that were not filled in")


def manual_pictures(stage):
    """The pictures that the manual shows; without them it would be half a manual."""
    with open(stage + "/share/doc/wagemill/manual.md", encoding="utf-8") as manual:
        return set(re.findall(r"\]\((pictures/[^)]+)\)", manual.read()))


def finds_its_folder_through_links(stage):
    """A skin that cannot be used is named in a message: the program looked for it where it is installed."""
    if missing := [tool for tool in ("Xvfb", "openbox", "xdotool", "dbus-daemon") if not shutil.which(tool)]:
        print("Skipped: the installed program was not started, because these tools are missing:", *missing)
        sys.exit(77)
    skin = os.path.join(stage, "lib/wagemill/x/o.cjs")
    with open(skin, "wb") as file:  # bytes that are not text
        file.write(b"\xff\xff")
    link = os.path.join(stage, "link")
    os.symlink("bin/wagemill", link)
    with Desktop() as desktop:
        desktop.start_program(link, PATH=os.path.join(stage, "bin") + os.pathsep + os.environ["PATH"])
        screen = Screen(desktop)
        desktop.wait_for(lambda: f'"{skin}"' in screen.message(), f"a message that names {skin}")


build, scenario = sys.argv[1:]
with tempfile.TemporaryDirectory() as folder:
    stage = os.path.realpath(folder)
    subprocess.run(["cmake", "--install", build, "--prefix", stage], check=True, stdout=subprocess.DEVNULL)
    try:
        globals()[scenario](stage)
    except StepFailed as failure:
        sys.exit(f"{scenario}: {failure}")
