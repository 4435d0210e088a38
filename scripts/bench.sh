#!/usr/bin/env bash
# Builds the benchmarks in Release with their peer libraries and runs them all.
#   scripts/bench.sh [benchmark name ...]
set -euo pipefail
source "$(dirname "$0")/common.sh"
tarn_install_missing "${TARN_BUILD_PACKAGES[@]}" libbenchmark-dev libmuparser-dev libfftw3-dev
tarn_build "$TARN_ROOT/build-bench" -DCMAKE_BUILD_TYPE=Release -DTARN_BUILD_BENCH=ON -DTARN_BUILD_TESTS=OFF
names=("$@")
[ ${#names[@]} -eq 0 ] && mapfile -t names < <(cd "$TARN_ROOT/build-bench/bench" && ls bench_* 2>/dev/null)
for b in "${names[@]}"; do
  echo "== $b =="
  "$TARN_ROOT/build-bench/bench/$b"
done
