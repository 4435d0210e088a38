#!/usr/bin/env bash
# Installs what is missing, builds in Release, and starts the digitiser.
set -euo pipefail
source "$(dirname "$0")/common.sh"

tarn_install_missing "${TARN_BUILD_PACKAGES[@]}"
tarn_build "$TARN_ROOT/build" -DCMAKE_BUILD_TYPE=Release
if [ -x "$TARN_ROOT/build/bin/tracelift" ]; then
  exec "$TARN_ROOT/build/bin/tracelift" "$@"
fi
echo "The build did not produce build/bin/tracelift; see the build output above." >&2
exit 1
