#!/usr/bin/env bash
# portable.sh LIBRARY
# Fails on what would tie the sources above sampling/systemqueries.h to one operating system: a
# header that is neither of Qt, of the C++ library nor of ours, a backend's header, a condition on
# the operating system, or, in the library built from those sources, a call to a C function outside
# the C standard. Folders named after a system are built on that system alone.
set -euo pipefail
library=$1
mapfile -d '' sources < <(find app assets settings rules dashboard shell widgets \
    \( -name linux -o -name windows \) -prune -o -name '*.cpp' -print0 -o -name '*.h' -print0
    find sampling -maxdepth 1 -name '*.cpp' -print0 -o -maxdepth 1 -name '*.h' -print0)
((${#sources[@]} > 0))

failed=0
# Reads findings; each one is a failure.
none_of()
{
    local finding
    while IFS= read -r finding; do
        echo "$1: $finding"
        failed=1
    done
}

# Headers of Qt begin with Q, those of the C++ library have no suffix and no folder.
none_of "not a portable header" < <(
    grep --extended-regexp --line-number '^[[:space:]]*#[[:space:]]*include' "${sources[@]}" \
        | grep --extended-regexp --invert-match \
            'include[[:space:]]*(<Q[A-Za-z0-9/]+>|<[a-z_]+>|"[^"]+")' || true)
none_of "a backend's header" < <(
    grep --extended-regexp --line-number 'include[[:space:]]*["<].*(linux|windows)/' \
        "${sources[@]}" || true)
none_of "a condition on the system" < <(
    grep --extended-regexp --line-number \
        '^[[:space:]]*#.*(_WIN32|_WIN64|_MSC_VER|__MINGW|__linux|__unix|__APPLE__|Q_OS_)' \
        "${sources[@]}" || true)

# C++ names are mangled to _Z..., the compiler's support begins with __cxa, __gxx or _Unwind.
none_of "a call outside the C standard" < <(
    nm --undefined-only "$library" | awk '$1 == "U" { print $2 }' \
        | grep --extended-regexp --invert-match \
            -e '^(_Z|__cxa_|__gxx_|_Unwind_|__dynamic_cast|__stack_chk_|__dso_handle)' \
            -e '^(_GLOBAL_OFFSET_TABLE_|qt_version_tag.*)$' \
            -e '^(__)?(mem(cpy|move|set|cmp|chr)|str(len|cmp|chr))(_chk)?$' \
            -e '^(abs|ceil|floor|fmod|log|log2|log10|lround|llround|pow|round|sqrt|trunc)f?$' \
            -e '^(abort|malloc|free|realloc|strto[a-z]+)$' \
        | sort --unique)
exit "$failed"
