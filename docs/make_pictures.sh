#!/usr/bin/env bash
# Makes the pictures of README and docs from the running program and from LibreOffice, from the repository's root:
# docs/make_pictures.sh [PROGRAM]
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh
requirePackages "${desktopPackages[@]}" "${judgePackages[@]}"
program=${1:-build/release/program/wagemill}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

/usr/bin/python3 docs/manual_pictures.py "$program" "$work"
mkdir -p docs/pictures/manual

# The same workbook as LibreOffice prints it: the last page holds the stub.
soffice --headless "-env:UserInstallation=file://$work/profile" --convert-to pdf --outdir "$work" "$work/payroll.xls" >/dev/null
pdftoppm -r 120 -png "$work/payroll.pdf" "$work/page"
stub=(-fuzz 4% -trim +repage -bordercolor white -border 10 -resize 860x)
convert "$work/page-3.png" -crop 100%x30%+0+66 +repage "${stub[@]}" "$work/theirs.png"
convert "$work/preview.png" -crop 853x309+13+79 +repage "${stub[@]}" "$work/ours.png"
title=(-background white -fill '#555555' -font Liberation-Sans -pointsize 15 -gravity center)
convert "${title[@]}" -size 880x34 label:"The picture in Wagemill's preview" "$work/ours.png" \
    label:"The page as LibreOffice prints it" "$work/theirs.png" -append "$work/side-by-side.png"
convert "$work/page-1.png" "$work/page-2.png" -trim +repage -bordercolor white -border 20 -resize 1000x -append "$work/lists.png"

# Few colours are enough for windows and print, and make small files.
for picture in entry-empty entry-sample invalid-input preview preview-zoomed save-dialog overwrite lists employees \
        application-error; do
    convert "$work/$picture.png" -strip -dither None -colors 255 "PNG8:docs/pictures/manual/$picture.png"
done
convert "$work/side-by-side.png" -strip -dither None -colors 255 PNG8:docs/pictures/side-by-side.png
