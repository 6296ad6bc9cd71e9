#!/usr/bin/env bash
# Fails when a place tells another version or date of the newest release than CMakeLists.txt and
# CHANGELOG.md do. Those that are made from these two (metainfo, manual page, resources of Windows)
# are made from nothing else.
set -euo pipefail
version=$(sed --quiet 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
released=$(grep --max-count=1 --extended-regexp '^## [0-9]' CHANGELOG.md)

failed=0
# must_be WHAT FOUND EXPECTED
must_be()
{
    if [[ $2 != "$3" ]]; then
        echo "$1: \"$2\", not \"$3\""
        failed=1
    fi
}

must_be "CHANGELOG.md" "$(cut --delimiter=' ' --fields=2 <<<"$released")" "$version"
must_be "debian/changelog" "$(sed --quiet '1s/.*(\(.*\)).*/\1/p' debian/changelog)" "$version"
day=$(sed --quiet '0,/^ -- .*>  /s/^ -- .*>  //p' debian/changelog)
must_be "debian/changelog's date" "$(date --utc --date="$day" +%F)" "${released##* - }"
must_be "packaging/tovan-network-monitor.1.in" \
    "$(grep --count --fixed-strings '"@releaseDate@" "Tovan Network Monitor @PROJECT_VERSION@"' \
        packaging/tovan-network-monitor.1.in)" 1
must_be "packaging/org.tovan.networkmonitor.metainfo.xml.in" \
    "$(grep --count '<release ' packaging/org.tovan.networkmonitor.metainfo.xml.in)" 0
# shellcheck disable=SC2016 # as they stand in the file
must_be "packaging/windows/tovan-network-monitor.rc.in" \
    "$(grep --count --extended-regexp '^(FILE|PRODUCT)VERSION @major@,@minor@,@patch@,0$' \
        packaging/windows/tovan-network-monitor.rc.in)" 2
exit "$failed"
