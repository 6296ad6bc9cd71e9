#!/usr/bin/env bash
# virtualscreen_test.sh PROGRAM
# Runs the program as ./run does on a machine without a display, and interrupts it.
set -euo pipefail
source tests/packaging/expect.sh
scratch=$(mktemp --directory)
trap 'rm -r "$scratch"' EXIT
screenshot=$scratch/screenshot.png

# shellcheck disable=SC2317 # called by expect
is_running()
{
    pgrep --session "$1" --full "^$2" >/dev/null
}

# shellcheck disable=SC2317
no_process_in()
{
    ! ps --no-headers -o pid,state,args --sid "$1"
}

mkfifo "$scratch/output"
export DBUS_SESSION_BUS_ADDRESS=disabled: # or the library would start a session bus of its own
XDG_CONFIG_HOME=$scratch setsid packaging/virtual-screen.sh "$1" "$screenshot" \
    >"$scratch/output" &
session=$!
printed=$(sed '/goes on until/q' "$scratch/output")

expect "the screenshot's path is printed" grep --quiet --fixed-strings "$screenshot" <<<"$printed"
expect "the screenshot shows the whole screen" \
    test "$(identify -format '%wx%h' "$screenshot")" = 1280x900
expect "the screenshot shows a window" test "$(identify -format '%k' "$screenshot")" -gt 100
expect "the program has made a tick" test -s "$scratch/Tovan/Tovan Network Monitor.conf"
expect "the program goes on" is_running "$session" "$1"

status=0
kill -TERM "$session"
wait "$session" || status=$?
expect "an interruption is told by the exit status" test "$status" = 143
expect "an interruption ends everything" no_process_in "$session"

# A program that cannot start is no reason to wait.
status=0
packaging/virtual-screen.sh /bin/false "$screenshot" >"$scratch/log" 2>&1 || status=$?
expect "a program that ends at once is told by the exit status" test "$status" = 1
expect "a program that ends at once is told" grep --quiet "ended before" "$scratch/log"

exit "$((failures > 0))"
