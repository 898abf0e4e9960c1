#!/usr/bin/env python3
"""The guided demo: demo.py PROGRAM OUTPUT_FOLDER

Drives the real program in a virtual display by keys and clicks, from sample data to a saved workbook, and leaves the
screenshots and the workbook in the output folder. Any step that does not happen ends it with an error.
"""
import os
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from desktop import Desktop, StepFailed  # noqa: E402
from wagemill_guide import ENTRY, PREVIEW, Guide  # noqa: E402


def run_demo(program, output):
    """Answers the paths of what it left in `output`."""
    os.makedirs(output, exist_ok=True)
    paths = [os.path.join(os.path.abspath(output), name)
             for name in ("entry.png", "preview.png", "preview-zoomed.png", "payroll.xls")]
    entry, preview, zoomed, workbook = paths
    for path in filter(os.path.exists, paths):
        os.remove(path)
    with Desktop(failure_picture=os.path.join(output, "failure.png")) as desktop:
        guide = Guide(desktop, program)
        guide.load_sample_data()
        desktop.screenshot(entry, desktop.window(ENTRY))
        print(f"The preview showed {guide.build():.2f} s after the click.")
        desktop.screenshot(preview, desktop.window(PREVIEW))
        guide.zoom_in()
        desktop.screenshot(zoomed, desktop.window(PREVIEW))
        guide.save_as(workbook)
    return paths


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    try:
        print(*run_demo(os.path.abspath(sys.argv[1]), sys.argv[2]), sep="\n")
    except StepFailed as failure:
        sys.exit(f"The demo failed: {failure}")


if __name__ == "__main__":
    main()
