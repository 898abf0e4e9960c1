#!/usr/bin/env python3
"""Lets programs that are not ours judge our workbooks: judges_test.py MAKE_RESULTS JUDGE LINT

JUDGE  "lint": the strict checker LINT finds nothing; "libreoffice", "gnumeric": they open every workbook, compute it anew
       and come to every value that we wrote; Gnumeric shows every text that we show; "odd-ids": the stubs of 500 odd
       IDs answer as both do, and where the two differ as the rules of exact lookup say
Ends with 77 when the judge is missing.
"""
import csv
import decimal
import glob
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile

csv.field_size_limit(10_000_000)
TOLERANCE = 1e-9


def skip(reason):
    print("Skipped:", reason)
    sys.exit(77)


class Cell:
    def __init__(self, line):
        fields = line.rstrip("\n").split("\t")
        sheet, self.address, self.content, self.format, self.kind, self.value, self.shown = fields
        self.sheet = int(sheet)
        column, row = re.fullmatch(r"([A-Z]+)(\d+)", self.address).groups()
        self.row, self.column = int(row), ord(column) - ord("A") + 1

    def __str__(self):
        return f"sheet {self.sheet}, {self.address} ({self.content}): we have {self.kind} {self.value!r}, shown {self.shown!r}"


def own_cells(workbook):
    with open(workbook[:-4] + ".tsv", encoding="utf-8", newline="\n") as file:
        return [Cell(line) for line in file]


def same_number(one, other):
    try:
        one, other = float(one), float(other)
    except ValueError:
        return False
    return abs(one - other) <= TOLERANCE * max(1.0, abs(one), abs(other))


def same_value(cell, kind, value):
    """Whether the judge's value is ours. A judge knows no logical of its own kind: it is a number, or its text."""
    if cell.kind == "number":
        # LibreOffice answers an empty cell's value as empty where the format's description says 0.
        return same_number(cell.value, value) or (cell.value == "0" and value == "")
    if cell.kind == "logical":
        return str(value) in (cell.value, "1" if cell.value == "TRUE" else "0", "1.0" if cell.value == "TRUE" else "0.0")
    return re.sub(r"[\n\t]", " ", str(value)) == cell.value


def judge_by_lint(workbooks, lint):
    if not os.path.exists(lint):
        skip("the strict checker of workbooks is not beside this checkout")
    found = subprocess.run([sys.executable, lint, "--strict", *workbooks], capture_output=True, text=True)
    return [] if found.returncode == 0 else [found.stdout + found.stderr]


def values_by_libreoffice(workbooks):
    """{workbook: {"sheet address": (kind, value)}}"""
    if not shutil.which("soffice"):
        skip("LibreOffice, a judge of our workbooks, is not installed")
    python = "/usr/bin/python3"  # the distribution's: LibreOffice's module belongs to it
    if subprocess.run([python, "-c", "import uno"], capture_output=True).returncode:
        skip("LibreOffice's module for Python is not installed")
    output = os.path.join(os.path.dirname(workbooks[0]), "libreoffice.json")
    script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "libreoffice_values.py")
    subprocess.run([python, script, output, *workbooks], check=True)
    with open(output, encoding="utf-8") as file:
        return json.load(file)


def judge_by_libreoffice(workbooks, _):
    theirs = values_by_libreoffice(workbooks)
    differences = []
    for workbook in workbooks:
        name = os.path.basename(workbook)
        for cell in own_cells(workbook):
            kind, value = theirs[name].get(f"{cell.sheet} {cell.address}", ("empty", ""))
            if not same_value(cell, kind, value):
                differences.append(f"{name}, {cell}; LibreOffice {kind} {value!r}")
    return differences


def gnumeric_grid(workbook, style):
    """The texts of every sheet as Gnumeric exports them, by (sheet, row, column) of the exported block."""
    folder = workbook[:-4] + "-" + style
    os.makedirs(folder, exist_ok=True)
    subprocess.run(["ssconvert", "--recalc", "-S", "-T", "Gnumeric_stf:stf_assistant",
                    "-O", f"format={style} separator='\t' quoting-mode=always", workbook,
                    os.path.join(folder, "%n.txt")], check=True, capture_output=True)
    grid = {}
    for sheet, path in enumerate(sorted(glob.glob(os.path.join(folder, "*.txt"))), 1):
        with open(path, encoding="utf-8", newline="") as file:
            for row, texts in enumerate(csv.reader(file, delimiter="\t")):
                for column, text in enumerate(texts):
                    grid[sheet, row, column] = text
    return grid


def require_gnumeric():
    if not shutil.which("ssconvert"):
        skip("Gnumeric, a judge of our workbooks, is not installed")


def corners(cells):
    """{sheet: (row, column)}: Gnumeric's export begins at the first row and column that hold anything."""
    return {sheet: (min(c.row for c in cells if c.sheet == sheet), min(c.column for c in cells if c.sheet == sheet))
            for sheet in {c.sheet for c in cells}}


def judge_by_gnumeric(workbooks, _):
    require_gnumeric()
    differences = []
    for workbook in workbooks:
        cells = own_cells(workbook)
        corner = corners(cells)
        raw, shown = gnumeric_grid(workbook, "raw"), gnumeric_grid(workbook, "preserve")
        for cell in cells:
            place = (cell.sheet, cell.row - corner[cell.sheet][0], cell.column - corner[cell.sheet][1])
            name = os.path.basename(workbook)
            if not same_value(cell, None, raw.get(place, "")):
                differences.append(f"{name}, {cell}; Gnumeric has {raw.get(place)!r}")
            elif not same_shown(cell, re.sub(r"[\n\t]", " ", shown.get(place, ""))):
                differences.append(f"{name}, {cell}; Gnumeric shows {shown.get(place)!r}")
    return differences


