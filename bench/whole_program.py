#!/usr/bin/env python3
"""Measures the whole program from outside, by real clicks in a virtual display, beside an empty Qt program and the
programs that people would use instead. Shows every result with its target; a result is the median of the turns.

whole_program.py BUILD_FOLDER [TURNS]
"""
import glob
import json
import os
import shutil
import sqlite3
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [HERE, os.path.join(HERE, "..", "tests", "endtoend")]
import peers  # noqa: E402
from desktop import Desktop  # noqa: E402
from frames import Frames  # noqa: E402

COUNTS = (1, 25)
SETTLED = 1.5  # seconds after which a window has long been painted
SAMPLE = {"txtEmployeeID": "E{1}", "txtName": "Employee Number {0}", "txtHourlyWage": "$15.25", "txtTaxStatus": "",
          "txtFedAllowance": "", "txtStateTax": "10", "txtFedIT": "15", "txtSocialSecurityTax": "1",
          "txtMedicareTax": "4", "txtInsuranceDeduction": "$2.00", "txtOtherRegDeduction": "$5.00",
          "txtRegHoursWorked": "39", "txtVacationHours": "7", "txtSickHours": "15", "txtOT": "8",
          "txtOTRate": "$10.25", "txtOtherDeduction": "$2.00"}


def fill_settings(home, employees):
    """The store of somebody who typed so many employees."""
    folder = os.path.join(home, ".config", "wagemill")
    os.makedirs(folder, mode=0o700)
    with sqlite3.connect(os.path.join(folder, "settings.sqlite")) as store:
        store.execute("CREATE TABLE settings (application TEXT NOT NULL, section TEXT NOT NULL, key TEXT NOT NULL,"
                      " value TEXT NOT NULL, PRIMARY KEY (application, section, key)) WITHOUT ROWID")
        values = {"txtCompanyName": "ACME Inc", "dtPeriodEnding": "3/31/2026"}
        values |= {f"{field}{row}": text.format(row, 1000 + row)
                   for row in range(employees) for field, text in SAMPLE.items()}
        store.executemany("INSERT INTO settings VALUES ('Quellory', 'Wagemill', ?, ?)", values.items())


