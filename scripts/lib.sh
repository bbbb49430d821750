# Shared by the scripts: installs what is missing from Debian's packages and
# configures the build. Source it; do not run it.

TOLVIK_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
TOLVIK_BUILD="${TOLVIK_BUILD:-$TOLVIK_ROOT/build}"
# The reader, the CLI, the non-GUI tests and the fuzz targets, built by clang
# under AddressSanitizer and UBSan (scripts/test runs its tests, scripts/fuzz
# its fuzzers).
TOLVIK_SANITIZED_BUILD="${TOLVIK_SANITIZED_BUILD:-$TOLVIK_ROOT/build-asan}"
TOLVIK_SANITIZER_PACKAGES=(clang libclang-rt-14-dev)

# What building, running and testing need.
TOLVIK_PACKAGES=(
    g++ cmake ninja-build
    qt6-base-dev qt6-base-dev-tools
    libexempi-dev pkgconf     # culling marks in XMP sidecars; CMake finds Exempi with pkg-config
    libimage-exiftool-perl    # the tests cross-check values with exiftool
    fonts-dejavu-core
    poppler-utils             # the report tests read the PDF back
    desktop-file-utils        # the tests validate the desktop entry
    appstream                 # ... and the AppStream metadata
    help2man                  # the manual pages, made from the programs' --help
    bubblewrap                # the thumbnailer test runs it as GNOME's sandbox
    bash-completion           # the test of tolvik-info's completion
    dcraw libraw-bin          # the raw decoder's test compares its values with theirs
    mate-backgrounds          # a photograph (nature/Garden.jpg, 2560 x 1600) for the test pictures
)

ensure_packages() {
    local missing=()
    for pkg in "$@"; do
        dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed" ||
            missing+=("$pkg")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing: ${missing[*]}"
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

configure_and_build() {
    cmake -S "$TOLVIK_ROOT" -B "$TOLVIK_BUILD" -G Ninja -DCMAKE_BUILD_TYPE=Release "$@"
    cmake --build "$TOLVIK_BUILD" -j"$(nproc)"
}

# Configures the sanitized build; build the targets with cmake --build.
configure_sanitized() {
    CC=clang CXX=clang++ cmake -S "$TOLVIK_ROOT" -B "$TOLVIK_SANITIZED_BUILD" -G Ninja \
        -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTOLVIK_BUILD_APP=OFF -DTOLVIK_SANITIZE=ON \
        -DTOLVIK_BUILD_FUZZ=ON "$@"
}
