#!/usr/bin/env python3
"""Lets programs that are not ours judge our workbooks: judges_test.py MAKE_RESULTS JUDGE LINT TEMPLATE

JUDGE  "lint": the strict checker LINT finds nothing; "libreoffice", "gnumeric": they open every workbook, compute it again
       and come to every value that we wrote; Gnumeric shows every text that we show; "odd-ids": the stubs of 500 odd
       IDs answer as one of the two does at least; "printing": LibreOffice prints the same words at the same places;
       "template_saved_by_libreoffice", "..._gnumeric": built from our TEMPLATE as the program saves it, every cell holds
       and shows what it does when built from ours
Ends with 77 when the judge is missing.
"""
import collections
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
PRINTED_TOLERANCE = 2 / 25.4 * 72  # points


def require(found, judge):
    if not found:
        print(f"Skipped: {judge}, a judge of our workbooks, is not there")
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


def same_value(cell, value):
    """Whether the judge's value is ours. A judge knows no logical of its own kind: it is a number, or its text."""
    if cell.kind == "number":
        # LibreOffice answers an empty cell's value as empty where the format's description says 0.
        return same_number(cell.value, value) or (cell.value == "0" and value == "")
    if cell.kind == "logical":
        return str(value) in (cell.value, "1" if cell.value == "TRUE" else "0", "1.0" if cell.value == "TRUE" else "0.0")
    return re.sub(r"[\n\t]", " ", str(value)) == cell.value


def judge_by_lint(workbooks, lint):
    require(os.path.exists(lint), "the strict checker")
    found = subprocess.run([sys.executable, lint, "--strict", "-q", *workbooks], capture_output=True, text=True)
    return [] if found.returncode == 0 else [found.stdout + found.stderr]


def values_by_libreoffice(workbooks):
    """{workbook: {"sheet address": (kind, value)}}"""
    require(shutil.which("soffice"), "LibreOffice")
    python = "/usr/bin/python3"  # the distribution's: LibreOffice's module belongs to it
    require(subprocess.run([python, "-c", "import uno"], capture_output=True).returncode == 0, "LibreOffice's Python module")
    output = os.path.join(os.path.dirname(workbooks[0]), "libreoffice.json")
    script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "libreoffice_values.py")
    subprocess.run([python, script, output, *workbooks], check=True)
    with open(output, encoding="utf-8") as file:
        return json.load(file)


def judge_by_libreoffice(workbooks, _):
    theirs = values_by_libreoffice(workbooks)
    for workbook in workbooks:
        name = os.path.basename(workbook)
        for cell in own_cells(workbook):
            kind, value = theirs[name].get(f"{cell.sheet} {cell.address}", ("empty", ""))
            if not same_value(cell, value):
                yield f"{name}, {cell}; LibreOffice {kind} {value!r}"


def gnumeric_texts(workbook, cells, style):
    """{cell: text}, as Gnumeric exports them; its export begins at the first row and column that hold anything."""
    folder = workbook[:-4] + "-" + style
    os.makedirs(folder, exist_ok=True)
    subprocess.run(["ssconvert", "--recalc", "-S", "-T", "Gnumeric_stf:stf_assistant",
                    "-O", f"format={style} separator='\t' quoting-mode=always", workbook,
                    os.path.join(folder, "%n.txt")], check=True, capture_output=True)
    grid = {}
    for sheet, path in enumerate(sorted(glob.glob(os.path.join(folder, "*.txt"))), 1):
        first_row = min(cell.row for cell in cells if cell.sheet == sheet)
        first_column = min(cell.column for cell in cells if cell.sheet == sheet)
        with open(path, encoding="utf-8", newline="") as file:
            for row, texts in enumerate(csv.reader(file, delimiter="\t"), first_row):
                for column, text in enumerate(texts, first_column):
                    grid[sheet, row, column] = text
    return {cell: grid.get((cell.sheet, cell.row, cell.column), "") for cell in cells}


def judge_by_gnumeric(workbooks, _):
    require(shutil.which("ssconvert"), "Gnumeric")
    for workbook in workbooks:
        name, cells = os.path.basename(workbook), own_cells(workbook)
        raw, shown = gnumeric_texts(workbook, cells, "raw"), gnumeric_texts(workbook, cells, "preserve")
        for cell in cells:
            if not same_value(cell, raw[cell]):
                yield f"{name}, {cell}; Gnumeric has {raw[cell]!r}"
            elif not same_shown(cell, re.sub(r"[\n\t]", " ", shown[cell])):
                yield f"{name}, {cell}; Gnumeric shows {shown[cell]!r}"


