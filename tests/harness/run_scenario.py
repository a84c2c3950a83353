#!/usr/bin/python3
"""Runs one scenario: a real .zxm script run by the real ZantoRunner.exe.

The expectations stand in the script's first XML comment (the reader strips
comments, so the file stays a real script), one directive a line:

    args: /r {script}               the command line (this is the default); the
                                    script runs from a copy in the work folder,
                                    where {dir} in its steps is that folder; the
                                    line reaches the program whole, any character
    script-folder: Zürich – 東京     the script's copy stands in this folder of the
                                    work folder ({script} names it there)
    setting: Name = dword:5         a value under HKCU\\SOFTWARE\\ZantoRunner before the run
    setting: Name = sz:text         ({dir} is the scenario's work folder)
    nolog                           do not turn logging on (by default Log=1 and
                                    Logfile={dir}\\log.txt are set)
    exit: 0                         the process's exit code (0 when not given)
    within: 10                      the run ends within this many seconds
    nodisplay                       run without a display (DISPLAY unset)
    stderr:                         the last lines of the program's standard error (Wine
    ...                             may write its own before them), as "log:"
    end
    last-log: text                  the log's last line
    log-has: text                   a line the log holds, after the line of the
                                    log-has before it ({any} as in "log:")
    stdout:                         the program's standard output, as "log:" (the
    ...                             launcher's own "EXIT" line left out)
    end
    box: Title | text               a message box that must appear, in order
    answer: Title = 6               the button the harness presses in that box (0: leave
                                    it alone, for a dialog the script fills in itself;
                                    "1:text" types the text into its first edit first)
    registry: Path\\Name = text      a value under HKCU\\SOFTWARE\\ZantoRunner after the run
                                    (a path that starts with HKEY_ is taken whole)
    noregistry: Path\\Name           a value that must not exist after the run
    reg-before: HKEY_...\\Name = sz:text   a value anywhere in the registry before the run
                                    (dword:N as for setting:; its key is not emptied
                                    first; the name "@" is the key's default value)
    reg-clean: HKEY_...\\Key          a key deleted with its subkeys before the run and after it
                                    (a reg-before value right under a root is deleted after it)
    nokey: HKEY_...\\Key              a key that must not exist after the run
    rootkeys-kept                   every key directly under HKEY_CURRENT_USER before the
                                    run is still there after it
    window-after: Title             a visible, enabled top-level window of exactly this title
                                    is on the screen when the run has ended (before kill:)
    window-state: Title = words     the words that window's state holds after the run
                                    (maximized, minimized or normal; topmost or
                                    nottopmost; WIDTHxHEIGHT; hidden, disabled), or
                                    "none": no such window
    covers: Action name             the action this scenario runs, where its step is
                                    stored as another's ("Start" of the browser program)
    throwaway-prefix                the run (and the harness's helpers) in a copy of the
                                    Wine prefix with a wineserver of its own, deleted
                                    afterwards: for an action that ends the session
    window-text: Title | Class = text   the text of the first descendant of that class in
                                    the top-level window of that title, after the run
    file: {dir}\\name                a file that must exist after the run
    file: {dir}\\name = text         ... and hold exactly this text ("\\r\\n", "\\xNN";
                                    {dir} and {web} as in the script)
    file-size: {dir}\\name = 123      a file that must exist after the run with this many bytes
    nofile: {dir}\\name              no file or folder of this name (its case as
                                    written: the disk here tells cases apart; "*"
                                    and "?" as wildcards) after the run
    readonly: {dir}\\name            a file made read-only before the run
    hold: {dir}\\name                a file (or folder) that another program holds
                                    open, with no sharing, from before the run to its end
    {short:{dir}\\name}               in the script: the 8.3 short form of a path
                                    that exists before the run (made by make-file)
    {smalldisk}                     in any text: a folder of this scenario on another
                                    volume (the harness's small disk), emptied first
    screen-bmp: {dir}\\a*.bmp        a file matching this that is a BMP of the screen's size
    png-pixel: {dir}\\a*.png @ 10, 20 = FF00FF   the one file matching this is a PNG whose
                                    pixel (10, 20) has this colour (RRGGBB; "!" before it: any other)
    before-log: text                the log file holds this line before the run
    make-file: {dir}\\a.txt = text   a file made before the run ("\\r\\n" for a line end,
                                    "\\xNN" for any byte)
    windows: Alpha | Beta           framed windows opened before the run, each filled by
                                    an edit control; the last in front, its edit focused
    typed: Beta = text              the text of that window's edit after the run ("\\r\\n"
                                    for a line end, "\\xNN" for any byte)
    beside: name                    a file copied into the work folder before the run:
                                    a name in the script's own folder, or {tests}\name
                                    for a program built with the tests
    alone: name.exe                 no process of that program is left in the prefix
                                    within 5 seconds of the run's end (child runs end
                                    with their run)
    kill: name.exe                  a program the run leaves open (a document it shows),
                                    ended after the run
    replace: old = new              a text of the script replaced in its copy (for an
                                    example that names what a user changes)
    {web}                           in any text: the harness's web server, serving
                                    tests/web ("http://127.0.0.1:port")
    probe: 1047 | Run Completed     a visible run: wait until control 1047 of the
                                    main window holds the text, save a screenshot
                                    as {dir}\\screen.bmp, then close the window
    output:                         the text of the probed control, as "log:"
    ...
    end
    ftp-file: a/b.txt = text         a file the loopback FTP server holds after the run, by
                                    its path under the server's folder (any character; it is
                                    deleted before the run), with exactly this text ("\\xNN")
    noftp-file: a                   no such file or folder on the FTP server after the run
    mail-sent: Subject = text       a message the SMTP server received during the run has
                                    this header, decoded (RFC 2047); every line of mail-sent:
                                    holds for one message, whose header lines are all ASCII;
                                    an address in <...> stands in the header as it is
    mail-sent-body: text            that message's body, read in the charset its
                                    Content-Type declares, holds this text
    also: /r {dir}\\b.zxm            a second run of the program, started just before the
                                    one of "args:" and waited for with it (runs at once)
    results: --junit out\\r.xml ...  the result files checked by resultcheck.py (its
                                    options; names relative to the work folder)
    log:                            the whole log, line by line, up to "end";
    ...                             {time} matches a time of day, {any} any text,
    end                             {script} the script's Windows path

An example under examples/ keeps its directives in a file of its own
(--directives), so that the example stays a clean script for its readers.

Every box that appears is answered, expected or not, so no run can hang; an
unexpected one fails the scenario. Each scenario starts from a clean key.
"""
import argparse
import glob
import os
import re
import shutil
import subprocess
import sys
import time

