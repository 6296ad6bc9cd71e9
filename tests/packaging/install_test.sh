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
expect "the desktop entry's icon is there" \
    test -s "$root/share/icons/hicolor/scalable/apps/$(sed --quiet 's/^Icon=//p' "$entry").svg"

exit "$((failures > 0))"
