#!/usr/bin/env bash
# clang-tidy.sh BUILD_FOLDER
# Fails on what clang-tidy finds in our sources and headers, with the checks of .clang-tidy.
set -euo pipefail
build=$1

# clang cannot read the compiler's precompiled headers. Without them every file must include what
# it uses, which is as it should be.
mkdir --parents "$build/lint"
sed --regexp-extended 's# -Winvalid-pch -include [^ ]*/cmake_pch\.hxx##' \
    "$build/compile_commands.json" >"$build/lint/compile_commands.json"

# Standard error has a count of suppressed warnings for each file, and otherwise only failures.
if ! run-clang-tidy -quiet -j "$(nproc)" -p "$build/lint" \
    "^$PWD/(app|bench|sampling|settings|rules|dashboard|shell|tests)/" 2>"$build/lint/errors.log"; then
    grep --invert-match --extended-regexp '^[0-9]+ warnings? generated' "$build/lint/errors.log"
    exit 1
fi
