#!/usr/bin/env bash
# Checks the formatting of every source and runs clang-tidy over those that the release build
# compiles. `scripts/lint.sh FILE...` checks only these files.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

scripts/install-packages.sh --lint
cmake --preset release >/dev/null

if [ $# -gt 0 ]; then sources=("$@"); else mapfile -t sources < <(git ls-files '*.cpp' '*.h'); fi
clang-format --dry-run -Werror "${sources[@]}"

units=()
for source in "${sources[@]}"; do
    # clang 14 cannot read qpdf's own headers as C++20.
    if grep -q '#include <qpdf/' "$source"; then continue; fi
    if grep -q "/$source\"" build/release/compile_commands.json; then units+=("$source"); fi
done
if [ ${#units[@]} -gt 0 ]; then
    printf '%s\0' "${units[@]}" | xargs -0 -n 1 -P "$(nproc)" clang-tidy -p build/release --quiet
fi
echo "lint: ${#sources[@]} files formatted, ${#units[@]} compiled files clean"
