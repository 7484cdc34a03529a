#!/usr/bin/env bash
# Makes the PDFs of our own artwork: samples/make-artwork.sh FOLDER [NAME...]; all without a NAME.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
[ $# -ge 1 ] || { echo "usage: make-artwork.sh FOLDER [NAME...]" >&2; exit 2; }
folder=$1
shift
[ $# -gt 0 ] || set -- harbour label menu ticket banner
mkdir -p "$folder"
for name in "$@"; do
    gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=pdfwrite -dCompatibilityLevel=1.6 \
        -dAutoRotatePages=/None -sColorConversionStrategy=LeaveColorUnchanged \
        -sOutputFile="$folder/$name.pdf.part" "$here/$name.ps" </dev/null
    mv "$folder/$name.pdf.part" "$folder/$name.pdf"
done
