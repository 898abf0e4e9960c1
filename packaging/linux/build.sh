#!/usr/bin/env bash
# Builds the .deb and the .rpm, and lets the checkers of both kinds look at them. Leaves them in build/linux.
set -euo pipefail
cd "$(dirname "$0")/../.."
source scripts/packages.sh
requirePackages "${buildPackages[@]}" "${packagingPackages[@]}"

mkdir -p build/linux
echo "Building the packages ..."
buildPreset release
rm -f build/linux/*.deb build/linux/*.rpm
for kind in DEB RPM; do
    (cd build/release && cpack -G "$kind" -B ../linux >"cpack-$kind.log" 2>&1) ||
        { cat "build/release/cpack-$kind.log" >&2; exit 1; }
done
rm -rf build/linux/_CPack_Packages

desktop-file-validate build/release/packaging/wagemill.desktop
appstreamcli validate --pedantic --no-net build/release/packaging/*.metainfo.xml
lintian --fail-on error,warning build/linux/*.deb
rpm -qp --requires build/linux/*.rpm >/dev/null
stat -c '%n: %s bytes' build/linux/*.deb build/linux/*.rpm
