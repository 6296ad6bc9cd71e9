#!/usr/bin/env bash
# install_test.sh BUILD_FOLDER
# Installs into an empty folder and looks for what a desktop needs to offer and start the program.
set -euo pipefail
source tests/packaging/expect.sh
root=$(mktemp --directory)
trap 'rm -r "$root"' EXIT

cmake --install "$1" --prefix "$root" >/dev/null

command=$root/bin/tovan-network-monitor
program=$(readlink --canonicalize "$command")
expect "the command is a link that can be moved with its folder" \
    test "$(readlink "$command")" = ../lib/tovan-network-monitor/tovan-network-monitor
expect "the command leads to the program" test -x "$program"
for image in tovan-wordmark.svg tovan-site-icon.svg; do
    expect "the program finds $image beside itself" test -s "$(dirname "$program")/assets/$image"
done

entry=$root/share/applications/tovan-network-monitor.desktop
expect "the desktop entry is valid" desktop-file-validate "$entry"
expect "the desktop entry starts the command" \
    test -x "$root/bin/$(sed --quiet 's/^Exec=//p' "$entry")"
icon=$(sed --quiet 's/^Icon=//p' "$entry")
expect "the desktop entry's icon is there" \
    test -s "$root/share/icons/hicolor/scalable/apps/$icon.svg"
for size in 16 22 24 32 48 64 128 256; do
    expect "the icon is drawn at $size pixels" \
        test "$(identify -format %wx%h "$root/share/icons/hicolor/${size}x$size/apps/$icon.png")" \
        = "${size}x$size"
done

autostart=$root/share/doc/tovan-network-monitor/examples/tovan-network-monitor-autostart.desktop
expect "the example of an autostart entry is valid" desktop-file-validate "$autostart"
expect "nothing is started at login by itself" test ! -e "$root/etc/xdg/autostart"
metainfo=$root/share/metainfo/org.tovan.networkmonitor.metainfo.xml
expect "the metainfo is valid" appstreamcli validate --no-net --pedantic --strict "$metainfo"
page=$root/share/man/man1/tovan-network-monitor.1
expect "the manual page has no fault" test -z "$(mandoc -T lint -W style "$page" 2>&1)"
expect "the manual page tells the version" \
    grep --quiet "Tovan Network Monitor $(sed --quiet 's/^project(.*VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)" "$page"

# What makes a mistake harder to use: as the linker and the compiler left it in the program.
expect "the program is linked and compiled with the protections there are" \
    hardening-check --quiet --nocfprotection "$program"
# shellcheck disable=SC2317 # called by expect
marks_where_calls_may_go()
{
    [[ $(uname --machine) != x86_64 ]] || (($(objdump --disassemble "$1" | grep --count endbr64) > 100))
}
expect "calls through pointers go only where they may" marks_where_calls_may_go "$program"

xargs rm <"$1/install_manifest.txt"
expect "all of it can be taken away again" test -z "$(find "$root" ! -type d)"
exit "$((failures > 0))"
