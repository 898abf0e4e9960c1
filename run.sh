#!/usr/bin/env bash
# Installs what is missing, builds Wagemill and starts it; without a display it runs the guided demo instead.
set -euo pipefail
cd "$(dirname "$0")"
source scripts/packages.sh

requirePackages "${buildPackages[@]}"
echo "Building Wagemill ..."
buildPreset release

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    exec build/release/program/wagemill
fi
echo "There is no display here: running the guided demo in a virtual one."
requirePackages "${desktopPackages[@]}"
exec /usr/bin/python3 tests/endtoend/demo.py build/release/program/wagemill out
