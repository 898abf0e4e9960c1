#!/usr/bin/env python3
"""Builds from our template as another program saved it: foreign_template_test.py MAKE_RESULTS TEMPLATE PROGRAM LINT

PROGRAM  "libreoffice" or "gnumeric"
Every cell must hold and show what it does when built from the template as we wrote it, and the strict checker LINT, where
it is there, must find nothing in the results. Ends with 77 when the program is missing.
"""
import glob
import os
import shutil
import subprocess
import sys
import tempfile


def save_by_libreoffice(template, folder):
    subprocess.run(["soffice", "--headless", f"-env:UserInstallation=file://{folder}/profile", "--convert-to", "xls",
                    "--outdir", folder, template], check=True, capture_output=True)


def save_by_gnumeric(template, folder):
    subprocess.run(["ssconvert", "-T", "Gnumeric_Excel:excel_biff8", template, os.path.join(folder, "template.xls")],
                   check=True, capture_output=True)


PROGRAMS = {"libreoffice": ("soffice", save_by_libreoffice), "gnumeric": ("ssconvert", save_by_gnumeric)}


def cells(path):
    """(sheet, address) -> (kind, value, shown)"""
    with open(path, encoding="utf-8", newline="\n") as file:
        lines = (line.rstrip("\n").split("\t") for line in file)
        return {(sheet, address): (kind, value, shown) for sheet, address, _, _, kind, value, shown in lines}


def hides_a_name(place, program):
    """LibreOffice saves the format ";;" of the calculator's names as ";;;", which hides them."""
    return program == "libreoffice" and place[0] == "2" and place[1].startswith("C")


def compare(name, ours, theirs, program):
    for place in sorted(ours.keys() | theirs.keys()):
        one, other = ours.get(place, ("empty", "", "")), theirs.get(place, ("empty", "", ""))
        same = one[:2] == other[:2] if hides_a_name(place, program) else one == other
        if not same:
            yield f"{name}, sheet {place[0]}, {place[1]}: {one} from our template, {other} from {program}'s"


def main():
    maker, template, program, lint = sys.argv[1:]
    tool, save = PROGRAMS[program]
    if not shutil.which(tool):
        print(f"Skipped: {program}, whose templates are tried, is not installed")
        sys.exit(77)
    environment = {**os.environ, "QT_QPA_PLATFORM": "offscreen"}
    with tempfile.TemporaryDirectory() as work:
        folders = [os.path.join(work, name) for name in ("ours", "theirs", "saved")]
        for folder in folders:
            os.mkdir(folder)
        ours, theirs, saved = folders
        save(template, saved)
        subprocess.run([maker, ours], check=True, env=environment)
        subprocess.run([maker, theirs, os.path.join(saved, "template.xls")], check=True, env=environment)
        differences = [difference for path in sorted(glob.glob(os.path.join(ours, "*.tsv")))
                       for difference in compare(os.path.basename(path), cells(path),
                                                 cells(os.path.join(theirs, os.path.basename(path))), program)]
        if os.path.exists(lint):
            found = subprocess.run([sys.executable, lint, "--strict", "-q", *glob.glob(os.path.join(theirs, "*.xls"))],
                                   capture_output=True, text=True)
            if found.returncode:
                differences.append(found.stdout + found.stderr)
    print(*differences[:40], sep="\n")
    print(f"template saved by {program}: {len(differences)} differences")
    sys.exit(bool(differences))


main()