def same_shown(cell, theirs):
    """Gnumeric writes the minus sign as such, drops the blank that a format leaves at the end, shows the short date with a
    year of two digits, computes in 80 bits (a tie in the last place shown may fall to the other side), and gives a formula
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
    """Whether our value, taken to 15 digits, is in the middle between two texts of that many decimals."""
    if cell.kind != "number":
        return False
    value = decimal.Decimal(f"{float(cell.value):.14e}") * (100 if cell.shown.endswith("%") else 1)
    return (value / last_place(cell.shown)) % 1 in (decimal.Decimal("0.5"), decimal.Decimal("-0.5"))


def judge_odd_ids(workbooks, _):
    require(shutil.which("ssconvert"), "Gnumeric")
    by_libreoffice = values_by_libreoffice(workbooks)
    for workbook in workbooks:
        name, cells = os.path.basename(workbook), own_cells(workbook)
        by_gnumeric = gnumeric_texts(workbook, cells, "raw")
        for cell in cells:
            kind, value = by_libreoffice[name].get(f"{cell.sheet} {cell.address}", ("empty", ""))
            if cell.sheet == 3 and cell.content == "formula" and not (
                    same_value(cell, value) or same_value(cell, by_gnumeric[cell])):
                yield f"{name}, {cell}; LibreOffice {value!r}, Gnumeric {by_gnumeric[cell]!r}"


def words_of(pdf):
    """For each page its words with their places: [{word: [(x, y), ...]}]"""
    boxes = subprocess.run(["pdftotext", "-bbox", pdf, "-"], check=True, capture_output=True, text=True).stdout
    pages = []
    for line in boxes.splitlines():
        if "<page " in line:
            pages.append(collections.defaultdict(list))
        word = re.search(r'<word xMin="(.*)" yMin="(.*)" xMax="(.*)" yMax="(.*)">(.*)</word>', line)
        if word:
            left, top, right, bottom = map(float, word.groups()[:4])
            pages[-1][word[5]].append(((top + bottom) / 2, (left + right) / 2))
    return pages


def printed_differences(name, ours, theirs):
    if len(ours) != len(theirs):
        yield f"{name}: {len(ours)} pages, LibreOffice has {len(theirs)}"
    for number, (page, other) in enumerate(zip(ours, theirs), 1):
        for word in sorted(page.keys() | other.keys()):
            if len(page[word]) != len(other[word]):
                yield f"{name}, page {number}: {word!r} {len(page[word])} times, LibreOffice has it {len(other[word])} times"
                continue
            for place, wanted in zip(sorted(page[word]), sorted(other[word])):
                # Programs break the lines of long names at different words.
                if "long-names" not in name and max(abs(one - two) for one, two in zip(place, wanted)) > PRINTED_TOLERANCE:
                    yield f"{name}, page {number}: {word!r} at {place}, LibreOffice has it at {wanted}"


def judge_printing(workbooks, _):
    """As many pages as LibreOffice prints, on each the same words, and each word at the same place."""
    require(shutil.which("soffice") and shutil.which("pdftotext"), "LibreOffice or pdftotext")
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(["soffice", f"-env:UserInstallation=file://{folder}/profile", "--headless", "--convert-to", "pdf",
                        "--outdir", folder, *workbooks], check=True, stdout=subprocess.DEVNULL)
        for workbook in workbooks:
            pdf = os.path.basename(workbook)[:-4] + ".pdf"
            yield from printed_differences(pdf, words_of(workbook[:-4] + ".pdf"), words_of(os.path.join(folder, pdf)))


def saved_by(program, template, folder):
    tool, arguments = {
        "libreoffice": ("soffice", ["--headless", f"-env:UserInstallation=file://{folder}/profile", "--convert-to", "xls",
                                    "--outdir", folder, template]),
        "gnumeric": ("ssconvert", ["-T", "Gnumeric_Excel:excel_biff8", template, os.path.join(folder, "template.xls")]),
    }[program]
    require(shutil.which(tool), program)
    subprocess.run([tool, *arguments], check=True, capture_output=True)
    return os.path.join(folder, "template.xls")


def judge_template(workbooks, lint, maker, program, template):
    """LibreOffice saves the format ";;" of the calculator's names as ";;;", which hides them."""
    with tempfile.TemporaryDirectory() as folder, tempfile.TemporaryDirectory() as saved:
        results = make_results(maker, folder, saved_by(program, template, saved))
        if os.path.exists(lint):
            yield from judge_by_lint(results, lint)
        for workbook in workbooks:
            name = os.path.basename(workbook)
            ours, theirs = ({(cell.sheet, cell.address): cell for cell in own_cells(path)}
                            for path in (workbook, os.path.join(folder, name)))
            for place in sorted(ours.keys() | theirs.keys()):
                one, other = ours.get(place), theirs.get(place)
                hides_a_name = program == "libreoffice" and place[0] == 2 and place[1].startswith("C")
                if one is None or other is None or (one.kind, one.value) != (other.kind, other.value) or not (
                        hides_a_name or one.shown == other.shown):
                    yield f"{name}, {place}: {one} from our template, {other} from {program}'s"


def make_results(maker, folder, *option):
    subprocess.run([os.path.abspath(maker), folder, *option], check=True, env={**os.environ, "QT_QPA_PLATFORM": "offscreen"})
    return sorted(glob.glob(os.path.join(folder, "*.xls")))


JUDGES = {"odd-ids": judge_odd_ids, "printing": judge_printing, "lint": judge_by_lint, "libreoffice": judge_by_libreoffice, "gnumeric": judge_by_gnumeric}


def main():
    maker, judge, lint, template = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        options = {"odd-ids": ["--odd-ids"], "printing": ["--print"]}
        workbooks = make_results(maker, folder, *options.get(judge, []))
        if judge in JUDGES:
            differences = list(JUDGES[judge](workbooks, lint))
        else:
            differences = list(judge_template(workbooks, lint, maker, judge.rpartition("_")[2], template))
        cells = sum(len(own_cells(workbook)) for workbook in workbooks if judge != "printing")
    print(*differences[:40], sep="\n")
    print(f"{judge}: {len(workbooks)} workbooks, {cells} cells, {len(differences)} differences")
    sys.exit(bool(differences))


main()
