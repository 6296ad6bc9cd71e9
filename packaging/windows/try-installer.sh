#!/usr/bin/env bash
# try-installer.sh SETUP: installs in Wine without a question, starts what was installed until it has saved,
# takes it away again, and fails where anything is left of it but the settings.
set -euo pipefail
setup=$(readlink -f "$1")
# shellcheck source=packaging/windows/wine-screen.sh
source "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/wine-screen.sh"

fail()
{
    echo "The installer: $1" >&2
    exit 1
}
# Runs a program of Windows to its end.
run()
{
    timeout 300 wine "$@" 2>/dev/null
}
# state NAME: files of the user and keys of the registry that programs may leave something in. A key
# that is there and empty is none.
state()
{
    (cd "$WINEPREFIX/drive_c" && find users ProgramData "Program Files" \
        -not -path '*/Temp/*' -not -path '*/Recent*' | sort) >"$scratch/$1.files"
    local key
    for key in 'HKCU\Software\Microsoft\Windows\CurrentVersion\Run' \
        'HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall' 'HKCU\Software\Tovan'; do
        run reg query "$key" /s || true
    done | tr --delete '\r' | sed '/^reg: /d;/^$/d' >"$scratch/$1.registry"
}
# compare NAME: whether a state is the first one.
compare()
{
    diff "$scratch/before.files" "$scratch/$1.files" || fail "files are left"
    diff "$scratch/before.registry" "$scratch/$1.registry" || fail "keys are left"
}
# Whether the registry has a value, or a key where none is named.
has()
{
    run reg query "$1" ${2:+/v "$2"} >/dev/null
}

name="Tovan Network Monitor"
store="HKCU\\Software\\Tovan\\$name"
autostart='HKCU\Software\Microsoft\Windows\CurrentVersion\Run'
run wineboot --init
state before

# Where it goes when nobody says otherwise.
run "$setup" /S || fail "it ends with $?"
installed=$(find "$WINEPREFIX/drive_c/users" -name tovan-network-monitor.exe -printf %h)
[[ -n $installed ]] || fail "nothing was installed"
[[ -n $(find "$WINEPREFIX/drive_c/users" -name "$name.lnk") ]] || fail "no entry in the start menu"
! has "$autostart" "$name" || fail "\"Start with Windows\" is on"
# This one goes on in a copy of itself, which deletes what it is a copy of.
run "$installed/uninstall.exe" /S
for ((try = 0; try < 600; ++try)); do
    [[ -e $installed ]] || break
    run cmd /c exit
done
state uninstalled
compare uninstalled

# The other way: where somebody wants it, and waiting for the uninstaller, which stays then.
installed=$WINEPREFIX/drive_c/tovan
uninstall()
{
    run "$installed/uninstall.exe" /S "$@" '_?=C:\tovan'
}
run "$setup" /S '/D=C:\tovan' || fail "it installs nowhere else"
wine "$installed/tovan-network-monitor.exe" 2>/dev/null &
program_id=$!
for ((try = 0; try < 120; ++try)); do
    ! has "$store" todayBytes || break
    kill -0 "$program_id" || fail "the program has ended"
done
has "$store" todayBytes || fail "the program saves nothing"
! uninstall || fail "the program is taken away while it runs"
[[ -e $installed/tovan-network-monitor.exe ]] || fail "the running program's file is gone"
wine wineboot --end-session 2>/dev/null || true
wait "$program_id" || true

run "$setup" /S /AUTOSTART '/D=C:\tovan' || fail "it does not install over itself"
has "$autostart" "$name" || fail "\"Start with Windows\" cannot be chosen"
uninstall || fail "it does not uninstall"
[[ $(ls "$installed") == uninstall.exe ]] || fail "files are left: $(ls "$installed")"
has "$store" todayBytes || fail "the settings were removed unasked"

run "$setup" /S '/D=C:\tovan' || fail "it does not install again"
uninstall /SETTINGS || fail "it does not uninstall with the settings"
[[ $(ls "$installed") == uninstall.exe ]] || fail "files are left: $(ls "$installed")"
state end
compare end
echo "The installer installs, updates and takes away again, and the program starts"
