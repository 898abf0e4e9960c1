#!/usr/bin/env python3
"""Compares the manual with the sources: manual_test.py REPOSITORY

Every message that a user can meet must be in docs/manual.md, word for word up to its first number or file name, so that
whoever searches for it finds what to do. The manual's pictures and its links to its own sections must exist.
"""
import glob
import os
import re
import sys

MODULES = ("app/base", "app/look", "settings", "entry", "preview", "help", "workbook", "workbook/sessions", "workbook/excel")
NEVER_MET = {
    "Cannot make the folder": "is reported as \"The settings cannot be kept in ...\"",
    "The title": "the one title of the program can be shortened",
    "Cannot show the picture": "of the splash window, which no start shows",
    "A place that was never written cannot be replaced.": "a fault of a writer, not of a file",
    "The Excel session has ended.": "no step follows the end of its session",
    "Excel copies no pictures on this system.": "without Excel nothing gets that far",
}
# A sentence, in quotes, where something is thrown or shown.
SENTENCE = re.compile(r'(?:_error|Error|_argument|_range|showMessage)\(\s*\{?\s*(?:\.text = )?(?:std::string\()?'
                      r'"([A-Z](?:[^"\\]|\\.)*)"')


def messages(root):
    """The beginnings of all messages, each with its file."""
    for module in MODULES:
        for path in sorted(glob.glob(f"{root}/{module}/*.cpp")):
            with open(path, encoding="utf-8") as source:
                for text in SENTENCE.findall(source.read()):
                    yield re.split(r'\\"|\\r', text)[0].strip(), os.path.relpath(path, root)


def anchor(heading):
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


root = sys.argv[1]
with open(f"{root}/docs/manual.md", encoding="utf-8") as file:
    manual = file.read()
text = re.sub(r"\s+", " ", manual)
found = list(messages(root))
faults = [f"{where}: \"{message}\" is not explained" for message, where in found
          if message not in text and message not in NEVER_MET]
if len(found) < 25:
    faults.append(f"only {len(found)} messages were found in the sources: their form must have changed")
anchors = {anchor(heading) for heading in re.findall(r"^#+ (.*)$", manual, re.MULTILINE)}
for target in re.findall(r"\]\(([^)\s]+)\)", manual):
    if not (target[1:] in anchors if target.startswith("#") else os.path.exists(f"{root}/docs/{target}")):
        faults.append(f"docs/manual.md leads to {target}, which does not exist")
sys.exit("\n".join(faults) or 0)