from winpaths import unixpath, winpath

ROOT_KEY = "HKCU\\SOFTWARE\\ZantoRunner"


def parse_directives(text):
    m = re.search(r"<!--(.*?)-->", text, re.S)
    if not m:
        raise SystemExit("scenario has no directive comment")
    d = {"args": "/r {script}", "settings": [], "boxes": [], "answers": [], "registry": [],
         "noregistry": [], "files": [], "log": None, "output": None, "exit": None, "nolog": False,
         "before_log": None, "probe": None, "screen_bmps": [], "png_pixels": [], "make_files": [],
         "windows": [], "typed": [], "beside": [], "replace": [], "kill": [], "alone": [], "log_has": [], "stderr": None, "within": None, "nodisplay": False, "last_log": None, "file_sizes": [], "stdout": None,
         "nofiles": [], "holds": [], "readonly": [],
         "reg_before": [], "reg_clean": [], "nokey": [], "rootkeys_kept": False, "window_after": [],
         "window_text": [], "window_state": [], "throwaway_prefix": False, "also": [], "results": [],
         "script_folder": "", "ftp_files": [], "noftp_files": [], "mail_sent": [], "mail_sent_body": []}
    lines = m.group(1).splitlines()
    i = 0
    while i < len(lines):
        line = lines[i].strip()
        i += 1
        if not line or line.startswith("#"):
            continue
        if line in ("log:", "output:", "stderr:", "stdout:"):
            block = []
            while i < len(lines) and lines[i].strip() != "end":
                block.append(lines[i].rstrip("\r"))
                i += 1
            i += 1
            d[line[:-1]] = block
            continue
        if line == "nolog":
            d["nolog"] = True
            continue
        if line == "nodisplay":
            d["nodisplay"] = True
            continue
        if line == "throwaway-prefix":
            d["throwaway_prefix"] = True
            continue
        if line == "rootkeys-kept":
            d["rootkeys_kept"] = True
            continue
        key, _, value = line.partition(":")
        value = value.strip()
        if key == "args":
            d["args"] = value
        elif key == "script-folder":
            d["script_folder"] = value
        elif key == "ftp-file":
            name, _, content = value.partition(" = ")
            d["ftp_files"].append((name.strip(), content))
        elif key == "noftp-file":
            d["noftp_files"].append(value)
        elif key == "mail-sent":
            name, _, text = value.partition(" = ")
            d["mail_sent"].append((name.strip(), text))
        elif key == "mail-sent-body":
            d["mail_sent_body"].append(value)
        elif key == "setting":
            d["settings"].append(value)
        elif key == "exit":
            d["exit"] = int(value)
        elif key == "file-size":
            name, _, size = value.partition(" = ")
            d["file_sizes"].append((name.strip(), int(size)))
        elif key == "nofile":
            d["nofiles"].append(value)
        elif key == "readonly":
            d["readonly"].append(value)
        elif key == "hold":
            d["holds"].append(value)
        elif key == "log-has":
            d["log_has"].append(value)
        elif key == "last-log":
            d["last_log"] = value
        elif key == "within":
            d["within"] = float(value)
        elif key == "box":
            title, _, body = value.partition("|")
            d["boxes"].append((title.strip(), body.strip()))
        elif key == "answer":
            d["answers"].append(value.replace(" = ", "="))
        elif key == "registry":
            name, _, expected = value.partition("=")
            d["registry"].append((name.strip(), expected.strip()))
        elif key == "noregistry":
            d["noregistry"].append(value)
        elif key == "reg-before":
            name, _, data = value.partition(" = ")
            d["reg_before"].append((name.strip(), data.strip()))
        elif key == "reg-clean":
            d["reg_clean"].append(value)
        elif key == "nokey":
            d["nokey"].append(value)
        elif key == "window-after":
            d["window_after"].append(value)
        elif key == "window-state":
            title, _, words = value.partition(" = ")
            d["window_state"].append((title.strip(), words.split()))
        elif key == "covers":
            pass  # read by tests/checks/actions.py
        elif key == "window-text":
            where, _, text = value.partition(" = ")
            title, _, cls = where.partition("|")
            d["window_text"].append((title.strip(), cls.strip(), text))
        elif key == "make-file":
            name, _, content = value.partition(" = ")
            d["make_files"].append((name.strip(), content))
        elif key == "kill":
            d["kill"].append(value)
        elif key == "alone":
            d["alone"].append(value)
        elif key == "beside":
            d["beside"].append(value)
        elif key == "replace":
            old, _, new = value.partition(" = ")
            d["replace"].append((old.strip(), new.strip()))
        elif key == "windows":
            d["windows"] = [t.strip() for t in value.split("|")]
        elif key == "typed":
            title, _, text = value.partition(" = ")
            d["typed"].append((title.strip(), text))
        elif key == "before-log":
            d["before_log"] = value
        elif key == "probe":
            ident, _, text = value.partition("|")
            d["probe"] = (ident.strip(), text.strip())
        elif key == "file":
            name, sep, content = value.partition(" = ")
            d["files"].append((name.strip(), content if sep else None))
        elif key == "also":
            d["also"].append(value)
        elif key == "results":
            d["results"].append(value)
        elif key == "screen-bmp":
            d["screen_bmps"].append(value)
        elif key == "png-pixel":
            pattern, _, rest = value.partition(" @ ")
            where, _, colour = rest.partition(" = ")
            x, _, y = where.partition(",")
            d["png_pixels"].append((pattern.strip(), int(x), int(y), colour.strip()))
        else:
            raise SystemExit("unknown directive: " + line)
    return d


