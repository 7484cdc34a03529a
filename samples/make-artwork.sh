#!/usr/bin/env bash
# Makes the PDFs of our own artwork: samples/make-artwork.sh FOLDER
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
[ $# -eq 1 ] || { echo "usage: make-artwork.sh FOLDER" >&2; exit 2; }
mkdir -p "$1"
gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=pdfwrite -dCompatibilityLevel=1.6 \
    -dAutoRotatePages=/None -sColorConversionStrategy=LeaveColorUnchanged \
    -sOutputFile="$1/harbour.pdf.part" "$here/harbour.ps" </dev/null
mv "$1/harbour.pdf.part" "$1/harbour.pdf"
