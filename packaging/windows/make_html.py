#!/usr/bin/env python3
"""make_html.py DOCUMENT.md OUTPUT.html: a document as a page for a browser. Needs cmark-gfm."""
import html
import re
import subprocess
import sys

PAGE = """<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<title>{title}</title>
<style>
body {{ font: 16px/1.5 "Segoe UI", Arial, sans-serif; color: #1f2933; max-width: 54em; margin: 2em auto; padding: 0 1em }}
table {{ border-collapse: collapse }}
th, td {{ border: 1px solid #b4c2ce; padding: .3em .6em; text-align: left; vertical-align: top }}
img {{ max-width: 100% }}
code, pre {{ font-family: Consolas, monospace; background: #eaf1f6 }}
pre {{ padding: .6em }}
</style>
</head>
<body>
{body}</body>
</html>
"""


def with_anchor(heading):
    """The anchor that a contents list of the document leads to: lower case, blanks as hyphens, no other signs."""
    text = html.unescape(re.sub(r"<[^>]*>", "", heading[2]))
    anchor = re.sub(r"[^\w -]", "", text.lower()).replace(" ", "-")
    return f'<h{heading[1]} id="{anchor}">{heading[2]}</h{heading[1]}>'


def main():
    source, target = sys.argv[1:]
    body = subprocess.run(["cmark-gfm", "--extension", "table", "--extension", "autolink", source], check=True,
                          capture_output=True, encoding="utf-8").stdout
    body = re.sub(r"<h(\d)>(.*?)</h\1>", with_anchor, body)
    body = re.sub(r'href="(\w+)\.md', r'href="\1.html', body)
    title = html.escape(re.search(r"<h1[^>]*>(.*?)</h1>", body)[1])
    with open(target, "w", encoding="utf-8") as page:
        page.write(PAGE.format(title=title, body=body))


main()
