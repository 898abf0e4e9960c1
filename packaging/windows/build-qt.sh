#!/usr/bin/env bash
# Builds the part of Qt 6 that Wagemill uses for 64-bit Windows, static, from Debian's own source package.
# usage: packaging/windows/build-qt.sh PREFIX [WORKFOLDER]    (about 15 minutes on two cores; needs a deb-src entry)
set -euo pipefail
prefix=$(realpath -m "${1:?usage: build-qt.sh PREFIX [WORKFOLDER]}")
cd "$(dirname "$0")/../.."
source scripts/packages.sh
work=$(realpath -m "${2:-build/windows/qt-build}")
toolchain=$PWD/cmake/mingw-w64.cmake

requirePackages "${buildPackages[@]}" "${windowsBuildPackages[@]}" dpkg-dev xz-utils perl python3 patch
mkdir -p "$work"
cd "$work"
if ! compgen -G 'qt6-base_*.orig.tar.*' >/dev/null && ! apt-get source --download-only -q qt6-base; then
    echo "The source of Qt cannot be fetched: add deb-src beside deb in the apt sources, run apt-get update, start again." >&2
    exit 1
fi
rm -rf source build
mkdir source
tar xf qt6-base_*.orig.tar.* -C source --strip-components=1
tar xf qt6-base_*.debian.tar.* -C source
# Debian's fixes; two of its patches are for the layout of its own packages.
(cd source && grep -vE '^(#|$)|cross.patch|build_path' debian/patches/series |
    while read -r patch; do patch -p1 -s <"debian/patches/$patch"; done)

# Tablet events need a header that Debian's source leaves out; DirectWrite does not link without Direct2D in this version.
left_out=(sql network dbus opengl concurrent xml zstd system_zlib direct2d vulkan tabletevent directwrite directwrite3)
options=("${left_out[@]/#/-DFEATURE_}")
options=("${options[@]/%/=OFF}")
# Neither the folder of this build nor that of the result is in the program afterwards.
cmake -S source -B build -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_INSTALL_PREFIX=/qt-windows \
    -DCMAKE_C_FLAGS="-ffile-prefix-map=$work/source=qt" -DCMAKE_CXX_FLAGS="-ffile-prefix-map=$work/source=qt" \
    -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR="/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)/cmake" \
    -DCMAKE_BUILD_TYPE=MinSizeRel -DBUILD_SHARED_LIBS=OFF -DQT_BUILD_TESTS=OFF -DQT_BUILD_EXAMPLES=OFF \
    -DFEATURE_testlib=ON -DINPUT_opengl=no "${options[@]}"
cmake --build build
cmake --install build --prefix "$prefix"
echo "Qt for Windows is in $prefix"
