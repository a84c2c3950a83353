#!/usr/bin/env python3
"""The help follows the program: the pages make-help.py writes from the
program's own tables (helpdump.exe) are those under docs/help, every action
has a section on its category's page at the topic the editor opens for it, and
the built ZantoRunner.chm holds every page.

    help.py WINE-RUN HELPDUMP.EXE SOURCE-ROOT ZANTORUNNER.CHM
"""
import os
import re
import subprocess
import sys
import tempfile


def main():
    wine, dump_exe, root, chm = sys.argv[1:5]
    failures = []
    with tempfile.TemporaryDirectory() as scratch:
        dump = os.path.join(scratch, "dump.txt")
        with open(dump, "wb") as f:
            r = subprocess.run([wine, dump_exe], stdout=f)
        if r.returncode != 0:
            print("helpdump.exe failed with %d" % r.returncode)
            return 1
        pages = os.path.join(scratch, "pages")
        subprocess.run([sys.executable, os.path.join(root, "cmake", "help", "make-help.py"), dump, root, pages],
                       check=True)
        docs = os.path.join(root, "docs", "help")
        for name in sorted(os.listdir(pages)):
            fresh = open(os.path.join(pages, name), encoding="utf-8").read()
            kept = os.path.join(docs, name)
            if not os.path.exists(kept):
                failures.append("docs/help/%s is missing" % name)
            elif open(kept, encoding="utf-8").read() != fresh:
                failures.append("docs/help/%s differs from what the program's tables say" % name)
        # Every action has a topic, where the editor looks for it.
        actions = 0
        lines = open(dump, encoding="latin-1").read().splitlines()
        for i, line in enumerate(lines):
            if not line.startswith("A\t"):
                continue
            actions += 1
            name = line.split("\t")[2]
            topic = next((l.split("\t")[1] for l in lines[i + 1:] if l.startswith("T\t")), "")
            page, _, anchor = topic.partition("#")
            path = os.path.join(pages, page.replace(".htm", ".md"))
            if not page or not os.path.exists(path):
                failures.append("%s: no help page %s" % (name, page or "(none)"))
            elif '<a id="%s"></a>' % anchor not in open(path, encoding="utf-8").read():
                failures.append("%s: %s has no section #%s" % (name, page, anchor))
        if actions < 170:
            failures.append("only %d actions in the dump" % actions)
    # The help file holds a topic for every page.
    data = open(chm, "rb").read() if os.path.exists(chm) else b""
    if not data.startswith(b"ITSF"):
        failures.append("%s is not a help file" % chm)
    else:
        for name in sorted(os.listdir(os.path.join(root, "docs", "help"))):
            topic = "/" + name.replace(".md", ".htm")
            if topic.encode() not in data:
                failures.append("%s lacks the topic %s" % (os.path.basename(chm), topic))
    for f in failures:
        print(f)
    if failures:
        print("Regenerate the pages with ./dev.sh help when the program's tables changed.")
    print("%d problem(s)" % len(failures))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
