#!/usr/bin/env bash
# clang-tidy.sh BUILD_FOLDER
# Fails on what clang-tidy finds in our sources and headers, with the checks of .clang-tidy.
set -euo pipefail
lint=$1/lint
mkdir --parents "$lint"

# clang cannot read the compiler's precompiled headers. Without them every file must include what
# it uses, which is as it should be.
sed --regexp-extended 's# -Winvalid-pch -include [^ ]*/cmake_pch\.hxx##' \
    "$1/compile_commands.json" >"$lint/compile_commands.json"

# llvm-config is of the same version as clang-tidy, and says where the headers are for its plug-ins.
c++ -std=c++17 -fno-rtti -fPIC -shared -isystem "$(llvm-config --includedir)" -Wall -Wextra -Werror \
    -o "$lint/ownsources.so" tests/lint/ownsources.cpp
cat >"$lint/clang-tidy" <<END
#!/bin/sh
exec clang-tidy -load='$lint/ownsources.so' "\$@"
END
chmod +x "$lint/clang-tidy"

# Standard error has a count of suppressed warnings for each file, and otherwise only failures.
if ! run-clang-tidy -quiet -j "$(nproc)" -p "$lint" -clang-tidy-binary "$lint/clang-tidy" \
    "^$PWD/(app|assets|bench|dashboard|rules|sampling|settings|shell|tests|widgets)/" \
    2>"$lint/errors.log"; then
    grep --invert-match --extended-regexp '^[0-9]+ warnings? generated' "$lint/errors.log"
    exit 1
fi
