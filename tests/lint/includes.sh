#!/usr/bin/env bash
# Fails on an include that does not point down. Tests and benchmarks may include everything.
set -euo pipefail

# From the roof to the ground: a folder, and what its files include besides each other, as folders
# or as single headers. A folder includes nothing of those below it.
table='
app               shell dashboard settings rules sampling widgets assets
shell             sampling widgets assets app/formatting.h
dashboard         rules sampling widgets assets app/formatting.h
settings          rules sampling widgets assets app/formatting.h
rules             sampling widgets assets
sampling
widgets
assets
dashboard/linux   dashboard/applicationicons.h
dashboard/windows dashboard/applicationicons.h
shell/linux       shell sampling/linux/filedescriptor.h
shell/windows     shell
settings/linux    settings/userstore.h
settings/windows  settings/userstore.h
sampling/linux    sampling/systemqueries.h
sampling/windows  sampling/systemqueries.h
'
# The window's own files lie in the folders of its sections and belong to app/: sources that
# implement its members and have no header of their own.
window_class=LumetraWindow

declare -A allowed
while read -r folder included; do
    [[ -z $folder ]] || allowed[$folder]=" $folder $included "
done <<<"$table"

failed=0
while IFS=: read -r file line text; do
    folder=${file%/*}
    if [[ ! -v allowed[$folder] ]]; then
        echo "$file:$line: nothing is said of what $folder/ may include"
        failed=1
        continue
    fi
    if [[ $file == *.cpp && ! -e ${file%.cpp}.h ]] && grep --quiet "$window_class::" "$file"; then
        folder=app
    fi
    header=${text#*\"}
    header=${header%%\"*}
    if [[ ${allowed[$folder]} != *" ${header%/*} "* && ${allowed[$folder]} != *" $header "* ]]; then
        echo "$file:$line: $folder/ may not include $header"
        failed=1
    fi
done < <(grep --recursive --line-number --include='*.cpp' --include='*.h' \
    --extended-regexp '^[[:space:]]*#[[:space:]]*include[[:space:]]*"' \
    app shell dashboard settings rules sampling widgets assets)
exit "$failed"
