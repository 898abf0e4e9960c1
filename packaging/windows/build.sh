#!/usr/bin/env bash
# Builds wagemill.exe, one static 64-bit program, and its zip; on Debian, with packages only.
# usage: packaging/windows/build.sh [--with-tests]
# QT_WINDOWS_PREFIX    a static Qt for Windows; unset: the one in build/windows/qt-windows, built first by build-qt.sh
#                      when it is not there
# WAGEMILL_HOST_TOOLS  where template_builder of a native build is; unset: it is built first
# Leaves program and tests in build/windows/app, the zip in build/windows.
set -euo pipefail
cd "$(dirname "$0")/../.."
source scripts/packages.sh

tests=OFF
[ "${1:-}" = --with-tests ] && tests=ON
requirePackages "${buildPackages[@]}" "${windowsBuildPackages[@]}"
mkdir -p build/windows

qt=$(realpath -m "${QT_WINDOWS_PREFIX:-build/windows/qt-windows}")
[ -d "$qt/lib/cmake/Qt6" ] || packaging/windows/build-qt.sh "$qt"

tools=${WAGEMILL_HOST_TOOLS:-}
if [ -z "$tools" ]; then
    echo "Building the template builder ..."
    tools=build/windows/host/resources
    WAGEMILL_TARGET=template_builder buildProgram build/windows/host -DCMAKE_BUILD_TYPE=Release -DWAGEMILL_TESTS=OFF
fi

echo "Building for Windows ..."
buildProgram build/windows/app -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64.cmake -DQT_WINDOWS_PREFIX="$qt" \
    -DWAGEMILL_HOST_TOOLS="$(realpath "$tools")" -DCMAKE_BUILD_TYPE=MinSizeRel -DWAGEMILL_TESTS=$tests
(cd build/windows/app && cpack -B .. >cpack.log) || { cat build/windows/app/cpack.log >&2; exit 1; }
rm -rf build/windows/_CPack_Packages
stat -c '%n: %s bytes' build/windows/wagemill-*.zip
