# Sourced by the scripts of this project: which Debian packages each task needs, and how missing ones are installed.

readonly buildPackages=(g++ cmake ninja-build qt6-base-dev libgl1-mesa-dev libsqlite3-dev fonts-liberation)
readonly desktopPackages=(xvfb openbox xdotool imagemagick dbus at-spi2-core python3 python3-pyatspi)
readonly testPackages=(libgtest-dev python3)
readonly packagingPackages=(dpkg-dev rpm lintian desktop-file-utils appstream)
readonly benchmarkPackages=(libbenchmark-dev valgrind)
readonly judgePackages=(libreoffice-calc python3-uno gnumeric poppler-utils)
readonly windowsBuildPackages=(g++-mingw-w64-x86-64-posix mingw-w64-tools qt6-base-dev-tools nsis cmark-gfm python3)
readonly windowsTestPackages=(wine wine64 googletest xvfb xauth openbox xdotool imagemagick dbus python3)

# missingPackages NAME...: those that are not installed, one a line.
missingPackages() {
    local package
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || echo "$package"
    done
}

# requirePackages NAME...: installs those that are missing; as root, or through sudo.
requirePackages() {
    local missing=()
    mapfile -t missing < <(missingPackages "$@")
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing: ${missing[*]}"
    local asRoot=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "These packages are missing, and neither root nor sudo is at hand: ${missing[*]}" >&2; return 1; }
        asRoot=(sudo)
    fi
    "${asRoot[@]}" apt-get update -qq &&
        "${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null ||
        { echo "The packages could not be installed: ${missing[*]}" >&2; return 1; }
}

# buildPreset PRESET CMAKE_OPTION...: configures and builds all of a preset, or WAGEMILL_TARGET alone; what went wrong is
# shown whole.
buildPreset() {
    local preset=$1 log=build/$1.log
    shift
    mkdir -p build
    command -v ccache >/dev/null && export CMAKE_CXX_COMPILER_LAUNCHER=ccache
    cmake --preset "$preset" "$@" >"$log" 2>&1 &&
        cmake --build --preset "$preset" ${WAGEMILL_TARGET:+--target "$WAGEMILL_TARGET"} >>"$log" 2>&1 ||
        { cat "$log" >&2; echo "Building the preset \"$preset\" failed." >&2; return 1; }
}
