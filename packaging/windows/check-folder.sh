#!/usr/bin/env bash
# check-folder.sh FOLDER: fails where what is to be handed out names a path of the machine that built it, or
# where a library that one of its files needs is neither there nor Windows' own.
set -euo pipefail
project=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
cd "$1"
failed=0
fail()
{
    echo "$1"
    failed=1
}

# Whatever is above the sources, the toolkit and the users' folders, in either width of characters.
mapfile -t paths < <(printf '%s\n' "$project" "${TOVAN_WINDOWS_QT:-/nowhere}" "$HOME" \
    /home/ /root/ /tmp/ /usr/ /build/ | sort --unique)
while IFS= read -rd '' file; do
    texts=$(strings --all "$file"; strings --all --encoding=l "$file")
    for path in "${paths[@]}"; do
        if grep --quiet --fixed-strings "$path" <<<"$texts"; then
            fail "$file names $path"
        fi
    done
done < <(find . \( -name '*.exe' -o -name '*.dll' \) -print0)

# Windows has its libraries where Wine has them.
while IFS= read -rd '' file; do
    while read -r library; do
        if [[ -z $(find . "${file%/*}" -maxdepth 1 -iname "$library" -print -quit) \
            && -z $(find /usr/lib/*/wine/*-windows -iname "$library" -print -quit) ]]; then
            fail "$file needs $library"
        fi
    done < <(x86_64-w64-mingw32-objdump --private-headers "$file" \
        | sed --quiet 's/.*DLL Name: //p' | grep --invert-match --ignore-case '^api-ms-win-')
done < <(find . \( -name '*.exe' -o -name '*.dll' \) -print0)
exit "$failed"
