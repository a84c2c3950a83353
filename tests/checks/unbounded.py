#!/usr/bin/env python3
"""Lists every call in src/ that writes text into a buffer without a bound.

Text goes into fixed buffers only through the bounded helpers of
base/text.h (FormatInto, CopyInto, AppendInto and their N forms). The few
calls below are bounded by construction and say why; any other call of
these functions fails the check.
"""
import os
import re
import sys

UNBOUNDED = re.compile(r"\b(wsprintfA|wsprintf|lstrcpyA|lstrcpy|lstrcatA|lstrcat|strcpy|strcat|sprintf|vsprintf|"
                       r"wvsprintfA|wvsprintf|_mbscpy|StrCpyA|StrCatA)\s*\(")

# file -> (count of calls, why they are bounded)
ALLOWED = {
    "base/text.cpp": (1, "wvsprintf into its own 1025-byte buffer, which is its whole reach"),
    "base/log.cpp": (3, "wvsprintf (at most 1024 characters) into lines of 1280 bytes and a block of 1025 or more"),
    "base/settings.cpp": (2, "wvsprintf (at most 1024 characters) into paths of 1025 bytes"),
}


def main():
    src = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "..", "..", "src")
    found = []
    counts = {}
    for folder, _, files in os.walk(src):
        for name in sorted(files):
            path = os.path.join(folder, name)
            rel = os.path.relpath(path, src).replace(os.sep, "/")
            with open(path, encoding="latin-1") as f:
                for number, line in enumerate(f, 1):
                    code = line.split("//")[0]
                    if UNBOUNDED.search(code):
                        counts[rel] = counts.get(rel, 0) + 1
                        found.append((rel, number, line.strip()))
    bad = [f for f in found if f[0] not in ALLOWED]
    for rel, (count, why) in ALLOWED.items():
        if counts.get(rel, 0) > count:
            bad += [f for f in found if f[0] == rel]
    for rel, number, line in bad:
        print("%s:%d: an unbounded write into a buffer: %s" % (rel, number, line))
    print("%d unbounded call(s) outside the bounded helpers" % len(bad))
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
