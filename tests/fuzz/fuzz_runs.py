#!/usr/bin/python3
"""The whole-program fuzz: generated scripts run by the real program.

    fuzz_runs.py [COUNT] [SEED] [--build build/x64] [--workers 4] [--keep-dir DIR] [--verbose] [--reduce SCRIPT]

Scripts are made from the steps of the scenario and example scripts:
recombined, their fields replaced by hostile values, blocks cut open, jumps
to nowhere, a script calling itself, the same file by every spelling,
reserved device names, damaged bytes. Each runs with the real program,
`/r /unattended`, a run limit of 1 second (the setting UnattendedTimeLimit)
and a wall-clock limit of its own, and is classed:

    crash        an unhandled exception: Wine's "Unhandled" on standard error,
                 an exception code as exit code, or the runtime's abort
    hang         still running 10 seconds past its run limit
    left behind  a process that the run started, alive after the run ended

A script of any of these is kept (DIR/KIND-SEED-N.zxm with its standard error
beside it, one a signature: see signature()) and replayed first by every
later campaign, together with the reproducers kept there by hand. The last line says
"N runs: X crashes, Y hangs, Z left behind"; before it stand a table of how
often each action ran and the runs per second. The exit code is 1 when any
run was classed, else 0.

Safety. Generated scripts do what nobody checked, so they run:
- as the unprivileged user "zrfuzz" (made here if missing, with its own HOME),
- in a network namespace of their own with loopback only (the driver starts
  itself again under `unshare -n`),
- in Wine prefixes of their own (one a worker, owned by that user) whose
  drives other than C: are removed after wineboot, so that no path reaches
  the Linux file system, on a copy of the program in the prefix's C:,
- on an Xvfb of their own (one a worker),
- with no action that starts other programs, reaches a network or a
  database, calls DLLs, maps drives, changes the display or ends the session
  (EXCLUDED below; the one program a script may start is this program
  itself, through "Call Script").
"""
import argparse
import os
import pwd
import random
import re
import shutil
import signal
import subprocess
import sys
import threading
import time
from collections import Counter

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
USER = "zrfuzz"
RUN_LIMIT = 1                 # seconds, the setting UnattendedTimeLimit
WALL_LIMIT = RUN_LIMIT + 10   # seconds, after which a run is a hang
# Inside every prefix the same paths, so that a kept script runs in any worker.
PROGRAM = "C:\\zr\\ZantoRunner.exe"
WORK = "C:\\work"
SCRIPT = WORK + "\\run.zxm"

# What is never generated: by category (the catalogue's numbers) and by name.
# Run Program (2) starts other programs; only "Call Script", which starts this
# program, stays. Internet (11), Database (12) and External Functions (17)
# reach networks, data sources and DLLs.
EXCLUDED_CATEGORIES = {2: "starts other programs", 11: "reaches a network", 12: "reaches a database",
                       17: "calls DLLs and other programs' windows"}
ALLOWED_IN_EXCLUDED = {"Call Script"}
EXCLUDED_ACTIONS = {
    "Map Drive": "maps drives", "Map Drive Prompt": "maps drives",
    "Video Display Mode": "changes the display", "Disable Screen Saver": "changes the display",
    "Enable Screen Saver": "changes the display",
    "Logoff": "ends the session", "Restart": "ends the session", "Shutdown": "ends the session",
    "Start Browser": "starts other programs", "Start Email": "starts other programs",
}

FAILURE_MODES = ["Ignore/Continue", "Stop Silently", "Display Error and Stop", "Display Error and Continue",
                 "Retry the Step x Times", "Jump to Label", "Ask to Continue", "Restart Script", "Set Variable"]
FUNCTIONS = ["Uppercase", "Lowercase", "ReplaceText", "InsertText", "GetSubText", "Length", "FindText",
             "CountItems", "Trim", "CALC"]
FIELDS = ["text", "value1", "value2", "value3", "value4", "value5", "value6", "value7", "value8", "timeout",
          "options", "comment"]

# Files every run finds in its work folder.
WORK_FILES = {
    "lines.txt": b"a\r\n\r\nb\r\n",
    "same.txt": b"same\r\n",
    "orders.csv": b"id,name\r\n1,one\r\n2,two\r\n",
    "child.zxm": b'<?xml version="1.0" ?>\r\n<ZantoRunner>\r\n<step><action>Write to Log</action>'
                 b'<text>child</text></step>\r\n</ZantoRunner>\r\n',
}


# ---------------------------------------------------------------- catalogue
def read_catalogue():
    """The action names and categories, from the program's own table."""
    text = open(os.path.join(ROOT, "src", "script", "catalogue.cpp"), encoding="latin-1").read()
    actions = {}
    for name, cat in re.findall(r'^\s*\{"([^"]+)", (\d+),', text, re.M):
        if int(cat) < 100000:
            actions[name] = int(cat)
    return actions


