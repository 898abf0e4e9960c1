#!/usr/bin/env bash
# Builds wagemill.exe, one static 64-bit program, its zip and its installer; on Debian, with packages only.
# usage: packaging/windows/build.sh [--with-tests]
# QT_WINDOWS_PREFIX    a static Qt for Windows; unset: the one in build/windows/qt-windows, built first by build-qt.sh
#                      when it is not there
# WAGEMILL_HOST_TOOLS  where template_builder of a native build is; unset: it is built first
# Leaves program and tests in build/windows/app; zip, installer and their SHA256SUMS in build/windows.
set -euo pipefail
cd "$(dirname "$0")/../.."
root=$PWD
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
    tools=build/release/resources
    WAGEMILL_TARGET=template_builder buildPreset release
fi

echo "Building for Windows ..."
buildPreset windows -DQT_WINDOWS_PREFIX="$qt" -DWAGEMILL_HOST_TOOLS="$(realpath "$tools")" -DWAGEMILL_TESTS=$tests
cd build/windows
rm -rf wagemill-* _CPack_Packages files
(cd app && cpack -B .. >cpack.log) || { cat app/cpack.log >&2; exit 1; }
rm -rf _CPack_Packages
cmake --install app --component program --strip --prefix files >/dev/null
# Files first, then the folders that are empty by then.
(cd files && find . -type f -printf 'Delete "$INSTDIR\\%P"\n' && find . -mindepth 1 -depth -type d -printf 'RMDir "$INSTDIR\\%P"\n') |
    tr / '\\' >removal.nsh
name=$(basename wagemill-*-windows-x64.zip .zip)
version=${name#wagemill-}
makensis -V2 -DVERSION="${version%%-*}" -DFILES="$PWD/files" -DREMOVAL="$PWD/removal.nsh" -DOUTPUT="$PWD/$name-setup.exe" \
    -DICON="$root/resources/icon/wagemill.ico" "$root/packaging/windows/wagemill.nsi"
sha256sum "$name.zip" "$name-setup.exe" >SHA256SUMS
stat -c '%n: %s bytes' "$name.zip" "$name-setup.exe"
