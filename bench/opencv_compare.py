#!/usr/bin/python3
"""Times OpenCV's matchTemplate (TM_SQDIFF, colour) on the screen and needles
that bench_image wrote, and prints ZantoRunner's times beside it."""
import sys
import time

import cv2

folder = sys.argv[1]
screen = cv2.imread(folder + "/screen.bmp", cv2.IMREAD_COLOR)
target_ms = 20.0
print("%-24s %10s %10s %8s" % ("case", "ours ms", "OpenCV ms", "ratio"))
worst_absent = 0.0
ratios = []
for line in open(folder + "/times.txt"):
    needle, variation, label, ours, found = line.rstrip("\n").split("\t")
    ours = float(ours)
    template = cv2.imread("%s/needle_%s.bmp" % (folder, needle), cv2.IMREAD_COLOR)
    runs = []
    for _ in range(5):
        start = time.perf_counter()
        result = cv2.matchTemplate(screen, template, cv2.TM_SQDIFF)
        cv2.minMaxLoc(result)
        runs.append((time.perf_counter() - start) * 1000)
    theirs = sorted(runs)[len(runs) // 2]
    ratios.append(ours / theirs)
    if needle == "absent":
        worst_absent = max(worst_absent, ours)
    print("%-24s %10.2f %10.2f %8.3f" % (label, ours, theirs, ours / theirs))
h, w = screen.shape[:2]
print("screen %d x %d: slowest absent-needle search %.2f ms (target under %.0f ms on 1920 x 1080: %s); "
      "largest ratio to OpenCV %.3f (target at most 0.2: %s)" %
      (w, h, worst_absent, target_ms, "met" if worst_absent < target_ms else "NOT MET", max(ratios),
       "met" if max(ratios) <= 0.2 else "NOT MET"))
