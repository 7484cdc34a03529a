#!/usr/bin/env bash
# Runs the whole fault sweep on the release build and prints its tables, which docs/reliability.md
# shows. Arguments are the program's own, for example `--scenario "white 1" --call write`.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

scripts/install-packages.sh
cmake --preset release >/dev/null
cmake --build --preset release --target fault_sweep -- --quiet

# A call on files that the plug-in makes and nothing stands in for would never fail.
symbols() { nm -D "$@" | sed 's/@.*//; s/.* //' | sort -u; }
missed=$(comm -23 <(symbols --undefined-only build/release/bin/libOutputDriver.so) \
    <(symbols --defined-only build/release/bin/fault_sweep) |
    grep -E 'open|read|write|seek|tell|close|stat|link|dir|rename|remove|trunc|alloc|sync' |
    grep -vE '^(_Z|__|TIFF|dl|iconv_|mkdtemp)' || true)
if [ -n "$missed" ]; then
    echo "fault-sweep: nothing stands in for" $missed >&2
    exit 1
fi

build/release/bin/fault_sweep "$@"
