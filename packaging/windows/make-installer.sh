#!/usr/bin/env bash
# make-installer.sh VERSION FOLDER OUTPUT: makes the installer of a folder that packaging/windows/build has
# laid out.
set -euo pipefail
version=$1
folder=$(readlink -f "$2")
output=$(readlink -f "$3")
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"

# The uninstaller deletes what was installed, and folders that are empty then.
files=$(mktemp)
trap 'rm "$files"' EXIT
# shellcheck disable=SC2016 # a variable of the installer's
(cd "$folder" && find . -mindepth 1 -depth \( -type d -printf 'RMDir "$INSTDIR\\%P"\n' \
    -o -printf 'Delete "$INSTDIR\\%P"\n' \)) | sed 's,/,\\,g' >"$files"
makensis -V2 -NOCD -DVERSION="$version" -DFOLDER="$folder" -DFILES="$files" -DOUTPUT="$output" installer.nsi