def excluded(name, catalogue):
    name = name.strip()
    if name in EXCLUDED_ACTIONS:
        return True
    low = {n.lower(): c for n, c in catalogue.items()}
    cat = low.get(name.lower())
    return cat in EXCLUDED_CATEGORIES and name not in ALLOWED_IN_EXCLUDED


def forbidden_in(text, catalogue):
    """A generated text is checked whole once more: no excluded action in any
    step, whatever the mutations did."""
    for m in re.finditer(rb"<action>(.*?)</action>", text, re.S | re.I):
        name = m.group(1).decode("latin-1").strip()
        if excluded(name, catalogue):
            return name
        # The reader maps a few old names by "contains"; none of them leads to
        # an excluded action, but a name that holds an excluded one is refused.
        for bad in EXCLUDED_ACTIONS:
            if bad.lower() in name.lower():
                return name
    return None


# ---------------------------------------------------------------- generator
def source_steps(catalogue):
    paths = sorted(p for d in ("tests/scenario", "examples") for p in
                   (os.path.join(ROOT, d, f) for f in os.listdir(os.path.join(ROOT, d))) if p.endswith(".zxm"))
    steps = []
    for path in paths:
        body = open(path, "rb").read().decode("latin-1")
        body = re.sub(r"<!--.*?-->", "", body, flags=re.S)
        for m in re.finditer(r"<step>.*?</step>", body, re.S | re.I):
            step = m.group(0).replace("{dir}", WORK).replace("{web}", "http://127.0.0.1:9")
            a = re.search(r"<action>(.*?)</action>", step, re.S | re.I)
            if a and not excluded(a.group(1), catalogue):
                steps.append(step)
    return steps


def xml(text):
    return text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")


