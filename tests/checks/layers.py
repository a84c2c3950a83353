#!/usr/bin/env python3
"""Fails when an include in src/ crosses a layer the wrong way.

The layers, bottom to top (docs/architecture.md):
  base < script < run < desktop, system, net (peers) < products < editor < app
A file may include headers of its own layer and of the layers below it.
resources/ holds only ids and may be included anywhere. The run engine calls
the categories through the table it is handed; the few rules of its own that
need a category are listed in RUN_NEEDS, and any other is a crossing.
"""
import os
import re
import sys

RANK = {"base": 0, "resources": 0, "script": 1, "run": 2,
        "desktop": 3, "system": 3, "net": 3, "products": 4, "editor": 5, "app": 6}

# What the run engine includes of the categories, and why (see each file's
# header comment).
RUN_NEEDS = {
    "run/runcore.cpp": {"desktop/keypress.h", "desktop/popups.h", "desktop/prompts.h", "desktop/playbackhook.h"},
    "run/flow.cpp": {"desktop/imagesearch.h", "desktop/searchfields.h", "desktop/windowmatch.h",
                     "net/resultset.h", "system/filelines.h"},
    "run/failure.cpp": {"desktop/screencapture.h"},
}

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')


def crossings(src):
    found = []
    for folder, _, files in os.walk(src):
        for name in sorted(files):
            path = os.path.join(folder, name)
            rel = os.path.relpath(path, src).replace(os.sep, "/")
            layer = rel.split("/")[0]
            if layer not in RANK:
                found.append(f"{rel}: folder '{layer}' has no layer")
                continue
            with open(path, encoding="latin-1") as f:
                for number, line in enumerate(f, 1):
                    m = INCLUDE.match(line)
                    if not m:
                        continue
                    target = m.group(1)
                    other = target.split("/")[0]
                    if "/" not in target and layer == "resources":
                        continue  # the resource scripts include each other by name
                    if "/" not in target or other not in RANK:
                        found.append(f"{rel}:{number}: includes \"{target}\", which is in no layer")
                        continue
                    if layer == "run" and RANK[other] == 3:
                        if target not in RUN_NEEDS.get(rel, ()):
                            found.append(f"{rel}:{number}: the run engine includes \"{target}\"; "
                                         "categories are reached through the dispatch table")
                    elif RANK[other] > RANK[layer]:
                        found.append(f"{rel}:{number}: {layer} includes \"{target}\" of {other}, a layer above it")
    return found


def main():
    src = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "..", "..", "src")
    found = crossings(src)
    for line in found:
        print(line)
    print(f"{len(found)} include(s) crossing a layer the wrong way")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
