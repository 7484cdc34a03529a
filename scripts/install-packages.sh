#!/usr/bin/env bash
# Installs what the build, the tests and the demo need on Debian 12; quiet when nothing is missing.
# --lint adds the checkers that scripts/lint.sh runs, --windows the toolkit of the window module and
# the virtual display of its test; the driver itself needs neither.
set -euo pipefail

packages=(
    build-essential cmake ninja-build ccache
    libtiff-dev libpng-dev libjpeg-dev zlib1g-dev libpugixml-dev libcli11-dev nlohmann-json3-dev libfmt-dev
    libqpdf-dev  # reads the alternate colours of spot inks out of PDFs
    libssl-dev  # SHA-256 of channels and files
    libhwy-dev  # vector units for the preview, chosen at run time
    libgtest-dev libbenchmark-dev
    ghostscript  # rasterises and separates the artwork
    locales  # a locale with a decimal comma, made for the tests
    libxml2-utils  # the tests hold the models against the schemas
    libtiff-tools  # the tests read the channels with a program that is not ours
)
[ "${1:-}" = "--lint" ] && packages+=(clang-format clang-tidy)
[ "${1:-}" = "--windows" ] && packages+=(libwxgtk3.2-dev xvfb xdotool)

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null || true)
    [ "$status" = "install ok installed" ] || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "install-packages: ${missing[*]} must be installed; run this as root" >&2
        exit 1
    fi
    as_root=(sudo)
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT
echo "Installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
if ! { "${as_root[@]}" apt-get update && \
       "${as_root[@]}" apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
    tail -n 20 "$log" >&2
    echo "install-packages: could not install ${missing[*]}" >&2
    exit 1
fi
