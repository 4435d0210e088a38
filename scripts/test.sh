#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test with CTest.
#   scripts/test.sh            all tests, in build/
#   scripts/test.sh -R name    only the tests whose name matches
set -euo pipefail
source "$(dirname "$0")/common.sh"

# SciPy reads the exported mat-files back the way engineers open them.
tarn_install_missing "${TARN_BUILD_PACKAGES[@]}" python3-scipy
pch=(); [ -n "${TARN_PCH:-}" ] && pch=(-DTARN_PCH="$TARN_PCH")
tarn_build "$TARN_ROOT/build" -DCMAKE_BUILD_TYPE=Release -DTARN_BUILD_TESTS=ON "${pch[@]}"
cd "$TARN_ROOT/build"
QT_QPA_PLATFORM=offscreen ctest --output-on-failure --parallel "$(nproc)" "$@"
