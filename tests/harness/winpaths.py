"""Windows paths for the files the harness hands to programs under Wine.

The program takes its switches ("-r", "-e", "-v", ...) out of its command line
wherever they stand, so a path like Z:\\home\\me\\zanto-runner\\... loses
letters before the program opens it. dev.sh maps drive letters of the prefix
onto the build folder and the checkout (dosdevices\\t: and s:); a path under
one of them is given through its drive, whatever the checkout's path holds
(dashes, blanks, "=", "%", letters beyond ASCII). Anything else goes through
Z:, Wine's drive for the whole Linux tree.
"""
import os


def _drives():
    """(Linux folder, drive) for each mapped drive but C: and Z:, longest first."""
    prefix = os.environ.get("WINEPREFIX", "")
    found = []
    folder = os.path.join(prefix, "dosdevices") if prefix else ""
    if folder and os.path.isdir(folder):
        for name in os.listdir(folder):
            if len(name) != 2 or name[1] != ":" or name.lower() in ("c:", "z:"):
                continue
            target = os.path.realpath(os.path.join(folder, name))
            if os.path.isdir(target) and target != "/":
                found.append((target, name.upper()))
    found.sort(key=lambda d: len(d[0]), reverse=True)
    return found


def winpath(path):
    """The Windows name of a Linux path, through a mapped drive where one holds it."""
    full = os.path.realpath(os.path.abspath(path))
    for folder, drive in _drives():
        if full == folder or full.startswith(folder + "/"):
            return drive + (full[len(folder):].replace("/", "\\") or "\\")
    return "Z:" + full.replace("/", "\\")


def unixpath(path):
    """The Linux path of a Windows name that winpath gave (any mapped drive, or Z:)."""
    drive, rest = path[:2].upper(), path[2:].replace("\\", "/")
    if drive == "Z:":
        return rest
    for folder, name in _drives():
        if name == drive:
            return folder + rest
    raise ValueError("no mapped drive for " + path)
