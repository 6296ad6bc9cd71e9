# shellcheck shell=bash
# Sourced by what runs programs for Windows as a user would see them: Wine with a prefix of its own, on a
# virtual screen of its own. Both end with the script that sources this, and with them the folder "$scratch".

scratch=$(mktemp --directory)
# Debian's Wine makes a folder for its server there and leaves it behind.
export TMPDIR=$scratch
export WINEPREFIX=$scratch/prefix WINEARCH=win64 WINEDEBUG=-all LC_ALL=C.UTF-8 \
    WINEDLLOVERRIDES=winemenubuilder.exe,mscoree,mshtml=
end_all()
{
    wineserver --kill || true
    [[ -z ${screen_id:-} ]] || kill "$screen_id"
    rm --recursive --force "$scratch"
}
trap end_all EXIT
trap 'exit 143' TERM

mkfifo "$scratch/display"
Xvfb -displayfd 3 -screen 0 1600x1000x24 -nolisten tcp 3>"$scratch/display" 2>/dev/null &
screen_id=$!
read -r display <"$scratch/display"
export DISPLAY=:$display
