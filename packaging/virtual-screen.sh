#!/usr/bin/env bash
# virtual-screen.sh PROGRAM SCREENSHOT
# Starts the program on a virtual screen, saves a screenshot after its third tick and lets it go
# on until it ends or this is interrupted.
set -euo pipefail
# shellcheck source=packaging/await-save.sh
source "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/await-save.sh"
program=$1
screenshot=$2

scratch=$(mktemp --directory)
started=() # last started first, which is the order of ending
end_all()
{
    trap - EXIT
    local id
    for id in "${started[@]}"; do
        kill "$id" 2>/dev/null || true
        wait "$id" || true
    done
    rm -r "$scratch"
}
trap end_all EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# Waits until the process named first ends, which must be before the program does.
await()
{
    local ended
    wait -n -p ended "$1" "$program_id" || true
    if [[ $ended == "$program_id" ]]; then
        echo "The program ended before its window was seen." >&2
        exit 1
    fi
}

window_shown()
{
    exec timeout 60 xdotool search --sync --onlyvisible --pid "$program_id" >"$scratch/window"
}
# A program that was left paused makes no tick.
three_ticks()
{
    for _ in 1 2 3; do
        await_save "$settings_folder/Tovan Network Monitor.conf" 20 >"$scratch/tick" || return 0
    done
}

mkfifo "$scratch/display" "$scratch/manager"
Xvfb -displayfd 3 -screen 0 1280x900x24 -nolisten tcp 3>"$scratch/display" 2>"$scratch/log" &
started=($! "${started[@]}")
if ! read -r display <"$scratch/display"; then
    cat "$scratch/log" >&2
    exit 1
fi
export DISPLAY=:$display QT_QPA_PLATFORM=xcb
openbox --startup "sh -c 'echo ready >$scratch/manager'" >>"$scratch/log" 2>&1 &
started=($! "${started[@]}")
read -r _ <"$scratch/manager"

settings_folder=${XDG_CONFIG_HOME:-$HOME/.config}/Tovan
mkdir --parents "$settings_folder"
"$program" &
program_id=$!
started=("$program_id" "${started[@]}")
echo "There is no display here: the program runs on the virtual screen $DISPLAY."

window_shown &
started=($! "${started[@]}")
await $!
three_ticks &
started=($! "${started[@]}")
await $!
import -silent -window root "$screenshot"
echo "Screenshot: $screenshot"
echo "The program goes on until it is interrupted (Ctrl+C)."
wait "$program_id"
