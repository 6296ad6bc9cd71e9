#!/usr/bin/env bash
# Fails on what shellcheck finds in our scripts.
set -euo pipefail
mapfile -d '' scripts < <(find packaging tests -name '*.sh' -print0)
shellcheck run test .ci/run .ci/empty-root bench/run bench/hardening bench/soak debian/tests/start \
    fuzz/run packaging/release packaging/windows/build "${scripts[@]}"
