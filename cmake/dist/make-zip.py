#!/usr/bin/env python3
"""Writes the release zip of one build: the program, the runtime and its two
templates, the help file when there is one, examples/, README.txt and the
licence, all in one folder named after the release.

    make-zip.py BUILD-FOLDER SOURCE-FOLDER VERSION ARCH OUT.zip
"""
import glob
import os
import sys
import zipfile


def main():
    build, source, version, arch, out = sys.argv[1:6]
    top = "ZantoRunner-%s-%s" % (version, arch)
    files = [(os.path.join(build, name), name) for name in
             ("ZantoRunner.exe", "ZantoRunnerRuntime.exe", "ZantoRunnerA.LIB", "ZantoRunnerB.LIB", "ZantoRunner.chm")]
    # The examples with their folders (examples/fleet holds a scheduler's
    # task, a pipeline and a script that runs a folder of scripts).
    examples = os.path.join(source, "examples")
    files += [(path, "examples/" + os.path.relpath(path, examples).replace(os.sep, "/"))
              for path in sorted(glob.glob(os.path.join(examples, "**", "*"), recursive=True))
              if os.path.isfile(path)]
    files.append((os.path.join(build, "tests", "orderform.exe"), "examples/orderform.exe"))
    files += [(os.path.join(source, "cmake", "dist", "README.txt"), "README.txt"),
              (os.path.join(source, "LICENSE"), "LICENSE.txt")]
    missing = [path for path, _ in files if not os.path.exists(path)]
    if missing:
        print("missing: " + ", ".join(missing))
        return 1
    os.makedirs(os.path.dirname(out), exist_ok=True)
    with zipfile.ZipFile(out, "w", zipfile.ZIP_DEFLATED) as z:
        for path, name in files:
            z.write(path, top + "/" + name)
    print("%s: %d files" % (out, len(files)))
    return 0


if __name__ == "__main__":
    sys.exit(main())
