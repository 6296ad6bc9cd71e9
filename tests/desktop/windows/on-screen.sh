#!/usr/bin/env bash
# on-screen.sh LIBRARIES TEST...: runs a test for Windows in Wine on a desktop of Wine's own, with a task bar
# and its tray, on a virtual screen; LIBRARIES are folders where it finds its own, parted by commas. Its
# network has the loopback and a cable from 192.0.2.1 to nowhere, on which nothing is sent by itself.
set -euo pipefail
# shellcheck source=packaging/windows/wine-screen.sh
source "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/../../../packaging/windows/wine-screen.sh"
libraries=$1
shift

# The desktop that is called "shell" has the task bar. Windows' fonts are replaced by one that has all glyphs.
cat >"$scratch/desktop.reg" <<END
Windows Registry Editor Version 5.00

[HKEY_CURRENT_USER\\Environment]
"PATH"="${libraries//,/;}"
[HKEY_CURRENT_USER\\Software\\Wine\\Explorer]
"Desktop"="shell"
[HKEY_CURRENT_USER\\Software\\Wine\\Explorer\\Desktops]
"shell"="1600x1000"
[HKEY_CURRENT_USER\\Software\\Wine\\Fonts\\Replacements]
"Segoe UI"="DejaVu Sans"
"MS Shell Dlg 2"="DejaVu Sans"
END

as_root=()
((EUID == 0)) || as_root=(--map-root-user)
# The screen is not in the network: X servers tell which numbers are taken by names that a network has for
# itself.
# shellcheck disable=SC2016 # expanded inside
unshare --net "${as_root[@]}" bash -euc '
    ip link set lo up
    # Without IPv6 the kernel sends nothing there of itself.
    echo 1 >/proc/sys/net/ipv6/conf/default/disable_ipv6
    ip link add name near type veth peer name far
    ip address add 192.0.2.1/24 dev near
    ip link set near up
    ip link set far address 02:00:00:00:00:02 up
    ip neighbour add 192.0.2.2 lladdr 02:00:00:00:00:02 dev near
    wine regedit /S "$1" 2>/dev/null
    shift
    wine "$@" 2>/dev/null' - "$scratch/desktop.reg" "$@"
