# shellcheck shell=bash
# The Debian packages that ./run, ./test, bench/ and fuzz/ need, one name a line, and how they are installed.
# Sourced, not run.

# To build the program and to start it on a desktop.
# shellcheck disable=SC2034 # used by those that source this
program_packages=(
    cmake
    fonts-dejavu-core # has every glyph that the pages show
    g++
    libglib2.0-dev # reads the desktop's entries
    libqt6svg6 # the plug-in that draws the images, loaded at run time
    libx11-dev # with the next one, for the trays of X11 desktops
    libxcb1-dev
    ninja-build
    pkg-config
    qt6-base-dev
    qt6-wayland
)

# To start it on a machine without a display.
# shellcheck disable=SC2034
virtual_screen_packages=(
    imagemagick
    inotify-tools
    openbox
    xdotool
    xvfb
)

# To build the benchmarks.
# shellcheck disable=SC2034
benchmark_packages=(
    libbenchmark-dev
    libxcb-damage0-dev
    libxcb-res0-dev
)

# To measure the whole program on a desktop, beside those of other desktops.
# shellcheck disable=SC2034
program_bench_packages=(
    dbus-daemon
    gnome-system-monitor
    iproute2
    openbox
    strace # counts what is written
    xfce4-taskmanager
    xvfb
)

# To let the window tick for a day's worth.
# shellcheck disable=SC2034
soak_packages=(
    "${program_packages[@]}"
    "${benchmark_packages[@]}"
    iproute2
    xvfb
)

# To build the harnesses of fuzz/ and to run them.
# shellcheck disable=SC2034
fuzz_packages=(
    "${program_packages[@]}"
    clang
    libclang-rt-dev # the fuzzer and the sanitizers
    llvm # names the functions in what they report
)

# To build and to run the tests, which use the virtual screen too.
# shellcheck disable=SC2034
test_packages=(
    "${program_packages[@]}"
    "${virtual_screen_packages[@]}"
    "${benchmark_packages[@]}" # so that their sources are checked like all others
    appstream
    blhc # with mmdebstrap, for the package's own test
    clang # compiles everything once more on the server
    clang-format
    clang-tidy
    dbus-daemon
    desktop-file-utils
    devscripts # checks how the program is hardened
    diffoscope-minimal # tells how two builds of the package differ
    g++-mingw-w64-x86-64 # builds the Windows backend, which Wine runs
    iproute2
    libclang-rt-dev # the sanitizers' headers, for the sources of fuzz/
    libclang-dev # with llvm-dev, for the plug-in that the sources are checked with
    libgtest-dev # its sources, for the Windows backend's tests
    librsvg2-bin # draws the icons that are installed
    libice-dev # with libsm-dev, for a session manager of the tests
    libsm-dev
    llvm-dev
    mandoc
    mmdebstrap
    procps
    qt6-base-private-dev # switches on what screen readers hear, without one
    shellcheck
    weston # a Wayland compositor that runs on an X server
    wine
    wine64
    x11-xserver-utils # xrandr, which parts a virtual screen into monitors
)

# To build a Qt for Windows.
# shellcheck disable=SC2034
windows_qt_packages=(
    cmake
    dpkg-dev # unpacks Debian's sources
    g++-mingw-w64-x86-64
    ninja-build
    patch
    perl # makes the toolkit's headers
    qt6-base-dev # the tools that run here
    xz-utils
)

# To build the program for Windows, to try it and to pack it.
# shellcheck disable=SC2034
windows_packages=(
    "${windows_qt_packages[@]}"
    fonts-dejavu-core
    iproute2
    libgtest-dev
    nsis # makes the installer
    wine
    wine64
    xvfb
    zip
)

# Installs those of the named packages that are missing, as root or through sudo.
install_missing_packages()
{
    if ! command -v dpkg-query apt-get >/dev/null; then
        echo "This is no Debian system: packages are left to you ($*)."
        return
    fi
    local package missing=()
    for package in "$@"; do
        # Unknown packages have no line at all; removed ones say "deinstall" or "config-files".
        if [[ "$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null)" \
            != installed ]]; then
            missing+=("$package")
        fi
    done
    if ((${#missing[@]} == 0)); then
        return
    fi

    local as_root=()
    if ((EUID != 0)); then
        if sudo --non-interactive true 2>/dev/null; then
            as_root=(sudo --non-interactive)
        elif command -v sudo >/dev/null && [[ -t 0 ]]; then
            as_root=(sudo) # its own question for the password is the only one there can be
        else
            echo "Missing, and to be installed by root: ${missing[*]}" >&2
            return 1
        fi
    fi
    echo "Installing what is missing: ${missing[*]}"
    local apt=(env DEBIAN_FRONTEND=noninteractive apt-get -qq -o Dpkg::Use-Pty=0
        -o DPkg::Lock::Timeout=300)
    "${as_root[@]}" "${apt[@]}" update \
        || echo "The package lists could not be brought up to date: using those there are."
    "${as_root[@]}" "${apt[@]}" install --yes --no-install-recommends "${missing[@]}" </dev/null
}
