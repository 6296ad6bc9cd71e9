# shellcheck shell=bash
# How sources of Debian's packages are got. Sourced, not run.

# fetch_source PACKAGE VERSION FOLDER: unpacks a package's sources, the newest where no version is named.
# This machine's apt need not know of sources, and does not afterwards.
fetch_source()
{
    local folder file apt
    folder=$(mktemp --directory)
    mkdir --parents "$folder/parts" "$folder/lists/partial"
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [[ ! -s $file ]] || sed 's/^deb /deb-src /' "$file" >"$folder/parts/${file##*/}.list"
    done
    for file in /etc/apt/sources.list.d/*.sources; do
        [[ ! -s $file ]] || sed 's/^Types:.*/Types: deb-src/' "$file" >"$folder/parts/${file##*/}"
    done
    # What is fetched is signed, whoever runs this; so it may be a folder that only they can read.
    apt=(apt-get -qq -o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$folder/parts"
        -o Dir::State::Lists="$folder/lists" -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache=
        -o APT::Sandbox::User="$(id --user --name)")
    "${apt[@]}" update || echo "Some of apt's sources could not be read: using the others."
    (cd "$folder" && "${apt[@]}" source --download-only "$1${2:+=$2}")
    dpkg-source --no-check --extract "$folder"/*.dsc "$3" >/dev/null
    rm --recursive "$folder"
}
