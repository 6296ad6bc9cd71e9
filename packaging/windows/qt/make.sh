#!/usr/bin/env bash
# make.sh [FOLDER_OR_ARCHIVE]: prints the folder of a Qt for Windows that the program can be built with. It is
# kept in the user's cache, and made when there is none of this machine's version of Qt and the options in
# "flags": from what is given, where that is one of these, else from Debian's sources, which takes two
# processors a quarter of an hour.
# make.sh --kept: prints the folder only if nothing has to be made, and fails otherwise.
set -euo pipefail
here=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
cd "$here/../../.."
source packaging/debian-packages.sh
source packaging/windows/qt/sources.sh

# The tools of the build are this machine's, so the libraries must be of their version.
package=$(dpkg-query --show --showformat='${source:Version}' qt6-base-dev 2>/dev/null || true)
version=${package%%+*}
hash_of()
{
    cat "$@" | sha256sum | cut --characters=1-16
}
kept=${XDG_CACHE_HOME:-$HOME/.cache}/tovan-network-monitor/windows-qt-$version-$(hash_of "$here/flags")
plugins=$(hash_of "$here"/svg/*)

# is_ours FOLDER: whether it is a Qt of this version and these options.
is_ours()
{
    cmp --silent "$1/tovan-flags" "$here/flags" \
        && grep --quiet "PACKAGE_VERSION \"$version\"" "$1/lib/cmake/Qt6/Qt6ConfigVersionImpl.cmake"
}
has_plugins()
{
    [[ -e $1/tovan-svg && $(<"$1/tovan-svg") == "$plugins" ]]
}

if [[ ${1:-} == --kept ]]; then
    if [[ -z $version ]] || ! is_ours "$kept" || ! has_plugins "$kept"; then
        exit 1
    fi
    echo "$kept"
    exit
fi

exec {output}>&1 >&2 # whatever else is said
install_missing_packages "${windows_qt_packages[@]}"
if [[ -z $version ]]; then
    exec "$here/make.sh" "$@" >&"$output" # it is known now
fi
mkdir --parents "${kept%/*}"
scratch=$(mktemp --directory "${kept%/*}/making.XXXXXX")
trap 'rm --recursive --force "$scratch"' EXIT

# take FOLDER_OR_ARCHIVE: puts it into the scratch folder, if it is ours.
take()
{
    local folder
    if [[ -d $1 ]]; then
        cp --recursive --no-target-directory "$1" "$scratch/given"
    else
        mkdir "$scratch/given"
        tar --extract --file="$1" --directory="$scratch/given"
    fi
    folder=$(find "$scratch/given" -maxdepth 2 -name tovan-flags -printf %h)
    if [[ -z $folder ]] || ! is_ours "$folder"; then
        echo "$1 is of another version or of other options: Qt is made anew."
        return 1
    fi
    mv --no-target-directory "$folder" "$scratch/qt"
}

make_qt()
{
    echo "Making Qt $version for Windows, once for all builds with it"
    fetch_source qt6-base "$package" "$scratch/qtbase"
    local flags
    mapfile -t flags <"$here/flags"
    cmake -G Ninja -S "$scratch/qtbase" -B "$scratch/qtbase-build" "${flags[@]}" "${cross[@]}" \
        -DCMAKE_INSTALL_PREFIX="$scratch/qt"
    cmake --build "$scratch/qtbase-build"
    cmake --install "$scratch/qtbase-build" --strip
    cp "$here/flags" "$scratch/qt/tovan-flags"
}

make_plugins()
{
    echo "Making Qt's SVG plug-ins"
    fetch_source qtsvg-opensource-src "" "$scratch/qtsvg"
    patch --directory="$scratch/qtsvg" --strip=1 --silent <"$here/svg/to-qt6.patch"
    cmake -G Ninja -S "$here/svg" -B "$scratch/qtsvg-build" -DCMAKE_BUILD_TYPE=Release "${cross[@]}" \
        -DCMAKE_PREFIX_PATH="$kept" -DCMAKE_FIND_ROOT_PATH="$kept" -DTOVAN_SVG_SOURCES="$scratch/qtsvg"
    cmake --build "$scratch/qtsvg-build"
    cmake --install "$scratch/qtsvg-build" --prefix "$kept" --strip
    # For the notices of those who hand the plug-ins out.
    cp "$scratch/qtsvg/debian/copyright" "$kept/tovan-svg-copyright"
    dpkg-parsechangelog --file "$scratch/qtsvg/debian/changelog" --show-field Version \
        | sed 's/^/qtsvg-opensource-src /' >"$kept/tovan-svg-source"
    echo "$plugins" >"$kept/tovan-svg"
}

# No file names the folder that it was made in.
map=-ffile-prefix-map=$scratch/=
hosts=/usr/lib/$(dpkg-architecture --query DEB_HOST_MULTIARCH)/cmake
cross=(-DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/mingw-w64.cmake" -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=BOTH
    -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR="$hosts" -DQt6HostInfo_DIR="$hosts/Qt6HostInfo"
    -DCMAKE_C_FLAGS="$map" -DCMAKE_CXX_FLAGS="$map")
if ! is_ours "$kept"; then
    rm --recursive --force "$kept"
    if [[ -z ${1:-} ]] || ! take "$1"; then
        make_qt
    fi
    mv --no-target-directory "$scratch/qt" "$kept"
fi
has_plugins "$kept" || make_plugins
echo "$kept" >&"$output"
