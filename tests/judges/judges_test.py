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
import functools
import glob
import os
import re
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree
import zipfile

csv.field_size_limit(10_000_000)
TOLERANCE = 1e-9
PRINTED_TOLERANCE = 2 / 25.4 * 72  # points
STUBS = 3  # the sheet
SHEET_ML = "{http://schemas.openxmlformats.org/spreadsheetml/2006/main}"

Cell = collections.namedtuple("Cell", "sheet row column content format kind value shown")


def run(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options).stdout


def require(tool):
    if not shutil.which(tool) and not os.path.exists(tool):
        print(f"Skipped: {tool}, a judge of our workbooks, is not there")
        sys.exit(77)


def name_of(workbook):
    return os.path.splitext(os.path.basename(workbook))[0]


def own_cells(workbook):
    with open(workbook[:-4] + ".tsv", encoding="utf-8", newline="\n") as file:
        for line in file:
            sheet, row, column, *texts = line.rstrip("\n").split("\t")
            yield Cell(int(sheet), int(row), int(column), *texts)


def same_number(one, other):
    try:
        one, other = float(one), float(other)
    except ValueError:
        return False
    return abs(one - other) <= TOLERANCE * max(1.0, abs(one), abs(other))


def same_value(cell, value):
    """Whether the judge's value is ours. A logical may be a number with it, an empty cell's value empty where we have 0."""
    if cell.kind == "number":
        return same_number(cell.value, value) or (cell.value == "0" and value == "")
    if cell.kind == "logical":
        return str(value) in (cell.value, *(("1", "1.0") if cell.value == "TRUE" else ("0", "0.0")))
    return re.sub(r"[\n\t]", " ", str(value)) == cell.value


def judge_by_lint(workbooks, lint):
    require(lint)
    found = subprocess.run([sys.executable, lint, "--strict", "-q", *workbooks], capture_output=True, text=True)
    return [] if found.returncode == 0 else [found.stdout + found.stderr]


def libreoffice(kind, folder, *files):
    """Lets LibreOffice open the files, compute them again and save them in the folder as files of that kind."""
    require("soffice")
    with tempfile.TemporaryDirectory() as profile:
        run("soffice", f"-env:UserInstallation=file://{profile}", "--headless", "--convert-to", kind, "--outdir", folder, *files)
    return [os.path.join(folder, f"{name_of(file)}.{kind}") for file in files]


def gnumeric(file, saved, *options):
    require("ssconvert")
    run("ssconvert", "--recalc", *options, file, saved)
    return saved


def values_in(path):
    """{(sheet, address): value} of a workbook in XML, in which numbers and texts can be told apart."""
    def text_in(element):
        return "".join(part.text or "" for part in element.iter(SHEET_ML + "t"))
    with zipfile.ZipFile(path) as parts:
        def elements(part, name):
            return xml.etree.ElementTree.fromstring(parts.read(f"xl/{part}.xml")).iter(SHEET_ML + name)
        texts = [text_in(item) for item in elements("sharedStrings", "si")]
        values = collections.defaultdict(str)
        for sheet in (1, 2, 3):
            for cell in elements(f"worksheets/sheet{sheet}", "c"):
                kind, value = cell.get("t", "n"), cell.findtext(SHEET_ML + "v", "")
                values[sheet, cell.get("r")] = (texts[int(value)] if kind == "s" else text_in(cell) if kind == "inlineStr"
                                                else float(value) if kind == "n" and value else value)
        return values


def value_at(values, cell):
    return values[cell.sheet, f"{chr(64 + cell.column)}{cell.row}"]


def values_by_libreoffice(workbooks):
    return map(values_in, libreoffice("xlsx", os.path.dirname(workbooks[0]), *workbooks))


def values_by_gnumeric(workbook):
    return values_in(gnumeric(workbook, workbook[:-4] + "-gnumeric.xlsx"))


def judge_by_libreoffice(workbooks, _):
    for workbook, theirs in zip(workbooks, values_by_libreoffice(workbooks)):
        for cell in own_cells(workbook):
            if not same_value(cell, value := value_at(theirs, cell)):
                yield f"{name_of(workbook)}, {cell}; LibreOffice has {value!r}"


def shown_by_gnumeric(workbook):
    """{cell: text}, as Gnumeric exports them; its export begins at the first row and column that hold anything."""
    texts = workbook[:-4] + "-shown-"
    gnumeric(workbook, texts + "%n.txt", "-S", "-T", "Gnumeric_stf:stf_assistant",
             "-O", "format=preserve separator='\t' quoting-mode=always")
    cells = list(own_cells(workbook))
    shown = {}
    for sheet, path in enumerate(sorted(glob.glob(texts + "*.txt")), 1):
        ours = [cell for cell in cells if cell.sheet == sheet]
        first_row, first_column = min(cell.row for cell in ours), min(cell.column for cell in ours)
        with open(path, encoding="utf-8", newline="") as file:
            rows = list(csv.reader(file, delimiter="\t"))
        shown |= {cell: rows[cell.row - first_row][cell.column - first_column] for cell in ours}
    return shown


