#!/usr/bin/env bash
# Fails on every line of ours that clang-format would write differently.
set -euo pipefail
find app assets bench dashboard fuzz rules sampling settings shell tests widgets \
    \( -name '*.cpp' -o -name '*.h' \) -print0 \
    | xargs --null clang-format --dry-run -Werror