class Generator:
    def __init__(self, seed, catalogue):
        self.rng = random.Random(seed)
        self.catalogue = catalogue
        self.allowed = sorted(n for n in catalogue if not excluded(n, catalogue))
        self.pool = source_steps(catalogue)

    # Hostile values, by kind.
    def number(self):
        r = self.rng
        return r.choice(["2147483647", "2147483648", "4294967295", "4294967296", "9223372036854775807",
                         "99999999999999999999999999999999", "0x7fffffff", "0xFFFFFFFFFFFFFFFF", "-1", "-2",
                         "-2147483648", "-99999999999", "-0", "0", "", " ", "abc", "1e308", "NaN", "1,000,000",
                         "--5", "5-", "0x", "12abc34", str(r.randint(-10**12, 10**12))])

    def percent(self):
        r = self.rng
        return r.choice(["%" * r.randint(1, 300), "%%a%%", "%x%y%", "%" + "a" * 300 + "%", "%CLIPBOARD%",
                         "%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%%",
                         "%date%%time%" * 50, "%1%2%3%4%5%6%7%8%9%0"])

    def function(self):
        r = self.rng
        name = r.choice(FUNCTIONS)
        kind = r.randrange(6)
        if kind == 0:
            return name + "("
        if kind == 1:
            return name + "(a,b" + ")" * r.randint(0, 3) + ")))"
        if kind == 2:
            depth = r.randint(20, 400)
            return (name + "(") * depth + "x" + ")" * r.randint(0, depth)
        if kind == 3:
            inner = "QQ"
            for _ in range(r.randint(2, 30)):
                inner = "ReplaceText(%s,Q,QQ)" % inner
            return inner
        if kind == 4:
            return "CALC(" + "(" * r.randint(1, 500) + "1+" * r.randint(1, 50) + "1" + ")" * r.randint(0, 500) + ")"
        return "GetSubText(%s,%s,%s)" % (self.number(), self.number(), self.number())

    def long_text(self):
        r = self.rng
        unit = r.choice(["A", "%", "{Enter}", "x,", "(", "&amp;", "\\", " "])
        return (unit * (70000 // len(unit) + 1))[:r.choice([70000, 65536, 70001, 100000])]

    def spelling(self, name="same.txt"):
        base, ext = os.path.splitext(name)
        return self.rng.choice([
            WORK + "\\" + name, WORK.upper() + "\\" + name.upper(), WORK.lower() + "\\" + name.title(),
            WORK.replace("\\", "/") + "/" + name, WORK + "\\.\\" + name, WORK + "\\sub\\..\\" + name,
            "\\\\?\\" + WORK + "\\" + name, "\\\\.\\" + WORK + "\\" + name, WORK + "\\" + name + ".",
            WORK + "\\" + name + "   ", WORK + "\\\\" + name, WORK + "\\" + base.upper()[:6] + "~1" + ext.upper(),
            name, ".\\" + name, "..\\work\\" + name, "C:" + name, "\\work\\" + name, WORK + "\\\\\\" + name,
        ])

    def reserved(self):
        return self.rng.choice(["con", "nul", "NUL", "CON.txt", "nul.txt", WORK + "\\con", WORK + "\\aux.log",
                                "prn", "com1", "lpt1", "CONIN$", "CONOUT$", "\\\\.\\nul", WORK + "\\nul\\x.txt",
                                WORK + "\\com9.zxm", "clock$"])

    def hostile(self):
        kind = self.rng.randrange(7)
        return [self.number, self.percent, self.function, self.long_text, self.spelling, self.reserved,
                lambda: self.rng.choice(["", " ", "\t", "\r\n", "\x01\x7f", "\xff\xfe", "{", "}", "{Delay=-1}x",
                                         "(", ")", ",", "\"", "'", "&", "<", "&lt;step&gt;", "]]>"])][kind]()

    # Steps.
    def fresh_step(self, name=None):
        r = self.rng
        name = name or r.choice(self.allowed)
        parts = ["<step><action>%s</action>" % name]
        for field in r.sample(FIELDS, r.randint(0, 5)):
            parts.append("<%s>%s</%s>" % (field, xml(self.hostile()), field))
        if r.random() < 0.3:
            parts.append(self.onfail())
        if r.random() < 0.3:
            parts.append('<output value="%s">Variable</output>' % xml(r.choice(["v", "x", self.number()])))
        parts.append("</step>")
        return "".join(parts)

    def onfail(self):
        r = self.rng
        mode = r.choice(FAILURE_MODES + ["", "Bogus Mode", "Jump", "RETRY", self.long_text()[:300]])
        value = r.choice(["", "nowhere", "there", self.number(), self.percent(), self.long_text()])
        return '<onfail value="%s" image="%s" log="%s">%s</onfail>' % (
            xml(value), r.choice(["0", "1"]), r.choice(["0", "1", "-1"]), xml(mode))

    def replace_field(self, step):
        r = self.rng
        present = re.findall(r"<(text|value\d|timeout|options|comment)>", step)
        field = r.choice(present) if present and r.random() < 0.7 else r.choice(FIELDS)
        value = self.hostile()
        if r.random() < 0.9:
            value = xml(value)
        new = "<%s>%s</%s>" % (field, value, field)
        pattern = re.compile(r"<%s>.*?</%s>" % (field, field), re.S)
        if pattern.search(step):
            return pattern.sub(lambda m: new, step, count=1)
        return step.replace("</step>", new + "</step>")

    def script(self):
        """One script's text (bytes) and the actions of its steps."""
        r = self.rng
        steps = []
        for _ in range(r.randint(1, 12)):
            steps.append(r.choice(self.pool) if r.random() < 0.7 else self.fresh_step())
        for _ in range(r.randint(1, 4)):
            m = r.randrange(10)
            i = r.randrange(len(steps) + 1)
            if m <= 2 and steps:              # a field made hostile
                j = r.randrange(len(steps))
                steps[j] = self.replace_field(steps[j])
            elif m == 3:                      # a block cut open, or opened and never closed
                closers = [k for k, s in enumerate(steps) if re.search(r"<action>(END IF|NEXT LOOP|ELSE)</action>", s)]
                if closers and r.random() < 0.5:
                    del steps[r.choice(closers)]
                else:
                    steps.insert(i, self.fresh_step(r.choice(["IF Expression", "Start 'For' Loop", "Start 'While' Loop",
                                                              "ELSE", "END IF", "NEXT LOOP", "Break out of Loop",
                                                              "Start File Line Loop", "Start Files Loop"])))
            elif m == 4:                      # a jump to nowhere
                steps.insert(i, "<step><action>Goto Label</action><text>%s</text></step>" %
                             xml(r.choice(["nowhere", "", "%", self.long_text()[:400]])))
            elif m == 5:                      # the script calls itself
                text = r.choice([SCRIPT, "run.zxm", SCRIPT.upper(), self.spelling("run.zxm")])
                options = r.choice(["", "<options>Wait For Exit</options>", "<options>wait</options>"])
                limit = r.choice(["", "<timeout>1</timeout>", "<timeout>%s</timeout>" % self.number()])
                steps.insert(i, "<step><action>Call Script</action><text>%s</text>%s%s</step>" % (
                    text, options, limit))
            elif m == 6:                      # the same file by every spelling
                for action in r.sample(["Write/Create File", "Read File", "Copy File", "Move/Rename File",
                                        "Delete File", "Change File Size", "Count File Lines", "IF File Exists"],
                                       r.randint(2, 5)):
                    steps.insert(i, "<step><action>%s</action><value1>%s</value1><text>%s</text>"
                                    "<onfail>Ignore/Continue</onfail></step>" %
                                 (action, xml(self.spelling()), xml(self.spelling())))
            elif m == 7:                      # a reserved name
                steps.insert(i, "<step><action>%s</action><value1>%s</value1><text>%s</text></step>" % (
                    r.choice(["Write/Create File", "Read File", "Copy File", "Delete File", "Create Folder",
                              "Read File Line", "Start File Line Loop", "Screen Image Capture"]),
                    xml(self.reserved()), xml(r.choice([self.reserved(), "x"]))))
            elif m == 8:                      # a copy or move into itself
                key = "HKEY_CURRENT_USER\\Software\\ZrFuzz"
                steps[i:i] = [
                    "<step><action>Write Registry</action><value1>%s\\a</value1><text>1</text></step>" % key,
                    "<step><action>Create Folder</action><value1>%s\\tree\\sub</value1></step>" % WORK,
                    "<step><action>%s</action><value1>%s</value1><text>%s</text></step>" % r.choice([
                        ("Copy Registry", key, key + "\\inside"),
                        ("Copy Registry", key + "\\", key + "\\" + r.choice(["inside\\deeper", ".", ""])),
                        ("Copy Folder", WORK + "\\tree", WORK + "\\tree\\sub\\in"),
                        ("Move/Rename Folder", WORK + "\\tree", WORK + "\\tree\\sub"),
                        ("Copy Folder", WORK, WORK + "\\inside"),
                        ("Copy File", WORK + "\\same.txt", self.spelling())])]
            elif steps:                       # a bad failure mode or label
                j = r.randrange(len(steps))
                steps[j] = re.sub(r"<onfail.*?</onfail>", "", steps[j], flags=re.S).replace(
                    "</step>", self.onfail() + "</step>")
        root = "ZantoTask" if r.random() < 0.05 else "ZantoRunner"
        text = ('<?xml version="1.0" ?>\r\n<%s>\r\n%s\r\n</%s>\r\n' % (root, "\r\n".join(steps), root))
        data = bytearray(text.encode("latin-1", "replace"))
        if r.random() < 0.15:                 # damaged bytes
            for _ in range(r.randint(1, 20)):
                k = r.randrange(len(data))
                op = r.randrange(4)
                if op == 0:
                    data[k] = r.randrange(256)
                elif op == 1:
                    data.insert(k, 0)
                elif op == 2:
                    del data[k:k + r.randint(1, 40)]
                else:
                    data[k:k] = data[k:k + r.randint(1, 200)]
                if not data:
                    data = bytearray(b"<")
        return bytes(data)


# ---------------------------------------------------------------- sandbox
def as_user(env):
    """preexec pieces for a process of the fuzz user."""
    pw = pwd.getpwnam(USER)
    return dict(user=pw.pw_uid, group=pw.pw_gid, extra_groups=[], env=env, cwd=pw.pw_dir)


def ensure_user():
    try:
        pwd.getpwnam(USER)
    except KeyError:
        subprocess.run(["useradd", "--create-home", "--shell", "/usr/sbin/nologin", USER], check=True)
    home = pwd.getpwnam(USER).pw_dir
    os.makedirs(home, exist_ok=True)
    pw = pwd.getpwnam(USER)
    os.chown(home, pw.pw_uid, pw.pw_gid)
    if pw.pw_uid == 0:
        raise SystemExit("the fuzz user must not be root")


def chown_tree(path):
    pw = pwd.getpwnam(USER)
    for d, dirs, files in os.walk(path):
        os.lchown(d, pw.pw_uid, pw.pw_gid)
        for f in dirs + files:
            os.lchown(os.path.join(d, f), pw.pw_uid, pw.pw_gid)


class Worker:
    def __init__(self, index, base, build, cpu):
        self.index = index
        self.prefix = os.path.join(base, "prefix-%d" % index)
        self.build = build
        self.cpu = cpu
        self.xvfb = None
        self.env = None
        self.restarts = 0

    def drive(self, winpath):
        return os.path.join(self.prefix, "drive_c", *winpath[3:].split("\\"))

    def pin(self):
        if self.cpu is not None:
            os.sched_setaffinity(0, {self.cpu})

    def start(self):
        pw = pwd.getpwnam(USER)
        base_env = {"HOME": pw.pw_dir, "USER": USER, "LOGNAME": USER, "PATH": "/usr/bin:/bin",
                    "LANG": "C.UTF-8", "LC_ALL": "C.UTF-8"}
        # The worker's own display.
        r, w = os.pipe()
        self.xvfb = subprocess.Popen(["Xvfb", "-displayfd", str(w), "-screen", "0", "1280x1024x24", "-nolisten", "tcp"],
                                     pass_fds=(w,), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                     start_new_session=True, preexec_fn=self.pin, **as_user(base_env))
        os.close(w)
        display = b""
        while not display.endswith(b"\n"):
            chunk = os.read(r, 16)
            if not chunk:
                raise SystemExit("Xvfb did not start")
            display += chunk
        os.close(r)
        self.env = dict(base_env, WINEPREFIX=self.prefix, WINEDEBUG="-all", WINEARCH="win64",
                        WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe=d", DISPLAY=":" + display.decode().strip())
        ready = os.path.join(self.prefix, ".zr-fuzz-ready")
        if not os.path.exists(ready):
            log("worker %d: preparing its Wine prefix (once)" % self.index)
            shutil.rmtree(self.prefix, ignore_errors=True)
            os.makedirs(self.prefix)
            chown_tree(self.prefix)
            self.wine(["wineboot", "-i"], timeout=300)
            reg = os.path.join(self.prefix, "drive_c", "prefix.reg")
            shutil.copy(os.path.join(ROOT, "tests", "harness", "prefix.reg"), reg)
            chown_tree(reg)
            self.wine(["wine", "regedit", "/S", "C:\\prefix.reg"], timeout=120)
            self.wine(["wineserver", "-w"], timeout=120)
            open(ready, "w").close()
        # Only C: is reachable: every other drive (Z: is the Linux root) and
        # device link goes, and the folder is root's, so that Wine cannot
        # make them again as the fuzz user.
        devices = os.path.join(self.prefix, "dosdevices")
        for name in os.listdir(devices):
            if name.lower() != "c:":
                os.unlink(os.path.join(devices, name))
        os.chown(devices, 0, 0)
        os.chmod(devices, 0o755)
        # A fresh copy of the program and the launcher, root's too, so that
        # no script can delete or change them.
        zr = self.drive("C:\\zr")
        shutil.rmtree(zr, ignore_errors=True)
        os.makedirs(zr)
        shutil.copy(os.path.join(self.build, "ZantoRunner.exe"), zr)
        shutil.copy(os.path.join(self.build, "tests", "fuzzlaunch.exe"), zr)
        os.chmod(zr, 0o755)
        self.restart()
        left = [n for n in os.listdir(devices) if n.lower() != "c:"]
        if left:
            raise SystemExit("worker %d: the prefix has drives besides C: again: %s" % (self.index, left))

    def restart(self):
        """A fresh wineserver for the prefix, with Wine's own background
        programs started before any run (so no run's output handles are
        inherited by them)."""
        self.wine(["wineserver", "-k"], timeout=30, check=False)
        self.wine(["wineserver", "-w"], timeout=30, check=False)
        subprocess.run(["wineserver", "-p"], preexec_fn=self.pin, **as_user(self.env), check=True)
        self.wine(["wine", "cmd", "/c", "exit"], timeout=120, check=False)

    def wine(self, argv, timeout, check=True):
        r = subprocess.run(argv, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                           timeout=timeout, preexec_fn=self.pin, **as_user(self.env))
        if check and r.returncode != 0:
            raise SystemExit("%s failed in worker %d with %d" % (argv[0], self.index, r.returncode))

    def stop(self):
        if self.env:
            subprocess.run(["wineserver", "-k"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                           **as_user(self.env))
        if self.xvfb:
            self.xvfb.terminate()
            try:
                self.xvfb.wait(timeout=10)
            except subprocess.TimeoutExpired:
                self.xvfb.kill()

    def run(self, data):
        """Runs one script; returns (kind or None, exit code, stderr, stdout,
        log, seconds). Exit code 3833 (no window could be created) cannot
        be the script's doing, since the display is there: Wine's desktop
        of this worker is broken, so the worker starts afresh (display,
        wineserver) and the script runs once more. So does a run that the
        launcher could not start at all (Wine refusing a new process, seen
        once in a few thousand right after a wineserver's restart): the
        program never ran, so nothing of it is classed."""
        result = self.run_once(data)
        if result[1] == 3833 or result[0] == "harness":
            self.restarts += 1
            log("worker %d: %s; a fresh display and wineserver" % (
                self.index, "the launcher could not start" if result[0] == "harness"
                else "no window could be created"))
            self.stop()
            self.start()
            result = self.run_once(data)
        return result

    def run_once(self, data):
        work = self.drive(WORK)
        shutil.rmtree(work, ignore_errors=True)
        os.makedirs(work)
        for name, content in WORK_FILES.items():
            with open(os.path.join(work, name), "wb") as f:
                f.write(content)
        with open(self.drive(SCRIPT), "wb") as f:
            f.write(data)
        chown_tree(work)
        started = time.time()
        # The output goes to files, not pipes: a process that Wine starts
        # for itself during a run (a new desktop after a script closed the
        # old one) inherits the handles and would hold a pipe open.
        out_path = os.path.join(self.prefix, "launch.out")
        err_path = os.path.join(self.prefix, "launch.err")
        with open(out_path, "wb") as out_file, open(err_path, "wb") as err_file:
            proc = subprocess.Popen(["wine", self.drive("C:\\zr\\fuzzlaunch.exe"), PROGRAM, SCRIPT, WORK,
                                     str(WALL_LIMIT * 1000)],
                                    stdin=subprocess.DEVNULL, stdout=out_file, stderr=err_file,
                                    start_new_session=True, preexec_fn=self.pin, **as_user(self.env))
        try:
            proc.wait(timeout=WALL_LIMIT + 30)
            outer_hang = False
        except subprocess.TimeoutExpired:
            # The launcher itself did not come back: end everything of this
            # prefix (only this worker's processes live there) and start again.
            outer_hang = True
            self.wine(["wineserver", "-k"], timeout=30, check=False)
            os.killpg(proc.pid, signal.SIGKILL)
            proc.wait()
        out = open(out_path, "rb").read()
        err = open(err_path, "rb").read()
        elapsed = time.time() - started
        out = out.decode("latin-1")
        err = err.decode("latin-1")
        m = re.search(r"^FUZZ EXIT (\d+)", out, re.M)
        code = int(m.group(1)) if m else None
        left = re.findall(r"^FUZZ LEFT (\S+) (\d+)", out, re.M)
        kind = classify(code, err, outer_hang or "FUZZ HANG" in out, left)
        logpath = os.path.join(work, "log.txt")
        logtext = open(logpath, "rb").read().decode("latin-1") if os.path.exists(logpath) else ""
        if code is None and kind is None:
            kind = "harness"
        if kind:
            # A crash, a hang or processes ended by force can leave Wine's
            # desktop unusable for the runs after it (every window creation
            # then fails): the next run starts with a fresh wineserver.
            self.restart()
        if not os.path.exists(os.path.join(self.prefix, "drive_c", "windows", "system32", "kernel32.dll")):
            # A script damaged the prefix: it is made again before the next run.
            log("worker %d: a script damaged the prefix; making it again" % self.index)
            self.stop()
            os.unlink(os.path.join(self.prefix, ".zr-fuzz-ready"))
            self.start()
        return kind, code, err, out, logtext, elapsed


def classify(code, stderr, hung, left):
    if code is not None and (code >= 0xC0000000 or code in (0x80000003, 0xE06D7363, 0x40000015)):
        return "crash"
    if re.search(r"Unhandled|terminate called|requested the Runtime to terminate|Assertion failed", stderr):
        return "crash"
    if hung:
        return "hang"
    if left:
        return "left"
    return None


# ---------------------------------------------------------------- campaign
LOCK = threading.Lock()


def log(text):
    with LOCK:
        print(text, flush=True)


def action_names(log_text, names):
    """The actions of the steps that ran, from the run log's step lines."""
    out = []
    for m in re.finditer(r"^\[STEP \d+\]: (.*)$", log_text, re.M):
        line = m.group(1)
        best = ""
        for n in names:
            if line.startswith(n) and len(n) > len(best) and (len(line) == len(n) or line[len(n)] == " "):
                best = n
        out.append(best or "(unknown action)")
    return out


def write_stderr(stem, code, out, err):
    with open(stem + ".stderr.txt", "w", encoding="latin-1") as f:
        f.write("exit code: %s\n%s%s" % (code, "".join(l + "\n" for l in out.splitlines() if l.startswith("FUZZ ")),
                                          err))


def signature(kind, code, actions, out):
    """What tells one defect from another: for a crash its code and the
    action that ran last, for a hang that action, for processes left behind
    their names (every one so far is a script calling itself, whatever ran
    last)."""
    if kind == "left":
        return (kind, tuple(sorted(set(n.lower() for n, _ in re.findall(r"^FUZZ LEFT (\S+) (\d+)", out, re.M)))))
    return (kind, code if kind == "crash" else None, actions[-1] if actions else None)


def reduce_script(worker, data, kind):
    """Takes steps, then tags, then halves of long texts away from a script
    while its run is still classed `kind`; returns the smallest found."""
    def same(candidate):
        got = worker.run(candidate)[0]
        log("  %d bytes: %s" % (len(candidate), got or "ok"))
        return got == kind

    def pieces(text, pattern):
        return [(m.start(), m.end()) for m in re.finditer(pattern, text, re.S | re.I)]

    text = data.decode("latin-1")
    for pattern in (r"<step>.*?</step>\s*", r"<(text|value\d|timeout|options|comment|output|onfail|indents)\b[^>]*>.*?</\1>"):
        i = len(pieces(text, pattern)) - 1
        while i >= 0:
            spans = pieces(text, pattern)
            if i < len(spans):
                a, b = spans[i]
                candidate = text[:a] + text[b:]
                if same(candidate.encode("latin-1")):
                    text = candidate
            i -= 1
    # Long runs of one piece, halved while the kind stays.
    while True:
        m = max(re.finditer(r"(.{1,8}?)\1{15,}", text, re.S), key=lambda m: len(m.group(0)), default=None)
        if not m:
            break
        half = m.group(1) * (len(m.group(0)) // len(m.group(1)) // 2)
        candidate = text[:m.start()] + half + text[m.end():]
        if not same(candidate.encode("latin-1")):
            break
        text = candidate
    if "<ZantoTask" in text:
        candidate = text.replace("<ZantoTask", "<ZantoRunner").replace("</ZantoTask", "</ZantoRunner")
        if same(candidate.encode("latin-1")):
            text = candidate
    return text.encode("latin-1")


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("count", nargs="?", type=int, default=1000)
    ap.add_argument("seed", nargs="?", type=int, default=None)
    ap.add_argument("--build", default=os.path.join(ROOT, "build", "x64"))
    ap.add_argument("--workers", type=int, default=4)
    ap.add_argument("--keep-dir", default=os.path.join(HERE, "runs"))
    ap.add_argument("--confirm", action="store_true",
                    help="count a hang or a process left behind only when a second run of the script shows it too")
    ap.add_argument("--verbose", action="store_true", help="a line for every run, and the log of each kept one")
    ap.add_argument("--reduce", metavar="SCRIPT", help="make a kept script as small as it can be while its run "
                    "is classed as before; writes SCRIPT-min.zxm")
    ap.add_argument("--in-netns", action="store_true", help=argparse.SUPPRESS)
    args = ap.parse_args()
    if os.geteuid() != 0:
        raise SystemExit("fuzz_runs.py needs root: it makes the fuzz user, its network namespace and its prefixes")
    if not args.in_netns:
        # A network namespace of its own, loopback only, for everything below.
        argv = ["unshare", "-n", "--", sys.executable, os.path.abspath(__file__), *sys.argv[1:], "--in-netns"]
        os.execvp("unshare", argv)
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    seed = args.seed if args.seed is not None else int(time.time())
    build = os.path.abspath(args.build)
    for f in ("ZantoRunner.exe", os.path.join("tests", "fuzzlaunch.exe")):
        if not os.path.exists(os.path.join(build, f)):
            raise SystemExit("missing %s: build with the tests first" % os.path.join(build, f))
    ensure_user()
    # The harness keeps itself on one core; the workers take one core each.
    cpus = list(range(os.cpu_count() or 1))
    try:
        os.sched_setaffinity(0, set(cpus))
    except OSError:
        cpus = sorted(os.sched_getaffinity(0))
    base = os.path.join(build, "fuzz-runs")
    os.makedirs(base, exist_ok=True)
    os.chmod(base, 0o755)
    catalogue = read_catalogue()
    names = sorted(catalogue, key=len, reverse=True)
    gen = Generator(seed, catalogue)

    # The kept scripts first, then the generated ones.
    jobs = []
    keep_paths = {}
    keep_dirs = [os.path.join(HERE, "runs")]
    if os.path.abspath(args.keep_dir) != keep_dirs[0]:
        keep_dirs.append(os.path.abspath(args.keep_dir))
    for d in keep_dirs:
        if os.path.isdir(d):
            for f in sorted(os.listdir(d)):
                if f.endswith(".zxm"):
                    data = open(os.path.join(d, f), "rb").read()
                    jobs.append(("kept " + f, data))
                    keep_paths["kept " + f] = os.path.join(d, f)
    kept_count = len(jobs)
    for i in range(args.count):
        data = gen.script()
        while forbidden_in(data, catalogue):
            data = gen.script()
        jobs.append(("%d-%d" % (seed, i), data))
    for name, data in jobs[:kept_count]:
        bad = forbidden_in(data, catalogue)
        if bad:
            raise SystemExit("kept script %s holds the excluded action %r" % (name, bad))

    workers = [Worker(k, base, build, cpus[k % len(cpus)] if cpus else None) for k in range(max(1, args.workers))]
    if args.reduce:
        w = workers[0]
        try:
            w.start()
            data = open(args.reduce, "rb").read()
            kind = w.run(data)[0]
            log("%s: %s" % (args.reduce, kind or "ok"))
            if kind:
                small = reduce_script(w, data, kind)
                out = os.path.splitext(args.reduce)[0] + "-min.zxm"
                with open(out, "wb") as f:
                    f.write(small)
                final = w.run(small)
                log("%s (%d bytes), %s, exit %s:\n%s\n%s" % (out, len(small), final[0], final[1], final[4], final[2]))
        finally:
            w.stop()
        return 0
    counts = Counter()
    generated = Counter()
    ran = Counter()
    found = []
    next_job = [0]
    started = None

    stopping = threading.Event()

    def work(worker):
        while not stopping.is_set():
            with LOCK:
                if next_job[0] >= len(jobs):
                    return
                name, data = jobs[next_job[0]]
                next_job[0] += 1
            kind, code, err, out, logtext, elapsed = worker.run(data)
            if args.confirm and kind in ("left", "hang"):
                # A process left or a hang that a second run of the same
                # script does not show again is timing of a loaded machine,
                # not the script's doing: the suite's gate counts what
                # repeats. (Crashes always count.)
                again = worker.run(data)
                if again[0] != kind:
                    with LOCK:
                        counts["unconfirmed"] += 1
                        print("unconfirmed %s: %s (exit %s, %.1f s); the second run: %s" % (
                            kind, name, code, elapsed, again[0] or "ok"), flush=True)
                    kind = None
            actions = action_names(logtext, names)
            with LOCK:
                counts["runs"] += 1
                for m in re.finditer(rb"<action>(.*?)</action>", data, re.S | re.I):
                    action = m.group(1).decode("latin-1").strip()
                    generated[action if action in catalogue else "(unknown action)"] += 1
                ran.update(actions)
                if args.verbose:
                    print("run %s: %s, exit %s, %.1f s" % (name, kind or "ok", code, elapsed), flush=True)
                    if name.startswith("kept "):
                        print("".join("    " + l + "\n" for l in (logtext.splitlines() + err.splitlines())[-12:]))
                if kind:
                    counts[kind] += 1
                    found.append((kind, name, data, code, err, out, signature(kind, code, actions, out)))
                    print("%s: %s (exit %s, %.1f s)%s" % (kind, name, code, elapsed,
                          "".join("\n    " + line for line in err.strip().splitlines()[-3:])), flush=True)

    threads = []
    try:
        for w in workers:
            w.start()
        log("fuzz-runs: seed %d, %d kept script(s), %d generated, %d worker(s)" %
            (seed, kept_count, args.count, len(workers)))
        started = time.time()
        threads = [threading.Thread(target=work, args=(w,), daemon=True) for w in workers]
        for t in threads:
            t.start()
        for t in threads:
            t.join()
    except KeyboardInterrupt:
        # The runs under way end by their own limits; no new one starts.
        stopping.set()
        for t in threads:
            t.join(timeout=WALL_LIMIT + 60)
        raise
    finally:
        for w in workers:
            w.stop()
    elapsed = time.time() - started

    # New finds are kept, one a signature: a find like one already kept (the
    # same kind, exit code, last action run and processes left) is counted
    # but not kept again.
    os.makedirs(args.keep_dir, exist_ok=True)
    seen = {sig for kind, name, data, code, err, out, sig in found if name.startswith("kept ")}
    for kind, name, data, code, err, out, sig in found:
        if name.startswith("kept "):
            # A kept script without its standard error gets it (a reproducer
            # written by hand), where finds are kept (not from the suite's
            # run, which keeps its finds in the build folder).
            stem = os.path.splitext(keep_paths[name])[0]
            if (os.path.dirname(keep_paths[name]) == os.path.abspath(args.keep_dir)
                    and not os.path.exists(stem + ".stderr.txt")):
                write_stderr(stem, code, out, err)
            continue
        if sig in seen:
            continue
        seen.add(sig)
        stem = os.path.join(args.keep_dir, "%s-%s" % (kind, name))
        with open(stem + ".zxm", "wb") as f:
            f.write(data)
        write_stderr(stem, code, out, err)
        log("kept %s.zxm" % stem)

    print("\nactions: generated / ran")
    for n in sorted(set(generated) | set(ran), key=lambda n: (-ran[n], n)):
        print("  %-40s %6d %6d" % (n[:40], generated[n], ran[n]))
    rate = counts["runs"] / elapsed if elapsed > 0 else 0.0
    restarts = sum(w.restarts for w in workers)
    print("fuzz-runs: seed %d, %.1f s, %.2f runs/s%s%s" % (
        seed, elapsed, rate, ", %d harness error(s)" % counts["harness"] if counts["harness"] else "",
        ", %d worker restart(s) after exit code 3833 or a failed start" % restarts if restarts else ""))
    if counts["unconfirmed"]:
        print("%d classed run(s) not shown again by a second run (not counted)" % counts["unconfirmed"])
    print("%d runs: %d crashes, %d hangs, %d left behind" % (counts["runs"], counts["crash"], counts["hang"],
                                                              counts["left"]))
    return 1 if counts["crash"] or counts["hang"] or counts["left"] or counts["harness"] else 0


if __name__ == "__main__":
    sys.exit(main())
