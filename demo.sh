#!/usr/bin/env bash
# Builds the driver and its command-line host and prints on all five printer models: artwork of our
# own, and a test page that a Debian package ships.
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
rm -rf "$demo/jobs" "$demo/printed" "$demo/proofs"
mkdir -p "$demo/jobs" "$demo/printed" "$demo/proofs"

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

# picture_of FOLDER JOB [OPTION...]
picture_of() {
    local folder=$1 job=$2
    shift 2
    "$host" proof "$demo/printed/$folder" --job "$job" -o "$demo/proofs/$job-$folder.png" "$@"
}

unset QL_BASE_FOLDER
print_document "$demo/artwork/harbour.pdf" "Fenland R4" roll
picture_of roll harbour
say "Where its screens come from, and a ramp of each"
"$host" halftone "Fenland R4" --manufacturer Fenland --plot "$demo/proofs/screens-roll.png"
print_document "$demo/artwork/menu.pdf" "Fenland R4" roll --media "Poster paper" --resolution 720x720
picture_of roll menu --page 2
print_document "$demo/artwork/label.pdf" "Fenland F8" flatbed --media "Acrylic sheet" \
    --resolution 600x600
picture_of flatbed label --paper 5A7A6A
print_document "$demo/artwork/default-testpage.pdf" "Fenland F8" flatbed
print_document "$demo/artwork/label.pdf" "Fenland W6" white
picture_of white label
say "The binary header that the driver wrote beside these channels, field by field"
"$host" header FenlandW6.txt --page "$demo/jobs/label-white.job" \
    --file "$demo/printed/white/label/label.hdr"
say "Its job ticket"
cat "$demo/printed/white/label/FenlandW6Job.xml"
say "Its white ink, the union of the inks above it"
"$host" inspect "$demo"/printed/white/label/label_W*
print_document "$demo/artwork/banner.pdf" "Fenland T4" wide --print-mode Billboard
picture_of wide banner
print_document "$demo/artwork/ticket.pdf" "Fenland S1" film
picture_of film ticket --long-side 4000

say "Done"
cat <<TEXT
The channels lie in $top/$demo/printed:
  roll/     Fenland R4: a folder per document, one TIFF file per ink, 1 bit per pixel
  flatbed/  Fenland F8: one raw file per ink of 2 bits, bottom line first; white and varnish, or eight inks
  white/    Fenland W6: six inks of 2 bits and the white under them; header and job ticket beside
  wide/     Fenland T4: a banner of three metres, read line by line through its four channels
  film/     Fenland S1: one channel at 2400 dpi, and its header
and pictures made from them in $top/$demo/proofs. The driver's own previews, mirrored as printers want them:
$(cd "$demo/printed" && find . -name '*.bmp' -o -name '*.png' | sort | sed 's|^\./|  |')
Any imaging tool opens the TIFF channels, for example
  tiffinfo $demo/printed/roll/harbour/harbour_C.tif
TEXT
