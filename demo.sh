#!/usr/bin/env bash
# Builds the driver and its command-line host and prints two documents on both printer models:
# artwork of our own, and a test page that a Debian package ships.
set -euo pipefail
top=$(dirname "$(readlink -f "$0")")
cd "$top"
trap 'echo "demo.sh: stopped at line $LINENO: $BASH_COMMAND" >&2' ERR

say() { printf '\n== %s\n' "$*"; }

say "Installing what is missing"
scripts/install-packages.sh

say "Building (the first time takes a while)"
mkdir -p build
cmake --preset release >build/configure-release.log 2>&1 || {
    cat build/configure-release.log >&2
    echo "demo.sh: configuring the build failed" >&2
    exit 1
}
cmake --build --preset release --target driverhost OutputDriver models -- --quiet

demo=build/demo
host=build/release/bin/driverhost
rm -rf "$demo/jobs" "$demo/printed"
mkdir -p "$demo/jobs" "$demo/printed"

say "Fetching the artwork"
samples/make-artwork.sh "$demo/artwork"
scripts/fetch-test-page.sh "$demo/artwork"
ls -l "$demo/artwork"

# print_document PDF MODEL FOLDER [OPTION...]
print_document() {
    local pdf=$1 model=$2 folder=$3
    shift 3
    local job="$demo/jobs/$(basename "$pdf" .pdf)-$folder.job"
    say "$(basename "$pdf") on the $model"
    "$host" make-job "$pdf" --model "$model" -o "$job" "$@"
    "$host" run "$job" --out "$demo/printed/$folder"
}

unset QL_BASE_FOLDER
print_document "$demo/artwork/harbour.pdf" "Fenland R4" roll
print_document "$demo/artwork/default-testpage.pdf" "Fenland R4" roll
print_document "$demo/artwork/harbour.pdf" "Fenland F8" flatbed-spot \
    --resolution 600x600 --color-mode "CMYK, White, Varnish, contone"
print_document "$demo/artwork/default-testpage.pdf" "Fenland F8" flatbed

say "Done"
cat <<TEXT
The channels lie in $top/$demo/printed:
  roll/          Fenland R4: a folder per document, one TIFF file per ink, 1 bit per pixel
  flatbed/       Fenland F8: one raw file per ink, eight inks, bottom line first
  flatbed-spot/  Fenland F8: process inks, white and varnish, 8 bits per pixel
Any imaging tool opens the TIFF channels, for example
  tiffinfo $demo/printed/roll/harbour/harbour_C.tif
TEXT
