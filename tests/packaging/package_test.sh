#!/usr/bin/env bash
# package_test.sh [RELEASE]
# Makes the release of this commit and does with its package what Debian and its users do: looks for
# what the policy forbids, installs, starts, upgrades and purges it. All in empty roots of this
# machine's release of Debian, or of the one that is named.
set -euo pipefail
source tests/packaging/expect.sh
source packaging/debian-packages.sh
source packaging/empty-root.sh
scratch=$(mktemp --directory)
trap 'remove_root "$scratch"' EXIT
name=tovan-network-monitor
home=/usr/lib/$name
started=$SECONDS

say()
{
    printf '[%3d s] %s\n' $((SECONDS - started)) "$1"
}

require_empty_roots
make_root "$scratch/base" "$@"
root=$scratch/root
copy_root "$scratch/base" "$root"
say "Empty roots are there"

# The release is made of what is committed, and of nothing else.
git clone --quiet --no-hardlinks . "$scratch/source"
export GIT_COMMITTER_NAME=somebody GIT_COMMITTER_EMAIL=somebody@localhost
(cd "$scratch/source" && packaging/release --root "$scratch/base" --tag)
say "The release is made"
release=$(echo "$scratch/source/build/release"-*)
version=${release##*-}
package=$(cd "$release" && echo "${name}_"*.deb)
expect "the checksums are those of the files" \
    env --chdir="$release" sha256sum --check --quiet SHA256SUMS
expect "the commit has the version's tag" \
    test "$(git -C "$scratch/source" describe --exact-match)" = "v$version"
expect "a release is made once" \
    test "$(cd "$scratch/source" && packaging/release --tag 2>&1)" = "There is a tag v$version already."
touch "$scratch/source/forgotten"
expect "a release has nothing that is not committed" \
    grep --quiet "not committed" <<<"$(cd "$scratch/source" && packaging/release 2>&1)"

# What the compiler and the linker left.
expect "the build kept to the flags of the distribution" blhc --all "$release/build.log"
dpkg-deb --extract "$release/$package" "$scratch/package"
dpkg-deb --extract "$(echo "$release/$name-dbgsym_"*.deb)" "$scratch/symbols"
program=$scratch/package$home/$name
expect "the program has the protections of the distribution" \
    hardening-check --quiet --nocfprotection "$program"
id=$(readelf --notes "$program" | sed --quiet 's/.*Build ID: //p')
expect "the symbols for a debugger are those of the program" \
    test -s "$scratch/symbols/usr/lib/debug/.build-id/${id:0:2}/${id:2}.debug"

# What Debian says of it: nothing, but for what debian/ says why.
mkdir "$root/release"
cp "$release"/* "$root/release/"
install_in "$root" lintian
tags=0
in_root "$root" sh -euc \
    'cd /release && lintian --allow-root -EvIL +pedantic --fail-on error,warning,info ./*.changes' \
    >"$scratch/lintian" 2>&1 || tags=$?
if ((tags > 0)) || grep --extended-regexp '^[EWIPXC]: ' "$scratch/lintian"; then
    cat "$scratch/lintian"
    expect "nothing in it is against Debian's policy" false
fi
say "lintian has looked"

everything_in()
{
    # What apt, dpkg and groupadd keep for themselves changes by every installation.
    find "$root" -xdev \( -path "$root/var/cache" -o -path "$root/var/lib/apt" -o -path "$root/var/log" \
        -o -path "$root/var/lib/dpkg" -o -path "$root/tmp" -o -path "$root/etc/*-" \) -prune \
        -o \( -type d -printf '%p %M %u %g\n' \) -o -printf '%p %M %u %g %s %l\n' | sort
}
# shellcheck disable=SC2317 # called by expect
dpkg_in_root()
{
    in_root "$root" dpkg "$@" >/dev/null
}
dpkg-deb --raw-extract "$release/$package" "$scratch/older"
sed --in-place 's/^Version: .*/&~older/' "$scratch/older/DEBIAN/control"
dpkg-deb --build "$scratch/older" "$root/release/older.deb" >/dev/null
# Its dependencies come by a package without files and stay, so that what else is left is its own.
mkdir --parents "$scratch/dependencies/DEBIAN"
sed "s/^Package: .*/&-dependencies/" "$scratch/older/DEBIAN/control" \
    >"$scratch/dependencies/DEBIAN/control"
dpkg-deb --build "$scratch/dependencies" "$root/release/dependencies.deb" >/dev/null
install_in "$root" libcap2-bin /release/dependencies.deb
everything_in >"$scratch/before"
expect "an older one can be installed" dpkg_in_root --install /release/older.deb

# The administrator's commands, as README.Debian has them.
# commands FROM TO: those between the two lines, which begin with these texts.
commands()
{
    sed --quiet "/^$1/,/^$2/s/^    //p" debian/README.Debian
}
expect "an administrator can give the powers to a group" \
    in_root "$root" sh -euc "$(commands "An administrator" "What that gives")"
# shellcheck disable=SC2317 # these are called by expect
{
    is_for_the_group()
    {
        [[ $(in_root "$root" stat --format '%U:%G %a' "$home/$name") == root:netmonitor\ 750 ]]
    }
    has_capabilities()
    {
        [[ -n $(in_root "$root" getcap "$home/$name") ]]
    }
    has_no_capabilities()
    {
        ! has_capabilities
    }
}
expect "the powers are given" has_capabilities
expect "the program is the group's alone" is_for_the_group
expect "it can be upgraded" dpkg_in_root --install "/release/$package"
expect "the program is still the group's alone" is_for_the_group
expect "the upgrade has dropped the powers" has_no_capabilities
expect "the administrator can give them again" in_root "$root" sh -euc \
    "$(commands "An administrator" "What that gives" | sed --quiet '/setcap/,$p')"
expect "the powers are given again" has_capabilities
expect "an administrator can take everything back" \
    in_root "$root" sh -euc "$(commands "To take everything" "To start")"
expect "nobody has the powers" has_no_capabilities
expect "the program is everybody's" \
    test "$(in_root "$root" stat --format '%U:%G %a' "$home/$name")" = "root:root 755"

expect "it can be installed once more" dpkg_in_root --install "/release/$package"
expect "it can be purged" dpkg_in_root --purge "$name"
everything_in >"$scratch/after"
expect "nothing of it is left behind" diff "$scratch/before" "$scratch/after"
say "It has been installed, upgraded and purged"

install_in "$root" autopkgtest
expect "the installed program can be used" in_root "$root" sh -euc "cd /release
    autopkgtest --no-built-binaries --output-dir /tmp/result $package ./*.dsc -- null"
say "It has been started"

exit "$((failures > 0))"
