#!/usr/bin/env python3
"""Writes the setup program of one release from its zip, so that the zip's
file list (cmake/dist/make-zip.py) is the only one: the setup installs what
the zip holds, and its uninstaller removes exactly that and nothing else.

    make-setup.py RELEASE.zip SOURCE-FOLDER VERSION ARCH WORK-FOLDER OUT-setup.exe

In WORK-FOLDER it unpacks the zip into stage/, writes files.nsh (the File
and Delete lines and the installed size), copies the icon, and runs
makensis with -NOCD there: the NSIS script then names only paths relative
to that folder.
"""
import math
import os
import shutil
import subprocess
import sys
import zipfile


def nsis_text(text):
    """A text as NSIS reads it between double quotes."""
    return text.replace("$", "$$").replace('"', '$\\"')


def four_part(version):
    parts = [p for p in version.split(".") if p.isdigit()][:4]
    return ".".join(parts + ["0"] * (4 - len(parts)))


def main():
    zip_path, source, version, arch, work, out = sys.argv[1:7]
    shutil.rmtree(work, ignore_errors=True)
    stage = os.path.join(work, "stage")
    os.makedirs(stage)
    files = []  # (folder inside the install, name), in the zip's order
    total = 0
    with zipfile.ZipFile(zip_path) as z:
        for info in z.infolist():
            if info.is_dir():
                continue
            # Every entry sits in the release's one top folder.
            inner = info.filename.split("/", 1)[1]
            folder, name = os.path.split(inner)
            target = os.path.join(stage, folder, name)
            os.makedirs(os.path.dirname(target), exist_ok=True)
            with z.open(info) as src, open(target, "wb") as dst:
                shutil.copyfileobj(src, dst)
            files.append((folder, name))
            total += info.file_size
    if not any(folder == "" and name == "ZantoRunner.exe" for folder, name in files):
        print("%s holds no ZantoRunner.exe" % zip_path)
        return 1
    lines = ["; Written by make-setup.py from %s." % nsis_text(os.path.basename(zip_path)),
             "!define INSTALLED_KB %d" % math.ceil(total / 1024), "",
             "!macro ZR_INSTALL_FILES"]
    folders = sorted({folder for folder, _ in files}, key=lambda f: (f.count("/"), f))
    for folder in folders:
        win = folder.replace("/", "\\")
        lines.append('  SetOutPath "$INSTDIR%s"' % nsis_text("\\" + win if win else ""))
        for f, name in files:
            if f == folder:
                lines.append('  File "%s"' % nsis_text("stage/" + (folder + "/" if folder else "") + name))
    lines.append('  SetOutPath "$INSTDIR"')
    lines += ["!macroend", "", "!macro ZR_REMOVE_FILES"]
    for folder, name in files:
        win = (folder.replace("/", "\\") + "\\" if folder else "") + name
        lines.append('  Delete "$INSTDIR\\%s"' % nsis_text(win))
    # Deepest folders first; each goes only when it is empty.
    for folder in sorted(folders, key=lambda f: -f.count("/")):
        if folder:
            lines.append('  RMDir "$INSTDIR\\%s"' % nsis_text(folder.replace("/", "\\")))
    lines += ["!macroend", ""]
    with open(os.path.join(work, "files.nsh"), "w", encoding="utf-8-sig", newline="\r\n") as f:
        f.write("\n".join(lines))
    shutil.copy(os.path.join(os.path.abspath(source), "src", "resources", "zantorunner.ico"), work)
    command = ["makensis", "-V2", "-NOCD", "-DVERSION=" + version, "-DVERSION4=" + four_part(version),
               "-DARCH=" + arch, os.path.join(os.path.abspath(source), "cmake", "setup", "zantorunner.nsi")]
    result = subprocess.run(command, cwd=work)
    if result.returncode != 0:
        print("makensis failed (%d)" % result.returncode)
        return 1
    os.makedirs(os.path.dirname(os.path.abspath(out)), exist_ok=True)
    shutil.move(os.path.join(work, "package.exe"), out)
    print("%s: %d files, %d KB installed" % (out, len(files), math.ceil(total / 1024)))
    return 0


if __name__ == "__main__":
    sys.exit(main())
