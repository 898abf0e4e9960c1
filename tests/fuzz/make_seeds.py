#!/usr/bin/env python3
"""Makes what fuzzing starts from: make_seeds.py SOURCES TEMPLATE OUTPUT

SOURCES   the checkout: texts, tokens and records are taken from its own tests, and the inputs kept beside this file
TEMPLATE  the payroll template as built
OUTPUT    receives a folder of seeds for each target
"""
import glob
import itertools
import os
import re
import shutil
import struct
import sys

BOF, EOF, BOUNDSHEET, FORMULA = 0x0809, 0x000A, 0x0085, 0x0006
RECORDS_OF_A_KIND = 2  # that a small workbook keeps
REGIONS = 5


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def session_texts(sources, words):
    """What follows these words in the lines of the spreadsheet sessions, up to an arrow."""
    for path in glob.glob(f"{sources}/tests/sheets/*.txt"):
        for line in read(path).splitlines():
            found = re.match(rf"(?:{words}) (.*?)(?: -> .*)?$", line)
            if found:
                yield found[1].encode()


def substreams(stream):
    """Globals and sheets, each a list of records: number and data."""
    found, at = [], 0
    while at + 4 <= len(stream):
        number, size = struct.unpack_from("<2H", stream, at)
        if number == BOF:
            found.append([])
        if number == 0:
            break
        found[-1].append((number, stream[at + 4:at + 4 + size]))
        at += 4 + size
    return found


def stream_of(parts):
    """The substreams with the places of the sheets set."""
    places = itertools.accumulate(sum(4 + len(data) for _, data in part) for part in parts)
    stream = b""
    for number, data in itertools.chain(*parts):
        if number == BOUNDSHEET:
            data = struct.pack("<I", next(places)) + data[4:]
        stream += struct.pack("<2H", number, len(data)) + data
    return stream


def small_workbook(parts):
    """The template with a few records of each kind."""
    kept = [[] for _ in parts]
    for small, part in zip(kept, parts):
        for number, data in part:
            if sum(number == other for other, _ in small) < RECORDS_OF_A_KIND:
                small.append((number, data))
    return stream_of(kept)


def damaged_workbooks(sources, parts):
    """A workbook around each list of records in the tests of damaged ones."""
    for line in read(f"{sources}/tests/engine/xls/DamagedWorkbookTest.cpp").splitlines():
        found = [(int(number, 16), bytes.fromhex(data))
                 for number, data in re.findall(r'\{(0x[0-9A-F]{4}), "([0-9A-F ]*)"\}', line)]
        if found:
            yield stream_of([[parts[0][0], (BOUNDSHEET, bytes(6) + b"\1\0S"), (EOF, b"")],
                             [parts[1][0], *found, (EOF, b"")]])


def formula_tokens(sources):
    hexadecimal = r'"((?:[0-9A-F]{2,} ?)+)"'
    for path in ("FormulaTokensTest.cpp", "RecordsTest.cpp"):
        pairs = re.findall(rf"{hexadecimal}(?:,\s*{hexadecimal})?", read(f"{sources}/tests/engine/xls/{path}"))
        for tokens, trailing in (map(bytes.fromhex, pair) for pair in pairs):
            for kind in (0, 1):
                yield struct.pack("<BH", kind, len(tokens)) + tokens + trailing


def formats(sources):
    codes = set(session_texts(sources, r"(?:style|format) \w+|shows .* as"))
    for index, code in enumerate(sorted(codes)):
        number = (0.0, -5.0, 46112.75, 1234.565, 1e-9, 1e300)[index % 6]
        yield struct.pack("<Bd", index % 256, number) + code


NUMBER_TEXTS = [text.encode() for text in (
    "", "0", "12.5", "-1,234.56", "(1,234.5)", "$15.00", "15,00 \u20ac", "\u20b9 1,23,456.7", "7.65%", "1E5", "1.5e-3",
    "&H1F", ".5", "5-", "1 234,5", "1\u00a0234,5", "\u0661\u0662\u066b\u0665", "\u200e-5", "$(5)", "1.2.3", "12a", " 7 ")]


def in_every_region(texts):
    return [bytes([region]) + text for text in sorted(set(texts)) for region in range(REGIONS)]


sources, template_file, output = sys.argv[1:]
with open(template_file, "rb") as file:
    container = file.read()
template = container[512:]  # the header is followed by the workbook's stream, as we write it
parts = substreams(template)
seeds = {
    "WorkbookFile": [container, template, small_workbook(parts), *damaged_workbooks(sources, parts)],
    "FormulaTokens": [*formula_tokens(sources), *(b"\0" + data[20:] for number, data in sum(parts, []) if number == FORMULA)],
    "NumberFormat": formats(sources),
    "TypedText": in_every_region(session_texts(sources, r"(?:put|refused) \w+|typed")),
    "NumberText": in_every_region(NUMBER_TEXTS),
    "DrawingFile": [],
}
for target, found in seeds.items():
    os.makedirs(f"{output}/{target}", exist_ok=True)
    for number, seed in enumerate(dict.fromkeys(found)):
        with open(f"{output}/{target}/{number:04}", "wb") as file:
            file.write(seed)
    for path in glob.glob(f"{sources}/tests/fuzz/inputs/{target}/*"):
        shutil.copy(path, f"{output}/{target}")