def judge_by_gnumeric(workbooks, _):
    for workbook in workbooks:
        values = values_by_gnumeric(workbook)
        for cell, text in shown_by_gnumeric(workbook).items():
            if not same_value(cell, value := value_at(values, cell)):
                yield f"{name_of(workbook)}, {cell}; Gnumeric has {value!r}"
            elif not same_shown(cell, re.sub(r"[\n\t]", " ", text)):
                yield f"{name_of(workbook)}, {cell}; Gnumeric shows {text!r}"


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
    return abs(value / last_place(cell.shown)) % 1 == decimal.Decimal("0.5")


def judge_odd_ids(workbooks, _):
    for workbook, by_libreoffice in zip(workbooks, values_by_libreoffice(workbooks)):
        by_gnumeric = values_by_gnumeric(workbook)
        for cell in own_cells(workbook):
            theirs = [value_at(values, cell) for values in (by_libreoffice, by_gnumeric)]
            if cell.sheet == STUBS and cell.content == "formula" and not any(same_value(cell, value) for value in theirs):
                yield f"{name_of(workbook)}, {cell}; LibreOffice and Gnumeric have {theirs}"


def words_of(pdf):
    """For each page its words with their places: [{word: [(y, x), ...]}]"""
    require("pdftotext")
    pages = []
    for line in run("pdftotext", "-bbox", pdf, "-").splitlines():
        if "<page " in line:
            pages.append(collections.defaultdict(list))
        if word := re.search(r'<word xMin="(.*)" yMin="(.*)" xMax="(.*)" yMax="(.*)">(.*)</word>', line):
            left, top, right, bottom = map(float, word.groups()[:4])
            pages[-1][word[5]].append(((top + bottom) / 2, (left + right) / 2))
    return pages


def judge_printing(workbooks, _):
    """As many pages as LibreOffice prints, on each the same words, and each word at the same place."""
    with tempfile.TemporaryDirectory() as folder:
        for workbook, theirs in zip(workbooks, libreoffice("pdf", folder, *workbooks)):
            yield from printed_differences(name_of(workbook), words_of(workbook[:-4] + ".pdf"), words_of(theirs))


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


def judge_template(workbooks, lint, program):
    """LibreOffice saves the format ";;" of the calculator's names as ";;;", which hides them."""
    with tempfile.TemporaryDirectory() as folder:
        template = (libreoffice("xls", folder, sys.argv[4])[0] if program == "libreoffice" else
                    gnumeric(sys.argv[4], os.path.join(folder, "template.xls"), "-T", "Gnumeric_Excel:excel_biff8"))
        results = make_results(os.path.join(folder, "results"), template)
        if os.path.exists(lint):
            yield from judge_by_lint(results, lint)
        for workbook, result in zip(workbooks, results, strict=True):
            ours, theirs = ({cell[:3]: cell for cell in own_cells(path)} for path in (workbook, result))
            for place in sorted(ours.keys() | theirs.keys()):
                one, other = ours.get(place), theirs.get(place)
                hides_a_name = program == "libreoffice" and place[0] == 2 and place[2] == 3
                if one is None or other is None or (one.kind, one.value) != (other.kind, other.value) or not (
                        hides_a_name or one.shown == other.shown):
                    yield f"{name_of(workbook)}: {one} from our template, {other} from {program}'s"


def make_results(folder, *option):
    os.makedirs(folder, exist_ok=True)
    run(os.path.abspath(sys.argv[1]), folder, *option, env={**os.environ, "QT_QPA_PLATFORM": "offscreen"})
    return sorted(glob.glob(os.path.join(folder, "*.xls")))


# What make_results is asked for, and the judge's own work.
JUDGES = {"lint": ((), judge_by_lint), "libreoffice": ((), judge_by_libreoffice), "gnumeric": ((), judge_by_gnumeric),
          "odd-ids": (("--odd-ids",), judge_odd_ids), "printing": (("--print",), judge_printing),
          "template_saved_by_libreoffice": ((), functools.partial(judge_template, program="libreoffice")),
          "template_saved_by_gnumeric": ((), functools.partial(judge_template, program="gnumeric"))}

with tempfile.TemporaryDirectory() as folder:
    option, judge = JUDGES[sys.argv[2]]
    workbooks = make_results(folder, *option)
    differences = list(judge(workbooks, sys.argv[3]))
print(*differences[:40], sep="\n")
print(f"{sys.argv[2]}: {len(workbooks)} workbooks, {len(differences)} differences")
sys.exit(bool(differences))
