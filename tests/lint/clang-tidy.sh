#!/usr/bin/env bash
# clang-tidy.sh BUILD_FOLDER
# Fails on what clang-tidy finds in our sources and headers, with the checks of .clang-tidy.
set -euo pipefail
lint=$1/lint
mkdir --parents "$lint"

# How each file is compiled by itself: the build joins many of the program's to one. What the build
# generated is used from there.
cmake --preset check -B "$lint/apart" -DCMAKE_UNITY_BUILD=OFF >"$lint/configure.log"
# With C++20's modules on, which nothing here uses, clang-tidy reads all headers a second time. A file
# that several targets share is checked once.
sed --regexp-extended -e "s#$lint/apart#$1#g" \
    -e 's#^( *"command": "[^ ]+)#\1 -Xclang -fno-cxx-modules#' \
    "$lint/apart/compile_commands.json" \
    | awk '
        $1 == "{" { entry = "" }
        { entry = entry "\n" $0 }
        $1 == "\"file\":" { first = !seen[$0]++ }
        $1 ~ /^}/ && first {
            sub(/,$/, "", entry)
            entries = entries separator entry
            separator = ","
        }
        END { print "[" entries "\n]" }' >"$lint/commands.json"

# The toolkit's headers and templates take most of the time, so all that uses the toolkit has them
# precompiled, the tests' with them: clang finds its own file beside a header. Whether each source
# includes what it uses, the build with clang tells.
headers=$lint/headers.h
printf '#include <%s>\n' QtTest QtWidgets >"$headers"
read -ra compile < <(sed --quiet --regexp-extended \
    's#^ *"command": "[^ ]+ (.*) -Winvalid-pch -x c\+\+-header .*#\1#p' "$lint/commands.json")
clang++ "${compile[@]}" -Wno-unknown-warning-option -fpch-instantiate-templates \
    -x c++-header "$headers" -o "$headers.pch"
sed --regexp-extended -e 's# -Winvalid-pch -include [^ ]*/cmake_pch\.hxx##' \
    -e "s#^( *\"command\": .* -DQT_CORE_LIB .*)( -o )#\1 -include $headers\2#" \
    "$lint/commands.json" >"$lint/precompiled.json"

# Reading a test takes nine tenths of its time, and most of what is read is the same in all tests of a
# folder, so they are read as one. A source's checks are those of the nearest .clang-tidy above it.
rm --recursive --force "$lint/tests"
mkdir "$lint/tests"
cp .clang-tidy "$lint"
cp tests/.clang-tidy "$lint/tests"
awk -v folder="$lint/tests" -v tests="$PWD/tests/" -f tests/lint/jointests.awk \
    "$lint/precompiled.json" >"$lint/compile_commands.json"

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
    "^$PWD/(app|assets|bench|dashboard|fuzz|rules|sampling|settings|shell|tests|widgets)/" \
    "^$lint/tests/" \
    2>"$lint/errors.log"; then
    grep --invert-match --extended-regexp '^[0-9]+ warnings? generated' "$lint/errors.log"
    exit 1
fi
