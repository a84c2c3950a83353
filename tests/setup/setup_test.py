#!/usr/bin/python3
"""The x64 setup, as a user and a fleet use it, in a fresh Wine prefix of its
own (never the suite's shared one):

1. a silent install for this user: the files (byte for byte as the release
   zip holds them), the Start menu shortcuts, the .zxm association in
   HKCU\\Software\\Classes, the entry in Apps & features;
2. a script run through its Run verb as a user does (the real program, a
   hidden run), which leaves a user variable among the settings; a setting,
   scripts and a long variable's file written by the user;
3. a second install over the first: an upgrade in place that restores the
   program's files and keeps the user's settings and files;
4. the silent uninstall by the entry's quiet command: the program, its
   shortcuts, the association and the entry go, the user's files and
   settings stay; again with /PURGE, which takes the settings too;
5. the install for everyone (/ALLUSERS): Program Files, HKLM, and a .zxm
   opened through the shell with the Run verb runs hidden with /r (Wine's
   shell reads only the machine's classes, so the per-user association is
   checked in the registry only); its uninstall;
6. an upgrade that cannot write the program's files (another program holds
   one, as a running ZantoRunner does) ends with a non-zero exit code.

    setup_test.py SETUP.exe RELEASE.zip HELPERS-FOLDER WORK-FOLDER PREFIX.reg

HELPERS-FOLDER holds the tests' shellverb.exe, launch.exe and holdfile.exe.
"""
import os
import shutil
import subprocess
import sys
import time
import zipfile

FILE_TYPE = "ZantoRunner File"
UNINSTALL = r"Software\Microsoft\Windows\CurrentVersion\Uninstall\ZantoRunner"
SHORTCUTS = {  # Start menu entry: the end of its target
    "ZantoRunner.lnk": "\\ZantoRunner.exe",
    "ZantoRunner Help.lnk": "\\ZantoRunner.chm",
    "ZantoRunner Examples.lnk": "\\examples",
}
JOB = """<?xml version="1.0" ?>
<ZantoRunner>
<step><action>Write/Create File</action><value1>C:\\scripts\\ran.txt</value1><text>ran hidden</text></step>
<step><action>Create/Set Variable</action><text>from the job</text><output value="fromjob">Variable</output></step>
<step><action>Exit Run</action><text>42</text></step>
</ZantoRunner>
"""

failures = []
checks = 0


def check(condition, what):
    global checks
    checks += 1
    if not condition:
        failures.append(what)
        print("FAILED: " + what, flush=True)
    return condition


class Prefix:
    pass


def wine(prefix, *args, timeout=120):
    result = subprocess.run(["wine", *args], env=prefix.env, capture_output=True, timeout=timeout,
                            stdin=subprocess.DEVNULL)
    return result.returncode, result.stdout.decode("utf-8", "replace")


def unix_path(prefix, windows_path):
    drive, rest = windows_path.split(":", 1)
    assert drive.upper() == "C", windows_path
    return os.path.join(prefix.root, "drive_c", *[p for p in rest.split("\\") if p])


def registry(prefix, key):
    """The key and its subkeys as {subkey (lower case, relative): {value name (lower): data}},
    or None when the key does not exist. The default value's name is ""."""
    code, out = wine(prefix, "reg", "query", key, "/s")
    if code != 0:
        return None
    tree, current = {}, None
    base = key.lower().rstrip("\\")
    for short, full in (("hkcu\\", "hkey_current_user\\"), ("hklm\\", "hkey_local_machine\\")):
        if base.startswith(short):
            base = full + base[len(short):]
    for line in out.replace("\r", "").split("\n"):
        if line.startswith("HKEY_"):
            name = line.strip().lower()
            name = name[len(base):].lstrip("\\") if name.startswith(base) else name
            current = tree.setdefault(name, {})
        elif line.startswith("    ") and current is not None:
            parts = line.strip().split("    ", 2)
            if len(parts) >= 2:
                value_name = "" if parts[0] == "(Default)" else parts[0].lower()
                current[value_name] = parts[2] if len(parts) == 3 else ""
    return tree


def reg_value(tree, subkey, name=""):
    if tree is None:
        return None
    return tree.get(subkey.lower(), {}).get(name.lower())


def lnk_holds(path, text):
    """A shell link names its target in ANSI (its link info) or in UTF-16."""
    with open(path, "rb") as f:
        data = f.read().lower()
    return text.lower().encode("latin-1") in data or text.lower().encode("utf-16-le") in data


