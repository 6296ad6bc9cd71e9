#!/usr/bin/env bash
# package_test.sh
# Makes the release of this commit and does with its package what Debian and its users do: looks for
# what the policy forbids, installs, starts, upgrades and purges it.
set -euo pipefail
source tests/packaging/expect.sh
source packaging/debian-packages.sh
source packaging/empty-root.sh
scratch=$(mktemp --directory)
trap 'remove_root "$scratch"' EXIT

# The release is made of what is committed.
git clone --quiet --no-hardlinks . "$scratch/source"
(cd "$scratch/source" && packaging/release)
release=$(echo "$scratch"/source/build/release-*)
changes=$(cd "$release" && echo *.changes)
package=$(cd "$release" && echo tovan-network-monitor_*.deb)
expect "the symbols for a debugger are a package of their own" \
    test -s "$(echo "$release"/tovan-network-monitor-dbgsym_*.deb)"
expect "the build kept to the flags of the distribution" blhc --all "$release/build.log"

root=$scratch/root
make_root "$root"
mkdir "$root/release"
cp "$release"/* "$root/release/"
cp --recursive "$scratch/source/debian" "$root/release/debian"

install_in "$root" lintian
expect "nothing in it is against Debian's policy" in_root "$root" sh -euc \
    'cd /release && lintian --allow-root -EvIL +pedantic --fail-on error,warning,info '"$changes"

everything_in()
{
    # What apt and dpkg keep for themselves changes by every installation.
    find "$root" -xdev \( -path "$root/var/cache" -o -path "$root/var/lib/apt" -o -path "$root/var/log" \
        -o -path "$root/var/lib/dpkg" -o -path "$root/release" -o -path "$root/tmp" \) -prune -o -print | sort
}
# shellcheck disable=SC2317 # called by expect
install_dependencies()
{
    install_in "$root" "/release/$package"
    in_root "$root" dpkg --purge tovan-network-monitor
}
expect "it can be installed and purged" install_dependencies
everything_in >"$scratch/before"
for what in installed "installed once more" upgraded; do
    expect "it can be $what" in_root "$root" dpkg --install "/release/$package"
done
expect "it can be purged" in_root "$root" dpkg --purge tovan-network-monitor
everything_in >"$scratch/after"
expect "nothing of it is left behind" diff "$scratch/before" "$scratch/after"

install_in "$root" autopkgtest
expect "the installed program can be used" in_root "$root" sh -euc \
    'cd /release && autopkgtest --apt-upgrade --output-dir /tmp/result ./*.dsc '"$package"' -- null'

exit "$((failures > 0))"