class Scenario:
    def __init__(self, args):
        self.args = args
        self.script = os.path.abspath(args.script)
        self.name = os.path.splitext(os.path.basename(self.script))[0]
        self.dir = os.path.abspath(os.path.join("scenario-work", self.name))
        with open(args.directives or self.script, "rb") as f:
            text = f.read().decode("latin-1")
        self.d = parse_directives(text if not args.directives else "<!--" + text + "-->")
        self.failures = []
        # The script runs from a copy in the work folder, with {dir} expanded,
        # so that a step can name files there.
        # The directives are read as bytes (latin-1), the folder's name is
        # the script's UTF-8.
        self.run_script = os.path.join(self.dir, real_text(self.d["script_folder"]), os.path.basename(self.script))

    def expand(self, text):
        return (text.replace("{script}", byte_text(winpath(self.run_script)))
                .replace("{dir}", winpath(self.dir))
                .replace("{smalldisk}", self.small_disk())
                .replace("{web}", web_address()))

    def small_disk(self):
        """This scenario's folder on the harness's small disk (another volume)."""
        disk = os.environ.get("ZR_SMALL_DISK", "")
        if not disk:
            return winpath(os.path.join(self.dir, "smalldisk"))
        return disk + "\\" + self.name

    def small_disk_path(self):
        return unixpath(self.small_disk())

    def wine(self, *argv, **kw):
        return subprocess.run([self.args.wine, *argv], capture_output=True, **kw)

    def prepare(self):
        shutil.rmtree(self.dir, ignore_errors=True)
        os.makedirs(os.path.dirname(self.run_script))
        with open(self.script, "rb") as f:
            self.uses_small_disk = "{smalldisk}" in f.read().decode("latin-1")
        if self.uses_small_disk:
            shutil.rmtree(self.small_disk_path(), ignore_errors=True)
            os.makedirs(self.small_disk_path())
        with open(self.script, "rb") as f:
            body = (f.read().decode("latin-1").replace("{dir}", winpath(self.dir)).replace("{web}", web_address())
                    .replace("{smalldisk}", self.small_disk()))
        for old, new in self.d["replace"]:
            if old not in body:
                raise SystemExit("replace: %r is not in the script" % old)
            body = body.replace(old, self.expand(new))
        for name in self.d["beside"]:
            if name.startswith("{tests}\\"):
                source = os.path.join(os.path.dirname(os.path.abspath(self.args.launch)), name[len("{tests}\\"):])
            else:
                source = os.path.join(os.path.dirname(self.script), name)
            shutil.copy(source, os.path.join(self.dir, os.path.basename(source)))
        for name, content in self.d["make_files"]:
            path = unixpath(self.expand(name))
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "wb") as f:
                f.write(unescape(content).encode("latin-1"))
        for name in self.d["readonly"]:
            os.chmod(unixpath(self.expand(name)), 0o444)
        body = re.sub(r"\{short:([^}]*)\}", lambda m: self.short_path(m.group(1)), body)
        with open(self.run_script, "wb") as f:
            f.write(body.encode("latin-1"))
        values = []
        if not self.d["nolog"]:
            values += ['"Log"=dword:00000001', '"Logfile"="%s"' % reg_escape(self.expand("{dir}\\log.txt"))]
        for s in self.d["settings"]:
            name, _, value = s.partition("=")
            name, value = name.strip(), self.expand(value.strip())
            kind, _, data = value.partition(":")
            key = ""
            if "\\" in name:
                key, name = name.rsplit("\\", 1)
            if kind == "dword":
                entry = '"%s"=dword:%08x' % (name, int(data, 0) & 0xFFFFFFFF)
            else:
                entry = '"%s"="%s"' % (name, reg_escape(data))
            values.append((key, entry))
        by_key = {}
        for v in values:
            key, entry = v if isinstance(v, tuple) else ("", v)
            by_key.setdefault(key, []).append(entry)
        # The key is dropped and written again by one import, so no value of
        # an earlier scenario can survive a failed delete.
        lines = ["REGEDIT4", "", "[-HKEY_CURRENT_USER\\SOFTWARE\\ZantoRunner]", ""]
        for key, entries in by_key.items():
            lines.append("[HKEY_CURRENT_USER\\SOFTWARE\\ZantoRunner%s]" % ("\\" + key if key else ""))
            lines += entries
            lines.append("")
        for key in self.d["reg_clean"]:
            lines += ["[-%s]" % key, ""]
        for name, value in self.d["reg_before"]:
            key, _, value_name = name.rpartition("\\")
            kind, _, data = value.partition(":")
            # "@" names the key's default value.
            name = "@" if value_name == "@" else '"%s"' % value_name
            if kind == "dword":
                entry = '%s=dword:%08x' % (name, int(data, 0) & 0xFFFFFFFF)
            else:
                entry = '%s="%s"' % (name, reg_escape(self.expand(data)))
            lines += ["[%s]" % key, entry, ""]
        reg = os.path.join(self.dir, "settings.reg")
        with open(reg, "w", newline="\r\n") as f:
            f.write("\n".join(lines) + "\n")
        if self.d["before_log"] is not None:
            with open(os.path.join(self.dir, "log.txt"), "wb") as f:
                f.write((self.d["before_log"] + "\r\n").encode("latin-1"))
        # A Wine program can fail to start while the prefix's own background
        # processes are still settling after a fresh wineboot; try again
        # before calling the scenario broken.
        for attempt in range(3):
            r = self.wine("regedit", "/S", winpath(reg))
            if r.returncode == 0:
                break
            time.sleep(1)
        else:
            raise SystemExit("regedit failed with %d: %s" % (r.returncode, r.stderr.decode("latin-1").strip()))

    def short_path(self, path):
        r = self.wine(self.args.holdfile, "/short", path)
        if r.returncode != 0:
            raise SystemExit("no short form of " + path)
        return r.stdout.decode("latin-1").strip()

    def root_keys(self):
        r = self.wine("reg", "query", "HKEY_CURRENT_USER")
        return {line.strip().lower() for line in r.stdout.decode("latin-1").splitlines()
                if line.strip().upper().startswith("HKEY_CURRENT_USER\\")}

    def clean_keys(self):
        for key in self.d["reg_clean"]:
            self.wine("reg", "delete", key, "/f")
        # A value set right under a root has no key of its own to clean.
        for name, _ in self.d["reg_before"]:
            key, _, value = name.rpartition("\\")
            if "\\" not in key:
                self.wine("reg", "delete", key, "/v", value, "/f")

    def ftp_path(self, name):
        root = os.environ.get("ZR_FTP_ROOT", "")
        if not root:
            raise SystemExit("ftp-file: needs the harness's FTP server (ZR_FTP_ROOT)")
        return os.path.join(root, real_text(name).replace("\\", "/"))

    def received_mails(self):
        folder = os.path.join(os.environ.get("ZR_MAILBOX", ""), "received")
        if not os.environ.get("ZR_MAILBOX"):
            raise SystemExit("mail-sent: needs the harness's mail server (ZR_MAILBOX)")
        return set(os.listdir(folder)) if os.path.isdir(folder) else set()

    def run(self):
        for name, _ in self.d["ftp_files"]:
            path = self.ftp_path(name)
            if os.path.isfile(path):
                os.remove(path)
        self.mails_before = self.received_mails() if self.d["mail_sent"] or self.d["mail_sent_body"] else set()
        self.keys_before = self.root_keys() if self.d["rootkeys_kept"] else set()
        stop = os.path.join(self.dir, "stop-boxwatch")
        # The helpers' standard error is not the runner's: a program that Wine
        # starts from one of them (its clipboard's or desktop's) would hold
        # CTest's output open, and CTest would wait for it after the scenario.
        quiet = {"stderr": subprocess.DEVNULL, "stdin": subprocess.DEVNULL}
        holder = None
        if self.d["holds"]:
            holder = subprocess.Popen([self.args.wine, self.args.holdfile, winpath(stop),
                                       *[self.expand(h) for h in self.d["holds"]]], stdout=subprocess.PIPE, text=True,
                                      **quiet)
            ready = holder.stdout.readline().strip()
            if ready != "READY":
                raise SystemExit("holdfile did not start: " + ready)
        # Once in a few thousand starts Wine ends a new process before its
        # first line, with no output at all (wine-run retries unit tests for
        # the same reason): nothing of the scenario ran yet, so start it again.
        for attempt in range(2):
            watcher = subprocess.Popen([self.args.wine, self.args.boxwatch, winpath(stop),
                                        *[self.expand(a) for a in self.d["answers"]]],
                                       stdout=subprocess.PIPE, text=True, **quiet)
            ready = watcher.stdout.readline().strip()
            if ready == "READY":
                break
            watcher.wait()
            print("boxwatch ended with %s before its first line" % watcher.returncode, file=sys.stderr)
        if ready != "READY":
            raise SystemExit("boxwatch did not start")
        windows = None
        if self.d["windows"]:
            # The titles go as the script's own bytes (the fixture runs in UTF-8).
            windows = subprocess.Popen([self.args.wine, self.args.testwindows, winpath(stop),
                                        *[title.encode("latin-1") for title in self.d["windows"]]],
                                       stdout=subprocess.PIPE, encoding="latin-1", **quiet)
            if windows.stdout.readline().strip() != "READY":
                raise SystemExit("testwindows did not start")
        probe = None
        if self.d["probe"]:
            ident, text = self.d["probe"]
            probe = subprocess.Popen([self.args.wine, self.args.probe, ident, text,
                                      winpath(os.path.join(self.dir, "screen.bmp"))],
                                     stdout=subprocess.PIPE, text=True, **quiet)
        argv = self.expand(self.d["args"])
        started = time.time()
        env = dict(os.environ, ZR_COMMAND_LINE=command_line(self.args.exe, argv), ZR_WINE_TIMEOUT="60")
        if self.d["nodisplay"]:
            env["ZR_NO_DISPLAY"] = "1"
        # The second run holds none of this runner's own streams: a Wine
        # process it starts and that outlives it must not keep the test open.
        others = [subprocess.Popen([self.args.wine, self.args.launch], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True,
                                   env=dict(env, ZR_COMMAND_LINE=command_line(self.args.exe, self.expand(a))))
                  for a in self.d["also"]]
        # The launcher's output goes to files, not pipes: a Wine program that
        # the run (or Wine for it) starts inherits them and may outlive it,
        # and a pipe would then not end until that program does.
        out_path, err_path = (os.path.join(os.path.dirname(self.dir), self.name + suffix)
                              for suffix in (".launch-out", ".launch-err"))
        with open(out_path, "wb") as out_file, open(err_path, "wb") as err_file:
            proc = subprocess.Popen([self.args.wine, self.args.launch], stdout=out_file, stderr=err_file, env=env)
        for other in others:
            try:
                other.wait(timeout=120)
            except subprocess.TimeoutExpired:
                other.kill()
                self.failures.append("the run of also: did not end")
        # A program the run started (and left open on purpose) inherits the
        # launcher's output: wait for the launcher itself, end what the
        # scenario names, and only then read the output to its end.
        try:
            proc.wait(timeout=120)
        except subprocess.TimeoutExpired:
            proc.kill()
            proc.wait()
        self.elapsed = time.time() - started
        for program in self.d["alone"]:
            left = wait_for_no_process(program, os.environ.get("WINEPREFIX", ""), 5)
            if left:
                self.failures.append("%d process(es) of %s left running after the run: %s" % (
                    len(left), program, ", ".join(left)))
        self.windows_after = {}
        for title in (self.d["window_after"] + [t for t, _, _ in self.d["window_text"]] +
                      [t for t, _ in self.d["window_state"]]):
            if title in self.windows_after:
                continue
            classes = [c for t, c, _ in self.d["window_text"] if t == title]
            r = subprocess.run([self.args.wine, self.args.windowcheck, title, *classes], capture_output=True)
            self.windows_after[title] = r.stdout.decode("latin-1")
        for program in self.d["kill"]:
            self.wine("taskkill", "/f", "/im", program)
        if self.d["throwaway_prefix"]:
            # What Wine starts for a session's end may hold the launcher's
            # output for ever; the prefix and all in it end with the run.
            subprocess.run(["wineserver", "-k"], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL)
        with open(out_path, "rb") as f:
            out_bytes = f.read()
        with open(err_path, "rb") as f:
            err_bytes = f.read()
        self.exit_code = proc.returncode
        # The launcher prints the whole code; Wine's own exit keeps 8 bits.
        m = re.search(r"^EXIT (\d+)\r?$", out_bytes.decode("latin-1"), re.M)
        if m:
            self.exit_code = int(m.group(1))
        self.stderr = err_bytes.decode("latin-1")
        self.stdout = re.sub(r"^EXIT \d+\r?\n?", "", out_bytes.decode("latin-1"), flags=re.M)
        open(stop, "w").close()
        self.output = None
        if probe:
            out, _ = probe.communicate(timeout=60)
            m = re.search(r"TEXT\n(.*)\nEND", out, re.S)
            self.output = m.group(1).replace("\r\n", "\n").split("\n") if m else []
            shot = os.path.join(self.dir, "screen.bmp")
            try:
                from PIL import Image
                Image.open(shot).save(os.path.join(self.dir, "screen.png"))
            except Exception:
                pass
        out, _ = watcher.communicate(timeout=30)
        if holder:
            holder.communicate(timeout=30)
        self.typed = {}
        if windows:
            out_windows, _ = windows.communicate(timeout=30)
            for line in out_windows.splitlines():
                if line.startswith("TEXT\t"):
                    _, title, text = line.split("\t", 2)
                    self.typed[title] = re.sub(r"\\(.)", lambda m: {"r": "\r", "n": "\n", "t": "\t"}.get(
                        m.group(1), m.group(1)), text)
        self.boxes = []
        for line in out.splitlines():
            if line.startswith("BOX\t"):
                parts = line.split("\t")
                self.boxes.append((parts[1], unescape(parts[2])))

    def check(self):
        d = self.d
        expected_exit = 0 if d["exit"] is None else d["exit"]
        if self.exit_code in (124, 137):
            self.failures.append("the program did not end within the time limit")
        elif self.exit_code != expected_exit:
            self.failures.append("exit code %d, expected %d" % (self.exit_code, expected_exit))
        expected_boxes = [(t, unescape(self.expand(b))) for t, b in d["boxes"]]
        boxes_match = len(expected_boxes) == len(self.boxes) and all(
            log_pattern(et).fullmatch(gt) and log_pattern(eb).fullmatch(gb)
            for (et, eb), (gt, gb) in zip(expected_boxes, self.boxes))
        if not boxes_match:
            self.failures.append("boxes %r, expected %r" % (self.boxes, expected_boxes))
        if d["within"] is not None and self.elapsed > d["within"]:
            self.failures.append("the run took %.1f s, expected at most %.1f s" % (self.elapsed, d["within"]))
        if d["stderr"] is not None:
            got = [line for line in self.stderr.replace("\r\n", "\n").split("\n") if line.strip()]
            expected = [line for line in d["stderr"] if line.strip()]
            self.check_lines("stderr", got[-len(expected):] if expected else got, expected)
        if d["stdout"] is not None:
            got = [line for line in self.stdout.replace("\r\n", "\n").split("\n") if line.strip()]
            self.check_lines("stdout", got, [line for line in d["stdout"] if line.strip()])
        if d["last_log"] is not None:
            path = os.path.join(self.dir, "log.txt")
            got = open(path, "rb").read().decode("latin-1") if os.path.exists(path) else ""
            lines = [line for line in got.split("\r\n") if line.strip()]
            last = lines[-1] if lines else ""
            if not log_pattern(self.expand(d["last_log"])).fullmatch(last):
                self.failures.append("the log's last line is %r, expected %r" % (last, d["last_log"]))
        if d["log_has"]:
            path = os.path.join(self.dir, "log.txt")
            got = open(path, "rb").read().decode("latin-1") if os.path.exists(path) else ""
            lines, at = got.split("\r\n"), 0
            for wanted in d["log_has"]:
                pattern = log_pattern(self.expand(wanted))
                while at < len(lines) and not pattern.fullmatch(lines[at]):
                    at += 1
                if at == len(lines):
                    self.failures.append("the log lacks %r (in this order); it holds:\n    %s" %
                                         (wanted, "\n    ".join(lines)))
                    break
                at += 1
        if d["log"] is not None:
            path = os.path.join(self.dir, "log.txt")
            got = open(path, "rb").read().decode("latin-1") if os.path.exists(path) else ""
            self.check_lines("log", got.split("\r\n"), d["log"])
        if d["output"] is not None:
            self.check_lines("output", self.output or [], d["output"])
        for title, expected in d["typed"]:
            got = self.typed.get(title)
            if got != unescape(expected):
                self.failures.append("window %s holds %r, expected %r" % (title, got, unescape(expected)))
        for name, expected in d["registry"]:
            got = self.query(name)
            if got != self.expand(expected):
                self.failures.append("registry %s = %r, expected %r" % (name, got, expected))
        for name in d["noregistry"]:
            got = self.query(name)
            if got is not None:
                self.failures.append("registry %s = %r, expected none" % (name, got))
        for title in d["window_after"]:
            if not re.search(r"^WINDOW visible enabled\r?$", self.windows_after.get(title, ""), re.M):
                self.failures.append("no visible, enabled window %r after the run (%r)" %
                                     (title, self.windows_after.get(title, "")))
        for title, words in d["window_state"]:
            seen = self.windows_after.get(title, "")
            if words == ["none"]:
                if not seen.startswith("NOWINDOW"):
                    self.failures.append("the window %r is there after the run (%r)" % (title, seen))
                continue
            state = " ".join(line for line in seen.splitlines() if line.startswith(("WINDOW", "STATE")))
            lacking = [w for w in words if w not in state.split()]
            if lacking:
                self.failures.append("the window %r is not %s after the run (%r)" % (title, " ".join(lacking), state))
        for title, cls, expected in d["window_text"]:
            m = re.search(r"^TEXT\t%s\t(.*)$" % re.escape(cls), self.windows_after.get(title, ""), re.M)
            got = unescape(m.group(1).rstrip("\r")) if m else None
            if got != unescape(expected):
                self.failures.append("the %s of window %r holds %r, expected %r" % (cls, title, got, unescape(expected)))
        for key in d["nokey"]:
            if self.wine("reg", "query", key).returncode == 0:
                self.failures.append("the key %s is there after the run" % key)
        if d["rootkeys_kept"]:
            lost = self.keys_before - self.root_keys()
            if not self.keys_before or lost:
                self.failures.append("keys under HKEY_CURRENT_USER lost: %r (of %d)" % (sorted(lost), len(self.keys_before)))
        for f, content in d["files"]:
            path = unixpath(self.expand(f))
            if not os.path.exists(path):
                self.failures.append("missing file " + f)
            elif content is not None and open(path, "rb").read().decode("latin-1") != self.expand(unescape(content)):
                self.failures.append("file %s holds %r, expected %r" %
                                     (f, open(path, "rb").read().decode("latin-1"), self.expand(unescape(content))))
        for f in d["nofiles"]:
            path = unixpath(self.expand(f))
            # Only "*" and "?" are wildcards here; brackets are plain text.
            found = glob.glob("".join(c if c in "*?" else glob.escape(c) for c in path))
            if found:
                self.failures.append("%s exists, expected none: %s" % (f, ", ".join(found)))
        for f, size in d["file_sizes"]:
            path = unixpath(self.expand(f))
            got = os.path.getsize(path) if os.path.exists(path) else None
            if got != size:
                self.failures.append("file %s has %r bytes, expected %d" % (f, got, size))
        for pattern in d["screen_bmps"]:
            matches = self.one_file(pattern)
            if not matches:
                continue
            from PIL import Image
            with Image.open(matches[0]) as im:
                if im.format != "BMP" or im.size != (1280, 1024):
                    self.failures.append("%s is %s %r, expected a 1280x1024 BMP" % (matches[0], im.format, im.size))

        for name, content in d["ftp_files"]:
            path = self.ftp_path(name)
            if not os.path.isfile(path):
                self.failures.append("the FTP server holds no file %s" % real_text(name))
            elif open(path, "rb").read().decode("latin-1") != unescape(content):
                self.failures.append("the FTP server's %s holds %r, expected %r" % (
                    real_text(name), open(path, "rb").read(), unescape(content).encode("latin-1")))
        for name in d["noftp_files"]:
            if os.path.exists(self.ftp_path(name)):
                self.failures.append("the FTP server still holds %s" % real_text(name))
        if d["mail_sent"] or d["mail_sent_body"]:
            self.check_mail_sent()

        for options in d["results"]:
            import shlex
            checker = os.path.join(os.path.dirname(os.path.abspath(__file__)), "resultcheck.py")
            r = subprocess.run(["/usr/bin/python3", checker, "--dir", self.dir,
                                *shlex.split(options.replace("\\", "/"))],
                               capture_output=True, text=True)
            if r.returncode != 0:
                self.failures.append("results (%s):\n    %s" % (options, (r.stdout + r.stderr).strip().replace("\n", "\n    ")))

        for pattern, x, y, colour in d["png_pixels"]:
            matches = self.one_file(pattern)
            if not matches:
                continue
            from PIL import Image
            with Image.open(matches[0]) as im:
                if im.format != "PNG":
                    self.failures.append("%s is %s, expected a PNG" % (matches[0], im.format))
                    continue
                got = "%02X%02X%02X" % im.convert("RGB").getpixel((x, y))
            other = colour.startswith("!")
            if (got == colour.lstrip("!").upper()) == other:
                self.failures.append("pixel (%d, %d) of %s is %s, expected %s" % (x, y, matches[0], got, colour))

    def check_mail_sent(self):
        """One message received during the run has every header of mail-sent:
        and every text of mail-sent-body:, sent as the standards want it."""
        import email
        from email import policy
        folder = os.path.join(os.environ["ZR_MAILBOX"], "received")
        new = sorted(self.received_mails() - self.mails_before)
        wanted = [(name, real_text(text)) for name, text in self.d["mail_sent"]]
        bodies = [real_text(text) for text in self.d["mail_sent_body"]]
        seen = []
        for name in new:
            raw = open(os.path.join(folder, name), "rb").read()
            head = raw.split(b"\r\n\r\n", 1)[0].split(b"\n\n", 1)[0]
            message = email.message_from_bytes(raw, policy=policy.default)
            problems = []
            for header, text in wanted:
                got = message.get(header)
                if got is None or str(got) != text:
                    problems.append("%s is %r, expected %r" % (header, None if got is None else str(got), text))
                for address in re.findall(r"<[^<>]*>", text):
                    if address.encode("ascii", "replace") not in head:
                        problems.append("the address %s is not plain in the header" % address)
            if any(b >= 0x80 for b in head):
                problems.append("the header holds bytes beyond ASCII: %r" % head)
            charset = message.get_content_charset()
            payload = message.get_payload(decode=True) or b""
            try:
                body = payload.decode(charset or "us-ascii")
            except (LookupError, UnicodeDecodeError) as e:
                body = None
                problems.append("the body is not %s: %s" % (charset, e))
            for text in bodies:
                if body is not None and text not in body:
                    problems.append("the body (%s) lacks %r: %r" % (charset, text, body))
            if not problems:
                return
            seen.append("%s: %s" % (name, "; ".join(problems)))
        self.failures.append("no message received during the run is as expected (%d received)%s" % (
            len(new), "".join("\n    " + s for s in seen)))

    def one_file(self, pattern):
        """The one file a pattern of the scenario names, in a list; an empty
        list (and a failure) when none or several match. Only "*" and "?" are
        wildcards; brackets are plain text."""
        path = unixpath(self.expand(pattern))
        matches = glob.glob("".join(c if c in "*?" else glob.escape(c) for c in path))
        if len(matches) != 1:
            self.failures.append("%d files match %s" % (len(matches), pattern))
            return []
        return matches

    def check_lines(self, what, got_lines, expected):
        if got_lines and got_lines[-1] == "":
            got_lines = got_lines[:-1]
        patterns = [log_pattern(self.expand(e)) for e in expected]
        ok = len(patterns) == len(got_lines) and all(p.fullmatch(g) for p, g in zip(patterns, got_lines))
        if not ok:
            self.failures.append("%s differs:\n--- got\n%s\n--- expected\n%s" %
                                 (what, "\n".join(got_lines), "\n".join(expected)))

    def query(self, name):
        key, _, value = name.rpartition("\\")
        full = key if key.upper().startswith("HKEY_") else ROOT_KEY + ("\\" + key if key else "")
        r = self.wine("reg", "query", full, "/v", value)
        if r.returncode != 0:
            return None
        for line in r.stdout.decode("latin-1").splitlines():
            parts = line.strip().split(None, 2)
            if len(parts) >= 2 and parts[0].lower() == value.lower():
                data = parts[2] if len(parts) == 3 else ""
                if parts[1] == "REG_DWORD":
                    return str(int(data, 16))
                return data
        return None