def make_prefix(work, prefix_reg):
    prefix = Prefix()
    work = os.path.abspath(work)
    prefix.root = os.path.join(work, "prefix")
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    env = dict(os.environ)
    # No menu entries or MIME types of the Linux desktop from this prefix.
    env.update(WINEPREFIX=prefix.root, WINEARCH="win64", WINEDEBUG="-all",
               WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe=d")
    prefix.env = env
    # One persistent server for the prefix, and Wine's own background
    # processes started with no pipe of ours open, so that no later output
    # pipe is held by them.
    quiet = dict(env=env, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    subprocess.run(["wineserver", "-p"], timeout=60, **quiet)
    subprocess.run(["wineboot", "-i"], timeout=300, **quiet)
    subprocess.run(["wine", "regedit", "/S", prefix_reg], timeout=120, **quiet)
    subprocess.run(["wine", "cmd", "/c", "exit"], timeout=120, **quiet)
    _, out = wine(prefix, "cmd", "/c", "echo %LOCALAPPDATA%^|%APPDATA%^|%ProgramW6432%^|%ProgramData%")
    local, roaming, program_files, program_data = out.strip().split("|")
    prefix.user_dir = local + r"\Programs\ZantoRunner"
    prefix.user_menu = roaming + r"\Microsoft\Windows\Start Menu\Programs\ZantoRunner"
    prefix.machine_dir = program_files + r"\ZantoRunner"
    prefix.machine_menu = program_data + r"\Microsoft\Windows\Start Menu\Programs\ZantoRunner"
    return prefix


def check_installed(prefix, release, folder, menu, root, label):
    """The files, shortcuts, association and entry of one install."""
    base = unix_path(prefix, folder)
    for name, data in release.items():
        path = os.path.join(base, *name.split("/"))
        check(os.path.isfile(path) and open(path, "rb").read() == data,
              "%s: %s is installed as the release holds it" % (label, name))
    check(os.path.isfile(os.path.join(base, "Uninstall.exe")), label + ": Uninstall.exe is installed")
    for link, target in SHORTCUTS.items():
        path = os.path.join(unix_path(prefix, menu), link)
        check(os.path.isfile(path) and lnk_holds(path, folder + target),
              "%s: the Start menu's %s leads to %s" % (label, link, folder + target))
    exe = folder + "\\ZantoRunner.exe"
    classes = registry(prefix, root + r"\Software\Classes\.zxm")
    check(reg_value(classes, "") == FILE_TYPE, "%s: .zxm is a %s" % (label, FILE_TYPE))
    kind = registry(prefix, root + "\\Software\\Classes\\" + FILE_TYPE)
    for verb, switch in (("Open", ""), ("Edit", " /e"), ("Run", " /r"), ("Run in ZantoRunner", " /v")):
        command = reg_value(kind, "shell\\%s\\command" % verb)
        check(command == '"%s"%s "%%1"' % (exe, switch),
              "%s: the %s verb's command is the program%s (it is %r)" % (label, verb, switch, command))
    check(reg_value(kind, "DefaultIcon") == '"%s",0' % exe, label + ": the type's icon is the program's")
    entry = registry(prefix, root + "\\" + UNINSTALL)
    wanted = {"DisplayName": "ZantoRunner", "DisplayVersion": prefix.version,
              "Publisher": "The ZantoRunner developers", "DisplayIcon": '"%s",0' % exe,
              "InstallLocation": folder, "UninstallString": '"%s\\Uninstall.exe"' % folder,
              "QuietUninstallString": '"%s\\Uninstall.exe" /S _?=%s' % (folder, folder)}
    for name, value in wanted.items():
        check(reg_value(entry, "", name) == value,
              "%s: the entry's %s is %r (it is %r)" % (label, name, value, reg_value(entry, "", name)))
    size = reg_value(entry, "", "EstimatedSize") or "0x0"
    check(int(size, 16) * 1024 >= sum(len(d) for d in release.values()),
          label + ": the entry's EstimatedSize covers the files")
    return entry


def check_removed(prefix, release, folder, menu, root, label):
    base = unix_path(prefix, folder)
    left = [name for name in list(release) + ["Uninstall.exe"] if os.path.exists(os.path.join(base, *name.split("/")))]
    check(not left, "%s: the program's files are gone (left: %s)" % (label, ", ".join(left)))
    check(not os.path.exists(unix_path(prefix, menu)), label + ": the Start menu folder is gone")
    check(registry(prefix, root + "\\Software\\Classes\\" + FILE_TYPE) is None, label + ": the file type is gone")
    check(registry(prefix, root + r"\Software\Classes\.zxm") is None, label + ": .zxm is gone")
    check(registry(prefix, root + "\\" + UNINSTALL) is None, label + ": the entry in Apps & features is gone")


def raw(prefix, command):
    """Runs a command line as it stands, as a deployment tool does: Wine would
    quote an argument such as "_?=C:\\Program Files\\ZantoRunner", which the
    uninstaller (and /D= of the setup) must see unquoted."""
    env = dict(prefix.env, ZR_COMMAND_LINE=command)
    result = subprocess.run(["wine", prefix.launch], env=env, capture_output=True, timeout=120,
                            stdin=subprocess.DEVNULL)
    out = result.stdout.decode("utf-8", "replace")
    lines = [l for l in out.splitlines() if l.startswith("EXIT ")]
    return int(lines[-1].split()[1]) if lines else -1


def quiet_uninstall(prefix, entry, extra=""):
    """Runs the entry's quiet command, and waits for it to end."""
    command = reg_value(entry, "", "QuietUninstallString") or ""
    # _?= stays last: the uninstaller reads everything after it as the folder.
    head, marker, folder = command.partition(" _?=")
    code = raw(prefix, head + extra + marker + folder)
    # Uninstall.exe cannot delete itself while it runs: a copy of it removes
    # it (and the folder, when empty) once it has ended.
    left = unix_path(prefix, folder + "\\Uninstall.exe")
    deadline = time.time() + 60
    while os.path.exists(left) and time.time() < deadline:
        time.sleep(0.1)
    return code


def main():
    setup, release_zip, helpers, work, prefix_reg = sys.argv[1:6]
    started = time.time()
    release = {}
    with zipfile.ZipFile(release_zip) as z:
        for info in z.infolist():
            if not info.is_dir():
                release[info.filename.split("/", 1)[1]] = z.read(info)
    prefix = make_prefix(work, prefix_reg)
    prefix.version = os.path.basename(release_zip).split("-")[1]
    prefix.launch = os.path.join(helpers, "launch.exe")
    try:
        run(prefix, setup, release, helpers)
    finally:
        subprocess.run(["wineserver", "-k"], env=prefix.env, capture_output=True, timeout=60)
    print("%d checks, %d failed (%.0f s)" % (checks, len(failures), time.time() - started))
    return 1 if failures else 0


def run(prefix, setup, release, helpers):
    user_root, folder, menu = "HKCU", prefix.user_dir, prefix.user_menu
    base = unix_path(prefix, folder)

    # 1. For this user, silently.
    code, _ = wine(prefix, setup, "/S")
    check(code == 0, "the silent install ends with 0 (it ended with %d)" % code)
    check_installed(prefix, release, folder, menu, user_root, "per-user install")
    check(registry(prefix, r"HKLM\Software\Classes\.zxm") is None, "the per-user install leaves HKLM's classes alone")

    # 2. What the user makes and keeps: a setting, scripts beside the program
    # and among the examples, a long variable's file.
    wine(prefix, "reg", "add", r"HKCU\SOFTWARE\ZantoRunner", "/v", "ShowSplash", "/t", "REG_DWORD", "/d", "0", "/f")
    user_files = {"mine.zxm": b"<ZantoRunner/>", "examples/mine too.zxm": b"<ZantoRunner/>",
                  "long.ZANTO_var": b"a value too long for the registry"}
    for name, data in user_files.items():
        with open(os.path.join(base, *name.split("/")), "wb") as f:
            f.write(data)
    # A program file damaged since: the upgrade writes it again.
    with open(os.path.join(base, "README.txt"), "wb") as f:
        f.write(b"damaged")

    # 3. Again over it, silently, without naming the folder.
    code, _ = wine(prefix, setup, "/S")
    check(code == 0, "the upgrade ends with 0 (it ended with %d)" % code)
    entry = check_installed(prefix, release, folder, menu, user_root, "upgrade")
    settings = registry(prefix, r"HKCU\SOFTWARE\ZantoRunner")
    check(reg_value(settings, "", "ShowSplash") == "0x0", "the upgrade keeps the setting written in between")
    for name, data in user_files.items():
        path = os.path.join(base, *name.split("/"))
        check(os.path.isfile(path) and open(path, "rb").read() == data, "the upgrade keeps the user's " + name)

    # 4. The quiet uninstall: only the user's own files and settings remain.
    code = quiet_uninstall(prefix, entry)
    check(code == 0, "the quiet uninstall ends with 0 (it ended with %d)" % code)
    check_removed(prefix, release, folder, menu, user_root, "uninstall")
    for name, data in user_files.items():
        path = os.path.join(base, *name.split("/"))
        check(os.path.isfile(path) and open(path, "rb").read() == data, "the uninstall keeps the user's " + name)
    left = sorted(os.listdir(base)) if os.path.isdir(base) else []
    check(left == ["examples", "long.ZANTO_var", "mine.zxm"], "only the user's files remain (%s)" % left)
    settings = registry(prefix, r"HKCU\SOFTWARE\ZantoRunner")
    check(reg_value(settings, "", "ShowSplash") == "0x0", "the uninstall keeps the user's settings")

    # With /PURGE the settings and the long variables' files go too.
    code, _ = wine(prefix, setup, "/S")
    check(code == 0, "the install after the uninstall ends with 0 (it ended with %d)" % code)
    entry = registry(prefix, user_root + "\\" + UNINSTALL)
    code = quiet_uninstall(prefix, entry, " /PURGE")
    check(code == 0, "the quiet uninstall with /PURGE ends with 0 (it ended with %d)" % code)
    check_removed(prefix, release, folder, menu, user_root, "uninstall /PURGE")
    check(registry(prefix, r"HKCU\SOFTWARE\ZantoRunner") is None, "/PURGE removes the settings")
    check(not os.path.exists(os.path.join(base, "long.ZANTO_var")), "/PURGE removes the long variables' files")
    for name in ("mine.zxm", "examples/mine too.zxm"):
        check(os.path.isfile(os.path.join(base, *name.split("/"))), "/PURGE keeps the user's script " + name)

    # 5. For everyone, and a script opened through the shell with Run.
    folder, menu = prefix.machine_dir, prefix.machine_menu
    code, _ = wine(prefix, setup, "/S", "/ALLUSERS")
    check(code == 0, "the install for everyone ends with 0 (it ended with %d)" % code)
    entry = check_installed(prefix, release, folder, menu, "HKLM", "install for everyone")
    os.makedirs(os.path.join(prefix.root, "drive_c", "scripts"), exist_ok=True)
    with open(os.path.join(prefix.root, "drive_c", "scripts", "job.zxm"), "w", newline="\r\n") as f:
        f.write(JOB)
    code, out = wine(prefix, os.path.join(helpers, "shellverb.exe"), "Run", r"C:\scripts\job.zxm")
    check("EXIT 42" in out, "a .zxm opened with the Run verb runs and returns its exit code (%r)" % out.strip())
    ran = os.path.join(prefix.root, "drive_c", "scripts", "ran.txt")
    check(os.path.isfile(ran) and open(ran, "rb").read() == b"ran hidden", "the Run verb's run wrote its file")
    variables = registry(prefix, r"HKCU\SOFTWARE\ZantoRunner\UserVariables")
    check(reg_value(variables, "", "fromjob") == "from the job", "the Run verb's run saved its variable")
    code = quiet_uninstall(prefix, entry)
    check(code == 0, "the quiet uninstall for everyone ends with 0 (it ended with %d)" % code)
    check_removed(prefix, release, folder, menu, "HKLM", "uninstall for everyone")
    check(not os.path.exists(unix_path(prefix, folder)), "the folder in Program Files is gone")

    # 6. A folder of the user's choice, named as a deployment tool passes it
    # (last, unquoted, with its blank); then an upgrade while another program
    # holds one of the program's files, as the program itself does while it
    # runs: the exit code says it failed.
    folder = r"C:\Tools\Zanto Runner"
    code = raw(prefix, '"%s" /S /D=%s' % (windows_path(setup), folder))
    check(code == 0, "the install into a folder named by /D= ends with 0 (it ended with %d)" % code)
    check(os.path.isfile(unix_path(prefix, folder + r"\ZantoRunner.exe")), "/D= names the folder")
    stop = os.path.join(prefix.root, "drive_c", "stop-holding")
    holder = subprocess.Popen(["wine", os.path.join(helpers, "holdfile.exe"), r"C:\stop-holding",
                               folder + r"\ZantoRunner.chm"],
                              env=prefix.env, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE)
    try:
        ready = holder.stdout.readline().decode().strip()
        check(ready == "READY", "the helper holds ZantoRunner.chm (%r)" % ready)
        code, _ = wine(prefix, setup, "/S")
        check(code == 2, "an upgrade that cannot write a file ends with 2 (it ended with %d)" % code)
    finally:
        open(stop, "w").close()
        holder.wait(timeout=60)
    code = quiet_uninstall(prefix, registry(prefix, "HKCU\\" + UNINSTALL))
    check(code == 0, "the uninstall after the held upgrade ends with 0 (it ended with %d)" % code)


def windows_path(path):
    return "Z:" + os.path.abspath(path).replace("/", "\\")


if __name__ == "__main__":
    sys.exit(main())
