# shellcheck shell=bash
# Debian roots that hold nothing, to try in them what must not depend on this machine. Sourced, not
# run, after debian-packages.sh.

# Says why no root can be made here, and ends, where that is so.
require_empty_roots()
{
    if ((EUID != 0)) || ! unshare --mount true; then
        echo "An empty root can be made by root alone, on a machine that lets it." >&2
        exit 1
    fi
    install_missing_packages mmdebstrap
}

# make_root FOLDER [RELEASE]: with what this machine's apt is told of where packages come from and how
# they are fetched, and with the lists of packages. The release of Debian is this machine's unless
# another one is named. Nothing in it has to outlive a crash, so dpkg waits for no disk.
make_root()
{
    local here release sources=() configuration
    here=$(sed --quiet 's/^VERSION_CODENAME=//p' /etc/os-release)
    release=${2:-$here}
    configuration=$(mktemp --directory)
    local file
    while IFS= read -rd '' file; do
        sed "s/\\b$here\\b/$release/g" "$file" >"$configuration/${file##*/}"
        sources+=("$configuration/${file##*/}")
    done < <(find /etc/apt -maxdepth 2 -type f -size +0 \
        \( -path '/etc/apt/sources.list' -o -path '/etc/apt/sources.list.d/*.list' \
        -o -path '/etc/apt/sources.list.d/*.sources' \) -print0)
    apt-config dump --format '%F "%v";%n' | grep '^Acquire::' \
        | grep --invert-match '^Acquire::IndexTargets' >"$configuration/apt.conf" || true
    mmdebstrap --quiet --variant=minbase --format=directory --aptopt="$configuration/apt.conf" \
        --dpkgopt=force-unsafe-io --skip=cleanup/apt/lists \
        "$release" "$1" "${sources[@]}"
    rm --recursive "$configuration"
}

# in_root ROOT COMMAND...: runs it with mounts and processes of its own, which end with it.
in_root()
{
    # shellcheck disable=SC2016 # expanded inside
    unshare --mount --pid --fork --kill-child \
        env --ignore-environment PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8 \
        bash -euc '
            root=$1
            mount --types proc proc "$root/proc"
            mount --rbind /sys "$root/sys"
            mount --rbind /dev "$root/dev"
            exec chroot "$@"' - "$@"
}

# copy_root FROM TO: never what is mounted in it.
copy_root()
{
    cp --archive --one-file-system "$1" "$2"
}

# install_in ROOT PACKAGE...
install_in()
{
    # shellcheck disable=SC2016
    in_root "$1" sh -euc 'DEBIAN_FRONTEND=noninteractive apt-get -qq install --yes \
        --no-install-recommends "$@" >/dev/null' - "${@:2}"
}

# build_dependencies_in ROOT FOLDER: of the Debian source package that is unpacked there.
build_dependencies_in()
{
    # shellcheck disable=SC2016
    in_root "$1" sh -euc 'DEBIAN_FRONTEND=noninteractive apt-get -qq build-dep --yes \
        --no-install-recommends "$1" >/dev/null' - "$2"
}

# remove_root FOLDER: likewise.
remove_root()
{
    rm --recursive --force --one-file-system "$1"
}