def web_address():
    """The harness's web server on loopback (tests/web)."""
    return "http://127.0.0.1:%s" % os.environ.get("ZR_WEB_PORT", "0")


def real_text(text):
    """A directive's text (its bytes as latin-1) as the characters its UTF-8
    means; bytes that are not UTF-8 stay as they are."""
    raw = text.encode("latin-1")
    try:
        return raw.decode("utf-8")
    except UnicodeDecodeError:
        return text


def byte_text(text):
    """A text of characters as a directive holds it: its UTF-8 bytes as latin-1."""
    return text.encode("utf-8").decode("latin-1")


def command_line(exe, argv):
    """The launcher's command line: the line's characters reach Wine as the
    locale's UTF-8, and the launcher passes them on as Unicode."""
    return '"%s" %s' % (winpath(exe), real_text(argv))


def reg_escape(text):
    return text.replace("\\", "\\\\").replace('"', '\\"')


def unescape(text):
    text = re.sub(r"\\x([0-9a-fA-F]{2})", lambda m: chr(int(m.group(1), 16)), text)
    return text.replace("\\n", "\n").replace("\\r", "\r").replace("\\t", "\t")


def prefix_processes(program, prefix):
    """The Linux processes of a Windows program running in this Wine prefix."""
    found = []
    for pid in os.listdir("/proc"):
        if not pid.isdigit():
            continue
        try:
            with open("/proc/%s/cmdline" % pid, "rb") as f:
                args = f.read().split(b"\0")
            with open("/proc/%s/environ" % pid, "rb") as f:
                environ = f.read().split(b"\0")
        except OSError:
            continue
        if not any(a.lower().endswith(program.lower().encode()) for a in args[:2]):
            continue
        if prefix and ("WINEPREFIX=" + prefix).encode() not in environ:
            continue
        found.append(pid)
    return found


