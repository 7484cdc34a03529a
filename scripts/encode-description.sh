#!/usr/bin/env bash
# Encodes a description file the way models are shipped (a gzip stream without name and time, so
# that the same source gives the same bytes): scripts/encode-description.sh SOURCE.xml ENCODED.xml
set -euo pipefail
[ $# -eq 2 ] || { echo "usage: encode-description.sh SOURCE.xml ENCODED.xml" >&2; exit 2; }
gzip --best --no-name --stdout -- "$1" >"$2.part"
mv -- "$2.part" "$2"
