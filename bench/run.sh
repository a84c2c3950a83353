#!/usr/bin/env bash
# Runs the benchmarks under the harness's Wine and prints their figures.
# Called by "./dev.sh bench" with the build folder.
set -euo pipefail
BUILD=$1
WORK=$BUILD/bench-work
mkdir -p "$WORK"
win=$(printf 'Z:%s' "$(realpath "$WORK" | tr '/' '\\')")
echo "== script load and save (hidden run, no settings); targets: 10,000 steps load < 0.5 s,"
echo "== 100,000-step load <= 12 x the 10,000-step load, peak memory <= 2 x the step array"
for n in 1000 10000 100000; do
  wine "$BUILD/bench/bench_load_save.exe" "$n" "$win"
done
wine "$BUILD/bench/bench_translate.exe"
wine "$BUILD/bench/bench_calc.exe"
wine "$BUILD/bench/bench_runcore.exe" "$win"