class Measured:
    """One program in one display: what it shows once it is settled, and how long it takes until then."""

    def __init__(self, desktop, title, *command, **environment):
        self.desktop, self.title, self.command, self.environment = desktop, title, command, environment
        self.frames = Frames(desktop.environment["DISPLAY"])
        self.process = None

    def start(self):
        start = time.perf_counter()
        self.process = subprocess.Popen(self.command, env={**self.desktop.environment, **self.environment},
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return start

    def stop(self):
        self.process.kill()
        self.process.wait()
        self.desktop.wait_for(lambda: not self.desktop.is_shown(self.title), "the window to go")

    def box(self):
        return self.frames.place(self.desktop.window(self.title))

    def settle(self):
        self.start()
        self.box()
        time.sleep(SETTLED)
        return self.box()

    def memory(self):
        """Mebibytes: at most, now, and now with shared pages divided among their users."""
        status = open(f"/proc/{self.process.pid}/status", encoding="ascii").read()
        rollup = open(f"/proc/{self.process.pid}/smaps_rollup", encoding="ascii").read()
        lines = dict(line.split(":", 1) for line in (status + rollup).splitlines() if ":" in line)
        return tuple(int(lines[name].split()[0]) / 1024 for name in ("VmHWM", "Rss", "Pss"))


def lower_edge(box):
    """The last rows of a window: buttons and background, and no caret that blinks."""
    x, y, width, height = box
    return x, y + height - 60, width, 60


def measure_starts(programs, turns):
    """Milliseconds from starting each program to its window painted, by turns."""
    shown = {}
    for program in programs:
        part = lower_edge(program.settle())
        shown[program] = part, program.frames.look(*part)
        program.stop()
    found = {program: [] for program in programs}
    for _ in range(turns):
        for program in programs:
            start = program.start()
            found[program].append(program.frames.seconds_until(*shown[program], start) * 1000)
            program.stop()
    return [found[program] for program in programs]


def click_start_button(program, box):
    x, y, width, height = box
    program.frames.move(x + width - 80, y + height - 25)
    time.sleep(0.1)
    return program.frames.click()


def measure_click(program, turns):
    """Milliseconds from the first click of a program on "Start Creating Template" to its preview painted, and from
    later ones; and the memory of the program after the first."""
    entry = program.settle()
    click_start_button(program, entry)
    time.sleep(2 * SETTLED)
    preview = program.box()
    if preview == entry:
        raise RuntimeError("the preview did not open")
    sheet = (preview[0] + 60, preview[1] + 120, 500, 220)
    pixels = program.frames.look(*sheet)
    memory = program.memory()
    program.stop()

    def milliseconds():
        return program.frames.seconds_until(sheet, pixels, click_start_button(program, program.box())) * 1000

    first = []
    for _ in range(turns):
        program.settle()
        first.append(milliseconds())
        program.stop()
    later = []
    program.settle()
    milliseconds()
    for _ in range(turns):
        program.desktop.key("alt+b")
        time.sleep(SETTLED)
        later.append(milliseconds())
    program.stop()
    return first, later, memory


def picture_mebibytes(benchmarks, employees):
    out = subprocess.run([benchmarks, f"--benchmark_filter=picture/{employees}/", "--benchmark_format=json"],
                         env={**os.environ, "QT_QPA_PLATFORM": "offscreen"}, capture_output=True, text=True, check=True)
    picture = json.loads(out.stdout)["benchmarks"][0]
    return picture["width"] * picture["height"] * 4 / 2**20


def stripped_megabytes(program):
    with tempfile.NamedTemporaryFile() as copy:
        subprocess.run(["strip", "-o", copy.name, program], check=True)
        return os.path.getsize(copy.name) / 1e6


def line(what, result, target, unit, note=""):
    print(f"{what:46} {result:9.2f} {unit:4} target {target:9.2f}  {'reached' if result <= target else 'MISSED '} {note}",
          flush=True)


def spread(times):
    return f"({min(times):.1f} to {max(times):.1f})"


def in_desktop(employees, work):
    with Desktop() as desktop:
        desktop.environment.pop("QT_LINUX_ACCESSIBILITY_ALWAYS_ON")
        temporary = os.path.join(desktop.home, "temporary")
        os.mkdir(temporary)
        desktop.environment["TEMP"] = temporary
        fill_settings(desktop.home, employees)
        return work(desktop)


def report_start(build, turns):
    def work(desktop):
        program = Measured(desktop, "Wagemill", os.path.join(build, "program", "wagemill"))
        _, _, width, height = program.settle()
        program.stop()
        empty = Measured(desktop, "Empty", os.path.join(build, "bench", "empty_window"), str(width), str(height))
        text = Measured(desktop, "Empty", *empty.command, "Payroll")
        starts = measure_starts([program, empty, text], turns)
        empty.settle()
        memory = empty.memory()
        empty.stop()
        return starts, memory

    starts, memory = in_desktop(1, work)
    for name, times in zip(("ours", "an empty window", "a window with one word"), starts):
        print(f"start: {name} {statistics.median(times):.1f} ms {spread(times)}")
    ours, empty, text = map(statistics.median, starts)
    line("start, against an empty window", ours / empty, 1.3, "x")
    print(f"start, against a window with one word: {ours / text:.2f} x")
    return memory


def report_click(build, turns, employees, empty_memory, keep_workbook):
    def work(desktop):
        program = Measured(desktop, "Wagemill", os.path.join(build, "program", "wagemill"),
                           WAGEMILL_EMPLOYEES=str(employees))
        answer = measure_click(program, turns)
        for workbook in glob.glob(os.path.join(desktop.environment["TEMP"], "**", "kvarno*.xls"), recursive=True):
            shutil.copy(workbook, keep_workbook)
        return answer

    first, later, memory = in_desktop(employees, work)
    for name, times in (("first", first), ("later", later)):
        line(f"{name} click to preview, N={employees}", statistics.median(times), {1: 25, 25: 90}[employees], "ms",
             spread(times))
    picture = picture_mebibytes(os.path.join(build, "bench", "wagemill_benchmarks"), employees)
    for name, ours, empty in zip(("at most", "resident", "proportional"), memory, empty_memory):
        line(f"memory {name}, N={employees}", ours, 1.2 * empty + 2 * picture, "MiB",
             f"(empty {empty:.1f}, picture {picture:.1f})")
    return {"first": statistics.median(first), "later": statistics.median(later)}


def main():
    build = os.path.abspath(sys.argv[1])
    turns = int(sys.argv[2]) if len(sys.argv) > 2 else 21
    line("size of the stripped program", stripped_megabytes(os.path.join(build, "program", "wagemill")), 1.5, "MB")
    empty_memory = report_start(build, turns)
    with tempfile.TemporaryDirectory() as folder:
        workbook = os.path.join(folder, "workbook.xls")
        clicks = {count: report_click(build, turns, count, empty_memory, workbook) for count in COUNTS}
        template = os.path.join(build, "resources", "template.xlt")
        for count, times in peers.libreoffice(template, COUNTS, turns, folder).items():
            peer = statistics.median(times)
            print(f"LibreOffice, warm, filled from inside, N={count}: {peer:.0f} ms {spread(times)}")
            for name, milliseconds in clicks[count].items():
                line(f"{name} click to preview against it, N={count}", milliseconds / peer, 1 / 5, "x")
        times = peers.gnumeric(workbook, turns, folder)
        if times:
            print(f"Gnumeric's converter, N={COUNTS[-1]}: {statistics.median(times):.0f} ms {spread(times)}")


main()
