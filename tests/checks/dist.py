#!/usr/bin/env python3
"""The release zips hold what a user unzips and runs: the program, the
runtime and its templates, the examples, README.txt and the licence, in one
folder, for both targets; and the programs are of their target's machine.
Beside them stand a setup program per target, itself of that machine, and
SHA256SUMS, which names every other file of the folder with its digest.

    dist.py DIST-FOLDER VERSION
"""
import hashlib
import os
import struct
import sys
import zipfile

MACHINES = {"x64": 0x8664, "x86": 0x14C}


def machine(data):
    pe = struct.unpack_from("<I", data, 0x3C)[0]
    return struct.unpack_from("<H", data, pe + 4)[0]


def main():
    folder, version = sys.argv[1:3]
    failures = []
    for arch, wanted in MACHINES.items():
        path = os.path.join(folder, "ZantoRunner-%s-%s.zip" % (version, arch))
        if not os.path.exists(path):
            failures.append("missing " + path)
            continue
        top = "ZantoRunner-%s-%s/" % (version, arch)
        with zipfile.ZipFile(path) as z:
            names = set(z.namelist())
            for name in ("ZantoRunner.exe", "ZantoRunnerRuntime.exe", "ZantoRunnerA.LIB", "ZantoRunnerB.LIB",
                         "ZantoRunner.chm", "README.txt", "LICENSE.txt", "examples/hello.zxm",
                         "examples/orderform.exe", "examples/fleet/run-all.cmd"):
                if top + name not in names:
                    failures.append("%s lacks %s" % (os.path.basename(path), name))
            if top + "ZantoRunner.exe" in names and machine(z.read(top + "ZantoRunner.exe")) != wanted:
                failures.append("%s: ZantoRunner.exe is not built for %s" % (os.path.basename(path), arch))
        setup = os.path.join(folder, "ZantoRunner-%s-%s-setup.exe" % (version, arch))
        if not os.path.exists(setup):
            failures.append("missing " + setup)
        elif machine(open(setup, "rb").read(4096)) != wanted:
            failures.append("%s is not built for %s" % (os.path.basename(setup), arch))
    sums = os.path.join(folder, "SHA256SUMS")
    listed = {}
    if os.path.exists(sums):
        for line in open(sums, encoding="utf-8"):
            digest, _, name = line.rstrip("\n").partition(" ")
            listed[name.lstrip(" *")] = digest
    else:
        failures.append("missing " + sums)
    for name in sorted(os.listdir(folder)):
        if name == "SHA256SUMS":
            continue
        digest = hashlib.sha256(open(os.path.join(folder, name), "rb").read()).hexdigest()
        if listed.get(name) != digest:
            failures.append("SHA256SUMS: %s %s" % (name, "differs" if name in listed else "is not listed"))
    for f in failures:
        print(f)
    print("%d passed, %d failed" % (len(MACHINES) - len({f.split()[0] for f in failures}), len(failures)))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
