#!/usr/bin/env python3
"""Makes what fuzzing starts from: make_seeds.py SOURCES TEMPLATE OUTPUT

SOURCES   the checkout: texts, tokens and records are taken from its own tests
TEMPLATE  the payroll template as built
OUTPUT    receives a folder of seeds for each target
"""
import glob
import os
import re
import struct
import sys

BOF_GLOBALS = bytes.fromhex("00060500A91FCD07C900010006040000")
BOF_SHEET = bytes.fromhex("00061000A91FCD07C900010006040000")
BOF, EOF, BOUNDSHEET = 0x0809, 0x000A, 0x0085
RECORDS_OF_A_KIND = 4  # that a small workbook keeps of the template's cells
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


def records(stream):
    at = 0
    while at + 4 <= len(stream):
        number, size = struct.unpack_from("<2H", stream, at)
        if number == 0:
            return
        yield number, stream[at + 4:at + 4 + size]
        at += 4 + size


def stream_of(substreams):
    """Globals and sheets, each a list of records, with the places of the sheets set."""
    pack = lambda found: b"".join(struct.pack("<2H", number, len(data)) + data for number, data in found)
    parts = [bytearray(pack(found)) for found in substreams]
    at, sheet = 0, 1
    for number, data in substreams[0]:
        if number == BOUNDSHEET:
            struct.pack_into("<I", parts[0], at + 4, sum(map(len, parts[:sheet])))
            sheet += 1
        at += 4 + len(data)
    return b"".join(parts)


def small_workbook(template):
    """The template's globals, and of its sheets a few records of each kind."""
    substreams = [[]]
    for number, data in records(template):
        if number == BOF and substreams[-1]:
            substreams.append([])
        kept = sum(number == other for other, _ in substreams[-1])
        if len(substreams) == 1 or kept < RECORDS_OF_A_KIND:
            substreams[-1].append((number, data))
    return stream_of(substreams)


def damaged_workbooks(sources):
    """A workbook around each list of records in the tests of damaged ones."""
    for line in read(f"{sources}/tests/engine/xls/DamagedWorkbookTest.cpp").splitlines():
        found = [(int(number, 16), bytes.fromhex(data))
                 for number, data in re.findall(r'\{(0x[0-9A-F]{4}), "([0-9A-F ]*)"\}', line)]
        if found:
            globals_ = [(BOF, BOF_GLOBALS), (BOUNDSHEET, bytes(6) + b"\1\0S"), (EOF, b"")]
            yield stream_of([globals_, [(BOF, BOF_SHEET), *found, (EOF, b"")]])


def formula_tokens(sources):
    hexadecimal = r'"((?:[0-9A-F]{2,} ?)+)"'
    for path in ("FormulaTokensTest.cpp", "RecordsTest.cpp"):
        pairs = re.findall(rf"{hexadecimal}(?:,\s*{hexadecimal})?", read(f"{sources}/tests/engine/xls/{path}"))
        for tokens, trailing in (map(bytes.fromhex, pair) for pair in pairs):
            for kind in (0, 1):
                yield struct.pack("<BH", kind, len(tokens)) + tokens + trailing


def template_formulas(template):
    for number, data in records(template):
        if number == 0x0006:
            yield b"\0" + data[20:]


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


def drawings():
    """A drawing with one of everything, and an empty one."""
    text = lambda words: struct.pack("<I", len(words)) + words
    fill = struct.pack("<4d3B", 1, 2, 3, 4, 5, 6, 7)
    line = struct.pack("<4d4B", 0, 9, 20, 9, 5, 1, 2, 3)
    font = text(b"Arial") + struct.pack("<H4B", 200, 1, 0, 0, 1)
    words = struct.pack("<8d", *range(8)) + text(b"Net Pay") + struct.pack("<H10B", 0, 1, 2, 3, 2, 1, 0, 1, 4, 1, 0)
    words += struct.pack("<I", 1) + text(b"12")
    for items in (0, 1):
        yield struct.pack("<2d", 853, 301) + b"".join(struct.pack("<I", items) + item * items
                                                      for item in (fill, line, font, words))


def main():
    sources, template_file, output = sys.argv[1:]
    with open(template_file, "rb") as file:
        container = file.read()
    template = container[512:]  # the header is followed by the workbook's stream, as we write it
    assert template.startswith(struct.pack("<2H", BOF, 16))
    seeds = {
        "WorkbookFile": [container, template, small_workbook(template), *damaged_workbooks(sources)],
        "FormulaTokens": [*formula_tokens(sources), *template_formulas(template)],
        "NumberFormat": formats(sources),
        "TypedText": in_every_region(session_texts(sources, r"(?:put|refused) \w+|typed")),
        "NumberText": in_every_region(NUMBER_TEXTS),
        "DrawingFile": drawings(),
    }
    for target, found in seeds.items():
        os.makedirs(f"{output}/{target}", exist_ok=True)
        for number, seed in enumerate(dict.fromkeys(found)):
            with open(f"{output}/{target}/{number:04}", "wb") as file:
                file.write(seed)


main()
