#!/usr/bin/env bash
# Builds everything and runs every test, first in the release build, then under
# AddressSanitizer, UBSan and the leak check. Ends with CTest's closing line.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")"
trap 'echo "test.sh: stopped at line $LINENO: $BASH_COMMAND" >&2' ERR

mkdir -p build
scripts/install-packages.sh --windows

for preset in release sanitize; do
    echo "== $preset: building"
    cmake --preset "$preset" >"build/configure-$preset.log" 2>&1 || {
        cat "build/configure-$preset.log" >&2
        echo "test.sh: configuring the $preset build failed" >&2
        exit 1
    }
    cmake --build --preset "$preset" -- --quiet
    echo "== $preset: testing"
    ctest --preset "$preset" --parallel 2
done