def wait_for_no_process(program, prefix, seconds):
    """Waits until no process of the program runs in the prefix; returns those left."""
    deadline = time.time() + seconds
    while True:
        left = prefix_processes(program, prefix)
        if not left or time.time() >= deadline:
            return left
        time.sleep(0.1)


def throwaway_prefix(scenario):
    """A copy of the harness's Wine prefix for this scenario alone, made the
    prefix of everything the scenario starts (wine-run reads the environment
    file written here). The files that never change are hard links; the
    registry's files, which Wine writes, are copies of their own."""
    prefix = os.environ["WINEPREFIX"]
    copy = os.path.abspath(os.path.join("scenario-work", scenario.name + "-prefix"))
    shutil.rmtree(copy, ignore_errors=True)
    subprocess.run(["cp", "-al", prefix, copy], check=True)
    # What Wine rewrites in place: the registry's files and the .ini files.
    windows = os.path.join("drive_c", "windows")
    for name in os.listdir(prefix) + [os.path.join(windows, n) for n in os.listdir(os.path.join(prefix, windows))
                                      if n.lower().endswith(".ini")]:
        if os.path.isfile(os.path.join(prefix, name)) and not os.path.islink(os.path.join(prefix, name)):
            os.unlink(os.path.join(copy, name))
            shutil.copy2(os.path.join(prefix, name), os.path.join(copy, name))
    env_file = os.path.join(os.path.dirname(copy), scenario.name + "-prefix.env")
    with open(env_file, "w") as f:
        for name in ("DISPLAY", "WINEDEBUG", "WINEDLLOVERRIDES", "ZR_WEB_PORT", "ODBCSYSINI", "ODBCINI", "ZR_SMALL_DISK"):
            if name in os.environ:
                f.write("export %s='%s'\n" % (name, os.environ[name].replace("'", "'\\''")))
        f.write("export WINEPREFIX='%s'\n" % copy.replace("'", "'\\''"))
    os.environ["WINEPREFIX"] = copy
    os.environ["ZR_HARNESS_ENV"] = env_file
    # A persistent wineserver of its own, and Wine's background programs
    # (services, the desktop) started now with no pipe of ours open, as
    # dev.sh does for the harness's prefix: started by the first call that
    # reads its output, they would hold that pipe open for ever.
    subprocess.run(["wineserver", "-p"], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    subprocess.run([scenario.args.wine, "cmd", "/c", "exit"], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL, env=dict(os.environ, ZR_WINE_TIMEOUT="120"))
    return copy


def log_pattern(line):
    out = re.escape(line)
    out = out.replace(re.escape("{time}"), r"\d{1,2}:\d\d:\d\d").replace(re.escape("{any}"), ".*")
    return re.compile(out, re.S)


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--exe", required=True)
    ap.add_argument("--boxwatch", required=True)
    ap.add_argument("--wine", required=True)
    ap.add_argument("--launch", required=True)
    ap.add_argument("--probe", required=True)
    ap.add_argument("--testwindows", required=True)
    ap.add_argument("--holdfile", required=True)
    ap.add_argument("--windowcheck", required=True)
    ap.add_argument("--directives", help="the directives, when they are not in the script's first comment")
    ap.add_argument("script")
    s = Scenario(ap.parse_args())
    throwaway = throwaway_prefix(s) if s.d["throwaway_prefix"] else None
    try:
        s.prepare()
        try:
            s.run()
            s.check()
        except BaseException:
            # The helpers watch for the stop file: one left running would
            # answer the next scenario's boxes.
            open(os.path.join(s.dir, "stop-boxwatch"), "w").close()
            raise
        finally:
            # A throwaway prefix goes with its keys; cleaning them would start
            # its Wine again after the run ended it, and what that Wine starts
            # for the session may hold this call's output for ever.
            if not throwaway:
                s.clean_keys()
    finally:
        if throwaway:
            subprocess.run(["wineserver", "-k"], env=dict(os.environ, WINEPREFIX=throwaway), capture_output=True)
            subprocess.run(["wineserver", "-w"], env=dict(os.environ, WINEPREFIX=throwaway), capture_output=True)
            shutil.rmtree(throwaway, ignore_errors=True)
            os.unlink(os.environ["ZR_HARNESS_ENV"])
    if s.uses_small_disk:
        shutil.rmtree(s.small_disk_path(), ignore_errors=True)
    if s.failures:
        print("FAILED %s (%.2f s):" % (s.name, s.elapsed))
        for f in s.failures:
            print("  " + f)
        print("  (exit code %d%s)" % (s.exit_code, ", stderr: " + s.stderr.strip() if s.stderr.strip() else ""))
        return 1
    print("passed %s (%.2f s, exit %d, %d box(es))" % (s.name, s.elapsed, s.exit_code, len(s.boxes)))
    return 0


if __name__ == "__main__":
    sys.exit(main())
