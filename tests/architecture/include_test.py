#!/usr/bin/env python3
"""Reads every #include line of the program and holds it against the picture in docs/architecture.md: a folder includes
only what is below it (a generated .inc apart), and plain C++ includes neither a window library nor a header of ours that
does."""
import os
import re
import sys

# folder: (folders whose headers it may include besides its own, whether it may use Qt)
ALLOWED = {
    "app/base/text": ([], False),
    "app/base": (["app/base/text"], False),
    "settings": (["app/base"], False),
    "entry/data": ([], False),
    "workbook/spreadsheet": (["app/base"], False),
    "drawing": (["app/base"], True),
    "workbook/engine": (["app/base", "drawing"], False),
    "workbook/engine/text": (["app/base", "workbook/engine"], False),
    "workbook/engine/formula": (["app/base", "workbook/engine", "workbook/engine/text", "workbook/engine/xls"], False),
    "workbook/engine/picture": (["app/base", "drawing", "workbook/engine", "workbook/engine/text"], False),
    "workbook/engine/xls": (["app/base", "workbook/engine"], False),
    "workbook/embedded": (["app/base", "drawing", "workbook/engine", "workbook/engine/formula",
                           "workbook/engine/picture", "workbook/engine/xls", "workbook/spreadsheet"], False),
    "workbook/excel": (["app/base", "workbook/engine", "workbook/spreadsheet"], False),
    "workbook/sessions": (["app/base", "workbook/embedded", "workbook/excel", "workbook/spreadsheet"], False),
    "workbook/printing": (["app/base", "drawing", "workbook/engine/picture", "workbook/engine/xls"], False),
    "workbook/summary": (["app/base", "workbook/engine", "workbook/engine/text", "workbook/engine/xls"], False),
    "workbook": (["app/base", "entry/data", "workbook/sessions", "workbook/spreadsheet"], False),
    "resources": (["app/base", "workbook/engine", "workbook/engine/formula", "workbook/engine/text",
                   "workbook/engine/xls"], False),
    "help": (["app/base"], False),
    "app/look": (["app/base", "settings"], True),
    "preview": (["app/base", "app/look", "drawing"], True),
    "entry": (["app/base", "app/look", "entry/data", "help", "preview", "settings", "workbook"], True),
    "app": (["app/base", "app/look", "entry", "entry/data", "resources", "settings", "workbook/printing", "workbook/sessions",
             "workbook/summary"],
            True),
}
# Files of a module with windows that are nevertheless plain C++.
PLAIN = {"drawing/Drawing.h", "drawing/DrawingFile.h", "drawing/DrawingFile.cpp", "drawing/Pages.h", "preview/ViewGeometry.h",
         "preview/ViewGeometry.cpp"}


def is_plain(path):
    """Whether a file of ours includes no window library, nor a header of ours that does."""
    folder = os.path.dirname(path)
    return path in PLAIN or (folder in ALLOWED and not ALLOWED[folder][1])


def offences(root):
    for folder, (below, _) in ALLOWED.items():
        visible = [folder, *below, *(["app/base/text"] if "app/base" in below else [])]  # with app/base the texts in it
        for name in sorted(os.listdir(os.path.join(root, folder))):
            path = f"{folder}/{name}"
            if not name.endswith((".h", ".cpp")):
                continue
            text = open(os.path.join(root, path), encoding="utf-8").read()
            for mark, included in re.findall(r'^#include (["<])([^">]+)', text, re.M):
                ours = mark == '"' and not included.endswith(".inc")
                if ours and os.path.dirname(included) not in visible:
                    yield f"{path} includes {included}, which is not below it"
                if is_plain(path) and (not is_plain(included) if ours else included.startswith("Q")):
                    yield f"{path} is plain C++, yet it includes {included}"


def modules_without_a_rule(root):
    for parent, folders, files in os.walk(root):
        folders[:] = [name for name in folders if name not in ("build", "out", "tests", "bench") and name[0] != "."]
        folder = os.path.relpath(parent, root)
        if any(name.endswith((".h", ".cpp")) for name in files) and folder not in ALLOWED:
            yield f"the folder {folder} has no line in the table of this test"


found = [*offences(sys.argv[1]), *modules_without_a_rule(sys.argv[1])]
print("\n".join(found) or "every include follows the picture")
sys.exit(bool(found))
