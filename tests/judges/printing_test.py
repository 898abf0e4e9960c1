"""printing_test.py PRINT_RESULTS: what the preview prints, held against what LibreOffice prints of the same workbook: as many
pages, on each the same words, and each word at the same place."""
import collections
import os
import re
import shutil
import subprocess
import sys
import tempfile

TOLERANCE = 2 / 25.4 * 72  # points


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


def differences(name, ours, theirs):
    if len(ours) != len(theirs):
        yield f"{name}: {len(ours)} pages, LibreOffice has {len(theirs)}"
    for number, (page, other) in enumerate(zip(ours, theirs), 1):
        for word in sorted(page.keys() | other.keys()):
            if len(page[word]) != len(other[word]):
                yield f"{name}, page {number}: {word!r} {len(page[word])} times, LibreOffice has it {len(other[word])} times"
                continue
            for place, wanted in zip(sorted(page[word]), sorted(other[word])):
                # Programs break the lines of long names at different words.
                if "long-names" not in name and max(abs(one - two) for one, two in zip(place, wanted)) > TOLERANCE:
                    yield f"{name}, page {number}: {word!r} at {place}, LibreOffice has it at {wanted}"


def main():
    if not shutil.which("soffice") or not shutil.which("pdftotext"):
        print("LibreOffice or pdftotext, judges of what we print, are not installed")
        sys.exit(77)
    with tempfile.TemporaryDirectory() as folder:
        results = os.path.join(folder, "ours")
        judged = os.path.join(folder, "theirs")
        os.mkdir(results)
        subprocess.run([os.path.abspath(sys.argv[1]), results], check=True, env={**os.environ, "QT_QPA_PLATFORM": "offscreen"})
        workbooks = [os.path.join(results, name) for name in sorted(os.listdir(results)) if name.endswith(".xls")]
        subprocess.run(["soffice", f"-env:UserInstallation=file://{folder}/profile", "--headless", "--convert-to", "pdf",
                        "--outdir", judged, *workbooks], check=True, stdout=subprocess.DEVNULL)
        found = [difference for workbook in workbooks for difference in differences(
            os.path.basename(workbook), words_of(workbook[:-4] + ".pdf"),
            words_of(os.path.join(judged, os.path.basename(workbook)[:-4] + ".pdf")))]
    print(*found[:40], sep="\n")
    print(f"{len(workbooks)} workbooks, {len(found)} differences")
    sys.exit(bool(found))


main()
