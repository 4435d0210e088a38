#!/usr/bin/env bash
# Builds the fuzz targets with clang and runs each for a while.
#   scripts/fuzz.sh [seconds per target, default 60] [target name ...]
set -euo pipefail
source "$(dirname "$0")/common.sh"
tarn_install_missing "${TARN_BUILD_PACKAGES[@]}" clang
secs=${1:-60}; shift || true
CC=clang CXX=clang++ tarn_build "$TARN_ROOT/build-fuzz" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DTARN_BUILD_FUZZ=ON -DTARN_BUILD_TESTS=OFF
targets=("$@")
[ ${#targets[@]} -eq 0 ] && mapfile -t targets < <(cd "$TARN_ROOT/build-fuzz/fuzz" && ls fuzz_* 2>/dev/null)
for t in "${targets[@]}"; do
  corpus="$TARN_ROOT/build-fuzz/corpus/$t"
  mkdir -p "$corpus"
  args=("$corpus")
  [ -d "$TARN_ROOT/fuzz/corpus/$t" ] && args+=("$TARN_ROOT/fuzz/corpus/$t")
  # A word list of the input's language, where the target has one.
  [ -f "$TARN_ROOT/fuzz/$t.dict" ] && args=(-dict="$TARN_ROOT/fuzz/$t.dict" "${args[@]}")
  echo "== $t for ${secs}s =="
  "$TARN_ROOT/build-fuzz/fuzz/$t" -max_total_time="$secs" -timeout=10 "${args[@]}"
done
