#!/usr/bin/env python3
"""Start-up of a hidden run against an empty GUI program, run alternately
under the harness's Wine: medians of wall time, their ratio against the
target (at most 3 times), and where the hidden run's time goes (its
ZR_STARTUP_TRACE phases, in milliseconds since the process was created).
A third program, run in the same rounds, does only what our start must do
before any script work (COM, common controls, one hidden window): the
floor, and our run's ratio to it.

    startup.py ZANTORUNNER.EXE EMPTY_GUI.EXE FLOOR.EXE WORK-FOLDER [RUNS]
"""
import os
import re
import statistics
import subprocess
import sys
import time


def winpath(path):
    return "Z:" + os.path.abspath(path).replace("/", "\\")


def main():
    exe, empty, floor, work = sys.argv[1:5]
    runs = int(sys.argv[5]) if len(sys.argv) > 5 else 15
    os.makedirs(work, exist_ok=True)
    script = os.path.join(work, "startup.zxm")
    with open(script, "w", newline="\r\n") as f:
        f.write('<?xml version="1.0" ?>\n<ZantoRunner>\n<step><action>Comment</action>'
                '<comment>start-up</comment></step>\n</ZantoRunner>\n')
    env = dict(os.environ, ZR_STARTUP_TRACE="1")
    # Wine's desktop process starts with the first window of a program when
    # none is running, inherits its standard error and lives on for a second
    # or two: a run would be timed with the desktop's start and that wait. A
    # Windows machine has its desktop all along, so a window of the test
    # harness keeps one running here (no pipe of ours open).
    stop = os.path.join(work, "stop-desktop")
    if os.path.exists(stop):
        os.remove(stop)
    keeper = os.path.join(os.path.dirname(os.path.abspath(exe)), "tests", "testwindows.exe")
    desktop = subprocess.Popen(["wine", keeper, winpath(stop), "ZantoRunner start-up benchmark"],
                               stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    time.sleep(2)
    empty_times, floor_times, run_times, phases = [], [], [], {}
    for _ in range(runs):
        t = time.perf_counter()
        subprocess.run(["wine", empty], capture_output=True)
        empty_times.append(time.perf_counter() - t)
        t = time.perf_counter()
        subprocess.run(["wine", floor], capture_output=True)
        floor_times.append(time.perf_counter() - t)
        t = time.perf_counter()
        r = subprocess.run(["wine", exe, "/r", winpath(script)], capture_output=True, env=env)
        run_times.append(time.perf_counter() - t)
        for name, ms in re.findall(r"^startup: (\S+) (\d+)", r.stderr.decode("latin-1"), re.M):
            phases.setdefault(name, []).append(int(ms))
    open(stop, "w").close()
    desktop.wait()
    e, z = statistics.median(empty_times) * 1000, statistics.median(run_times) * 1000
    ratio = z / e if e else 0
    print("start-up of a one-step /r run: %.0f ms; empty GUI program: %.0f ms; ratio %.1f (target <= 3: %s)"
          % (z, e, ratio, "met" if ratio <= 3 else "missed"))
    f = statistics.median(floor_times) * 1000
    print("  floor (COM, common controls and one hidden window, nothing else): %.0f ms = %.1f x the empty program;"
          " the run is %.2f x the floor" % (f, f / e if e else 0, z / f if f else 0))
    previous = 0
    split = []
    for name in ("main", "com-and-controls", "window", "script", "run-started", "loop-ended", "end"):
        if name in phases:
            at = statistics.median(phases[name])
            split.append("%s +%d" % (name, at - previous))
            previous = at
    print("  split (ms, median): " + ", ".join(split))


if __name__ == "__main__":
    main()
