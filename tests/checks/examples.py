#!/usr/bin/env python3
"""Every script in examples/ checks clean: "ZantoRunner.exe /check" finds
nothing in it (exit code 0).

    examples.py WINE-RUN ZANTORUNNER.EXE EXAMPLES-FOLDER
"""
import glob
import os
import subprocess
import sys


sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "harness"))
from winpaths import winpath  # noqa: E402  (the harness's drives: no "-r" of the path reaches the program)


def main():
    wine, exe, folder = sys.argv[1:4]
    failed = 0
    scripts = sorted(glob.glob(os.path.join(folder, "*.zxm")))
    for script in scripts:
        r = subprocess.run([wine, winpath(exe), "/check", winpath(script)], capture_output=True)
        out = r.stdout.decode("latin-1").strip()
        if r.returncode != 0:
            failed += 1
            print("%s: exit %d\n%s" % (os.path.basename(script), r.returncode, out))
    print("%d passed, %d failed" % (len(scripts) - failed, failed))
    return 1 if failed or not scripts else 0


if __name__ == "__main__":
    sys.exit(main())
