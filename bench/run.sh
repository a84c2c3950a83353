#!/usr/bin/env bash
# Runs the benchmarks under the harness's Wine and prints their figures.
# Called by "./dev.sh bench" with the build folder.
set -euo pipefail
BUILD=$1
WORK=$BUILD/bench-work
mkdir -p "$WORK"
echo "== Wine, Xvfb and the benchmarks run on the first CPU, as in the tests (see dev.sh)"
win=$(printf 'Z:%s' "$(realpath "$WORK" | tr '/' '\\')")
echo "== script load and save (hidden run, no settings); targets: 10,000 steps load < 0.5 s,"
echo "== 100,000-step load <= 12 x the 10,000-step load, peak memory <= 2 x the step array, the 100,000-step"
echo "== and the entity-heavy script loaded at >= 150 MB/s"
for n in 1000 10000 100000; do
  wine "$BUILD/bench/bench_load_save.exe" "$n" "$win"
done
wine "$BUILD/bench/bench_load_save.exe" entities "$win"
echo "== start-up of a hidden run"
/usr/bin/python3 "$(dirname "$0")/startup.py" "$BUILD/ZantoRunner.exe" "$BUILD/bench/empty_gui.exe" \
  "$BUILD/bench/startup_floor.exe" "$WORK/startup"
wine "$BUILD/bench/bench_translate.exe"
wine "$BUILD/bench/bench_calc.exe"
wine "$BUILD/bench/bench_runcore.exe" "$win"

# Image search against OpenCV, on this display (1280 x 1024) and on a second
# display of 1920 x 1080 with a Wine desktop of that size.
for size in 1280x1024 1920x1080; do
  out=$WORK/image-$size
  mkdir -p "$out"
  wout=$(printf 'Z:%s' "$(realpath "$out" | tr '/' '\\')")
  if [ "$size" = 1280x1024 ]; then
    wine "$BUILD/bench/bench_image.exe" "$wout"
  else
    fdfile=$(mktemp)
    setsid Xvfb -displayfd 3 -screen 0 1920x1080x24 -nolisten tcp 3>"$fdfile" >/dev/null 2>&1 &
    xvfb=$!
    for _ in $(seq 100); do [ -s "$fdfile" ] && break; sleep 0.1; done
    DISPLAY=:$(head -n1 "$fdfile") wine explorer /desktop=bench,1920x1080 "$BUILD/bench/bench_image.exe" "$wout"
    kill "$xvfb" 2>/dev/null || true
    rm -f "$fdfile"
  fi
  # OpenCV may use every core; the harness keeps Wine on the first one.
  taskset -c "${ZR_ALL_CPUS:-0}" /usr/bin/python3 "$(dirname "$0")/opencv_compare.py" "$out"
done

# The picture set: 20 controls captured at 100 % and searched on screens drawn
# at 100, 125, 150 and 200 %, and 20 that are on no screen (target: 19 of 20
# found at each scale, no false finds; the suite's image.pictureset holds it
# to that). Built with the tests.
if [ -x "$BUILD/tests/controlset.exe" ]; then
  timeout 300 wine "$BUILD/tests/controlset.exe" || true
fi
