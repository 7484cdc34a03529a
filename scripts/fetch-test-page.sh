#!/usr/bin/env bash
# Puts the test page that Debian's cups-filters ships into a folder, from the installed package or
# else from the package file, which is unpacked and not installed:
# scripts/fetch-test-page.sh FOLDER
set -euo pipefail
[ $# -eq 1 ] || { echo "usage: fetch-test-page.sh FOLDER" >&2; exit 2; }
page=usr/share/cups/data/default-testpage.pdf
mkdir -p "$1"
target=$(readlink -f "$1")/$(basename "$page")
[ -s "$target" ] && exit 0
if [ -s "/$page" ]; then
    cp "/$page" "$target"
    exit 0
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
# The package lists may be old or, in a fresh container, missing.
as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)
if ! apt-get download cups-filters >log 2>&1 &&
    ! { "${as_root[@]}" apt-get update && apt-get download cups-filters; } >log 2>&1; then
    cat log >&2
    echo "fetch-test-page: cannot download the package cups-filters" >&2
    exit 1
fi
dpkg-deb -x cups-filters_*.deb unpacked
cp "unpacked/$page" "$target.part"
mv "$target.part" "$target"
