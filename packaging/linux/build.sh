#!/usr/bin/env bash
# Builds the .deb and the .rpm, and lets the checkers of both kinds look at them. Leaves them in build/linux.
set -euo pipefail
cd "$(dirname "$0")/../.."
source scripts/packages.sh
requirePackages "${buildPackages[@]}" "${packagingPackages[@]}"

mkdir -p build/linux
echo "Building the packages ..."
buildProgram build/linux/app -DCMAKE_BUILD_TYPE=Release -DWAGEMILL_TESTS=OFF
rm -f build/linux/*.deb build/linux/*.rpm
for kind in DEB RPM; do
    (cd build/linux/app && cpack -G "$kind" -B .. >"cpack-$kind.log" 2>&1) ||
        { cat "build/linux/app/cpack-$kind.log" >&2; exit 1; }
done
rm -rf build/linux/_CPack_Packages

desktop-file-validate build/linux/app/packaging/wagemill.desktop
appstreamcli validate --pedantic --no-net build/linux/app/packaging/*.metainfo.xml
lintian --fail-on error,warning build/linux/*.deb
rpm -qp --requires build/linux/*.rpm >/dev/null
stat -c '%n: %s bytes' build/linux/*.deb build/linux/*.rpm
