# shellcheck shell=bash
# Sourced by what starts the program and waits for its ticks; needs inotify-tools.

# await_save STORE SECONDS: waits for a save of the program that has its settings there, at most about so
# long; fails when there was none. A tick ends with a save when the settings, or their file, were touched
# since the last one, so this touches the file until that is noticed.
await_save()
{
    local store=$1 end=$((SECONDS + $2))
    while ((SECONDS < end)); do
        touch --no-create "$store"
        if inotifywait --quiet --timeout 2 --event moved_to --event close_write --include '\.conf$' \
            "${store%/*}"; then
            return 0
        fi
    done
    return 1
}
