"""What people would use instead, doing the same job: LibreOffice, warm and filled by a macro from inside, and Gnumeric's
converter, which only starts, loads, recalculates and saves."""
import html
import os
import shutil
import subprocess
import time

MODULE = """<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE script:module PUBLIC "-//OpenOffice.org//DTD OfficeDocument 1.0//EN" "module.dtd">
<script:module xmlns:script="http://openoffice.org/2000/script" script:name="Module1" script:language="StarBasic">
{}</script:module>
"""


def libreoffice(template, counts, turns, folder):
    """Milliseconds of each turn, by number of employees; nothing where it is not installed."""
    if not shutil.which("soffice"):
        return {}
    profile = os.path.join(folder, "profile")
    command = ["soffice", "--headless", "--norestore", "-env:UserInstallation=file://" + profile]
    subprocess.run([*command, "--terminate_after_init"], capture_output=True, timeout=120, check=True)
    macro = os.path.join(profile, "user", "basic", "Standard", "Module1.xba")
    source = open(os.path.join(os.path.dirname(os.path.abspath(__file__)), "peer_macro.bas"), encoding="utf-8").read()
    with open(macro, "w", encoding="utf-8") as out:
        out.write(MODULE.format(html.escape(source)))
    results = os.path.join(folder, "results")
    environment = {**os.environ, "PEER_TEMPLATE": template, "PEER_FOLDER": folder, "PEER_RESULTS": results,
                   "PEER_TURNS": str(turns), "PEER_EMPLOYEES": ",".join(map(str, counts))}
    subprocess.run([*command, "macro:///Standard.Module1.Main"], env=environment, capture_output=True, timeout=900)
    found = {count: [] for count in counts}
    for line in open(results, encoding="utf-8"):
        count, milliseconds = line.split()
        found[int(count)].append(float(milliseconds))
    return found


def gnumeric(workbook, turns, folder):
    """Milliseconds of each turn; nothing where it is not installed."""
    if not shutil.which("ssconvert"):
        return []
    found = []
    for _ in range(turns):
        start = time.perf_counter()
        subprocess.run(["ssconvert", "--recalc", workbook, os.path.join(folder, "converted.xls")], capture_output=True,
                       timeout=60, check=True)
        found.append((time.perf_counter() - start) * 1000)
    return found