def same_shown(cell, theirs):
    """Gnumeric writes the minus sign as such, drops the blank that a format leaves at the end, shows the short date with a
    year of two digits, computes in 80 bits (a tie in the last place shown may fall to the other side), and lends a formula
    in General the format of what it refers to."""
    ours, theirs = cell.shown.rstrip(), theirs.rstrip().replace("\u2212", "-")
    if cell.content == "formula" and cell.format == "General" and cell.kind == "number":
        return same_number(plain_number(ours), plain_number(theirs))
    return ours == theirs or re.sub(r"/(\d\d)(\d\d)$", r"/\2", ours) == theirs or (
        is_tie(cell) and abs(plain_number(ours) - plain_number(theirs)) <= last_place(ours))


def plain_number(shown):
    return decimal.Decimal(re.sub(r"[^0-9.\-]", "", shown.replace("(", "-")) or "0")


def last_place(shown):
    return decimal.Decimal(1).scaleb(plain_number(shown).as_tuple().exponent)


def is_tie(cell):
    """Whether our value, taken to 15 digits, lies in the middle between two texts of that many decimals."""
    if cell.kind != "number":
        return False
    value = decimal.Decimal(f"{float(cell.value):.14e}") * (100 if cell.shown.endswith("%") else 1)
    return (value / last_place(cell.shown)) % 1 in (decimal.Decimal("0.5"), decimal.Decimal("-0.5"))


STUB_HEIGHT, STUB_ID = 12, (3, 8)  # row in the first stub, column
# Cells of a stub that look a value up: row in the first stub, column: sheet, first row of the keys, column of the answer.
LOOKUPS = {(3, 6): (1, 4, 3), (5, 8): (2, 3, 4)}


def pattern_of(key):
    """The key's wildcards as a regular expression: "*", "?", and "~" before one of the three."""
    parts = re.findall(r"~[*?~]|[\s\S]", key)
    return "".join({"*": "[\\s\\S]*", "?": "[\\s\\S]"}.get(part) or re.escape(part[-1]) for part in parts)


def looked_up(cells, key, sheet, first_row, column):
    """The (kind, value) that exact lookup answers: numbers, texts and logicals are keys of different kinds, case does not
    count, the first match does."""
    for row in range(first_row, 29):
        held = cells.get((sheet, row, 2))
        if held is None or key is None or held.kind != key.kind:
            continue
        if (key.kind == "number" and float(held.value) == float(key.value)) or (key.kind == "logical" and held.value == key.value) or (
                key.kind == "text" and re.fullmatch(pattern_of(key.value), held.value, re.IGNORECASE)):
            answer = cells.get((sheet, row, column))
            return (answer.kind, answer.value) if answer else ("number", "0")
    return (key.kind, key.value) if key is not None and key.kind == "error" else ("error", "#N/A")


def judge_odd_ids(workbooks, _):
    require_gnumeric()
    by_libreoffice = values_by_libreoffice(workbooks)
    differences, split = [], 0
    for workbook in workbooks:
        name = os.path.basename(workbook)
        cells = {(cell.sheet, cell.row, cell.column): cell for cell in own_cells(workbook)}
        corner, raw = corners(cells.values()), gnumeric_grid(workbook, "raw")
        for cell in cells.values():
            if cell.sheet != 3 or cell.content != "formula":
                continue
            kind, value = by_libreoffice[name].get(f"3 {cell.address}", ("empty", ""))
            gnumeric = raw.get((3, cell.row - corner[3][0], cell.column - corner[3][1]), "")
            agree = [same_value(cell, kind, value), same_value(cell, None, gnumeric)]
            if agree == [False, False]:
                differences.append(f"{name}, {cell}; LibreOffice {value!r}, Gnumeric {gnumeric!r}")
            split += agree[0] != agree[1]
            stub, row = divmod(cell.row - STUB_ID[0], STUB_HEIGHT)
            rule = LOOKUPS.get((row + STUB_ID[0], cell.column))
            expected = rule and looked_up(cells, cells.get((3, STUB_ID[0] + stub * STUB_HEIGHT, STUB_ID[1])), *rule)
            if rule and expected[1] != cell.value:
                differences.append(f"{name}, {cell}; by the rules {expected}")
    print(f"the two programs differ in {split} cells")
    return differences


JUDGES = {"odd-ids": judge_odd_ids, "lint": judge_by_lint, "libreoffice": judge_by_libreoffice, "gnumeric": judge_by_gnumeric}


def main():
    maker, judge, lint = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        options = ["--odd-ids"] if judge == "odd-ids" else []
        subprocess.run([os.path.abspath(maker), folder, *options], check=True, env={**os.environ, "QT_QPA_PLATFORM": "offscreen"})
        workbooks = sorted(glob.glob(os.path.join(folder, "*.xls")))
        differences = JUDGES[judge](workbooks, lint)
        cells = sum(len(own_cells(workbook)) for workbook in workbooks)
    print(*differences[:40], sep="\n")
    print(f"{judge}: {len(workbooks)} workbooks, {cells} cells, {len(differences)} differences")
    sys.exit(bool(differences))


main()
