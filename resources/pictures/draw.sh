#!/usr/bin/env bash
# Draws the hand pointer, the icon in every size and the splash picture from their SVG files. The results are kept in
# resources/; run this again after a change.
set -euo pipefail
cd "$(dirname "$0")/.."
source ../scripts/packages.sh
requirePackages librsvg2-bin icoutils fonts-liberation

drawn=$(mktemp -d)
trap 'rm -r "$drawn"' EXIT

for side in 16 22 24 32 48 64 96 128 192 256 512; do
    rsvg-convert -w $side -h $side icon/wagemill.svg -o icon/wagemill-$side.png
done
icotool -c -o icon/wagemill.ico icon/wagemill-{16,24,32,48,64}.png --raw=icon/wagemill-256.png
rsvg-convert pictures/hand.svg -o "$drawn/hand.png"
icotool -c --cursor --hotspot-x=12 --hotspot-y=1 -o HAND-M.CUR "$drawn/hand.png"
cp icon/wagemill-128.png pictures/splash.svg "$drawn" # a picture may only name files beside it
rsvg-convert "$drawn/splash.svg" -o Splash/wagemill.png
