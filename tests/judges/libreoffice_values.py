"""Reads the cells of workbooks through LibreOffice: libreoffice_values.py OUTPUT.json WORKBOOK...

Run by the interpreter that has LibreOffice's module `uno`. Every formula is computed again before it is read.
"""
import json
import os
import subprocess
import sys
import tempfile
import time

import uno
from com.sun.star.beans import PropertyValue

FORMULA_RESULT_ERROR = 4  # com.sun.star.sheet.FormulaResult
# The numbers of LibreOffice's own errors beside the spreadsheet's error texts.
ERROR_TEXTS = {503: "#NUM!", 519: "#VALUE!", 524: "#REF!", 525: "#NAME?", 532: "#DIV/0!", 32767: "#N/A"}


def connect(pipe, office):
    resolver = uno.getComponentContext().ServiceManager.createInstance("com.sun.star.bridge.UnoUrlResolver")
    for _ in range(300):
        try:
            return resolver.resolve(f"uno:pipe,name={pipe};urp;StarOffice.ComponentContext")
        except Exception:
            if office.poll() is not None:
                raise
            time.sleep(0.1)
    sys.exit("LibreOffice did not answer within 30 seconds")


def sheet_values(sheet):
    """{address: (kind, value)} as in the lists of make_results; read in bulk, errors one by one."""
    cursor = sheet.createCursor()
    cursor.gotoEndOfUsedArea(False)
    last = cursor.RangeAddress
    cells = {}
    rows = sheet.getCellRangeByPosition(0, 0, last.EndColumn, last.EndRow).getDataArray()
    for row, values in enumerate(rows, 1):
        for column, value in enumerate(values):
            if value != "":
                cells[f"{chr(65 + column)}{row}"] = ("text" if isinstance(value, str) else "number", value)
    errors = sheet.queryFormulaCells(FORMULA_RESULT_ERROR).Cells.createEnumeration()
    while errors.hasMoreElements():
        cell = errors.nextElement()
        place = cell.CellAddress
        cells[f"{chr(65 + place.Column)}{place.Row + 1}"] = (
            "error", ERROR_TEXTS.get(cell.getError(), f"Err:{cell.getError()}"))
    return cells


def read_workbook(desktop, path):
    hidden = PropertyValue("Hidden", 0, True, 0)
    document = desktop.loadComponentFromURL(uno.systemPathToFileUrl(path), "_blank", 0, (hidden,))
    if document is None:
        sys.exit(f"LibreOffice does not open {path}")
    document.calculateAll()
    cells = {f"{number} {address}": value for number, sheet in enumerate(document.Sheets, 1)
             for address, value in sheet_values(sheet).items()}
    document.close(True)
    return cells


def main():
    output, workbooks = sys.argv[1], sys.argv[2:]
    with tempfile.TemporaryDirectory() as profile:
        pipe = f"wagemill{os.getpid()}"
        office = subprocess.Popen(["soffice", "--headless", "--norestore", "--nologo",
                                   f"-env:UserInstallation=file://{profile}",
                                   f"--accept=pipe,name={pipe};urp;"], stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL)
        try:
            context = connect(pipe, office)
            desktop = context.ServiceManager.createInstanceWithContext("com.sun.star.frame.Desktop", context)
            values = {os.path.basename(path): read_workbook(desktop, path) for path in workbooks}
        finally:
            office.terminate()
            office.wait(20)
    with open(output, "w", encoding="utf-8") as file:
        json.dump(values, file)


main()
