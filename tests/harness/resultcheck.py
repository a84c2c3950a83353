#!/usr/bin/python3
"""Checks the result files a run wrote for a fleet (the scenario directive
"results:"): the JUnit XML against tests/fixtures/junit.xsd (xmllint) and
through xml.etree, the JSON through json, the HTML report through
html.parser with its embedded PNG decoded and its size checked.

    resultcheck.py --dir WORKDIR [--junit NAME] [--json NAME] [--html NAME]
                   [--artifacts NAME --runs N [--junit-elsewhere]] [--outcome WORD] [--exit N]
                   [--steps N] [--cases N] [--failure-step N] [--image]
                   [--var NAME=VALUE] [--log-has TEXT] [--message-has TEXT]
                   [--suites N] [--child NAME [--child-outcome WORD] [--child-log-has TEXT]]

NAME is relative to WORKDIR. With --artifacts, each of N run folders under
NAME must hold run.log, junit.xml, result.json and report.html, each
complete, and the other checks apply to every one of them.
"""
import argparse
import base64
import glob
import html.parser
import io
import json
import os
import re
import subprocess
import sys
import xml.etree.ElementTree as ET

XSD = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "fixtures", "junit.xsd")


class Report(html.parser.HTMLParser):
    def __init__(self):
        super().__init__()
        self.images = []
        self.ids = set()
        self.scripts = 0
        self.external = []
        self.text = []

    def handle_starttag(self, tag, attrs):
        a = dict(attrs)
        if "id" in a:
            self.ids.add(a["id"])
        if tag == "script":
            self.scripts += 1
        if tag == "img":
            self.images.append(a)
        for name in ("src", "href"):
            value = a.get(name, "")
            if value and not value.startswith("data:") and not value.startswith("#"):
                self.external.append(value)

    def handle_data(self, data):
        self.text.append(data)


def check_junit(path, o, fail):
    r = subprocess.run(["xmllint", "--noout", "--schema", XSD, path], capture_output=True, text=True)
    if r.returncode != 0:
        fail("%s does not validate against the JUnit schema: %s" % (path, r.stderr.strip()))
    root = ET.parse(path).getroot()
    if root.tag != "testsuites":
        fail("the JUnit root is %s" % root.tag)
    suites = root.findall("testsuite")
    if len(suites) != (o.suites or 1):
        return fail("%d test suites, expected %d" % (len(suites), o.suites or 1))
    if o.suites:
        return  # a merged file: each suite was checked where it was written
    suite = suites[0]
    props = {p.get("name"): p.get("value") for p in suite.iter("property")}
    cases = suite.findall("testcase")
    if o.cases is not None and len(cases) != o.cases:
        fail("%d test cases, expected %d" % (len(cases), o.cases))
    if int(suite.get("tests")) != len(cases):
        fail("tests=%s but %d cases" % (suite.get("tests"), len(cases)))
    for name in ("exit-code", "steps-run", "machine", "outcome", "script"):
        if name not in props:
            fail("the JUnit property %s is missing" % name)
    if o.exit is not None and props.get("exit-code") != str(o.exit):
        fail("JUnit exit-code %s, expected %d" % (props.get("exit-code"), o.exit))
    if o.steps is not None and props.get("steps-run") != str(o.steps):
        fail("JUnit steps-run %s, expected %d" % (props.get("steps-run"), o.steps))
    first = cases[0]
    problem = first.find("failure") if first.find("failure") is not None else first.find("error")
    if o.outcome is not None:
        if props.get("outcome") != o.outcome:
            fail("JUnit outcome %s, expected %s" % (props.get("outcome"), o.outcome))
        if (o.outcome == "passed") != (problem is None):
            fail("JUnit case for outcome %s has %s" % (o.outcome, "no failure" if problem is None else problem.tag))
        if o.outcome == "load-failed" and (problem is None or problem.tag != "error"):
            fail("a load failure is no JUnit error")
    if o.failure_step is not None and (problem is None or "[STEP %d]" % o.failure_step not in (problem.text or "")):
        fail("the JUnit failure does not name step %d: %r" % (o.failure_step, problem is not None and problem.text))
    if o.message_has and (problem is None or o.message_has not in problem.get("message", "")):
        fail("the JUnit failure's message lacks %r: %r" % (o.message_has, problem is not None and problem.get("message")))
    out = first.findtext("system-out") or ""
    if o.log_has and o.log_has not in out:
        fail("the JUnit system-out lacks %r" % o.log_has)
    if o.child:
        found = [c for c in cases[1:] if c.get("name") == o.child]
        if len(found) != 1:
            return fail("%d child cases named %s, expected 1" % (len(found), o.child))
        child = found[0]
        failed = child.find("failure") is not None
        if o.child_outcome and failed != (o.child_outcome != "passed"):
            fail("the child case %s %s a failure" % (o.child, "has" if failed else "lacks"))
        if o.child_log_has and o.child_log_has not in (child.findtext("system-out") or ""):
            fail("the child case's system-out lacks %r" % o.child_log_has)


def check_json(path, o, fail):
    with open(path, encoding="utf-8") as f:
        data = json.load(f)
    for key in ("script", "machine", "user", "start", "end", "duration", "outcome", "exitCode", "stepsRun",
                "failures", "variables"):
        if key not in data:
            fail("the JSON lacks %s" % key)
    for key in ("start", "end"):
        if not re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", data.get(key, "")):
            fail("the JSON %s is no ISO 8601 time: %r" % (key, data.get(key)))
    if o.outcome is not None and data.get("outcome") != o.outcome:
        fail("JSON outcome %r, expected %r" % (data.get("outcome"), o.outcome))
    if o.exit is not None and data.get("exitCode") != o.exit:
        fail("JSON exitCode %r, expected %d" % (data.get("exitCode"), o.exit))
    if o.steps is not None and data.get("stepsRun") != o.steps:
        fail("JSON stepsRun %r, expected %d" % (data.get("stepsRun"), o.steps))
    if o.failure_step is not None and not any(f.get("step") == o.failure_step for f in data.get("failures", [])):
        fail("the JSON has no failure of step %d: %r" % (o.failure_step, data.get("failures")))
    if o.image and not any(f.get("image") for f in data.get("failures", [])):
        fail("no JSON failure names a screen image")
    for pair in o.var or []:
        name, _, value = pair.partition("=")
        if data.get("variables", {}).get(name) != value:
            fail("JSON variable %s = %r, expected %r" % (name, data.get("variables", {}).get(name), value))


def check_html(path, o, fail):
    with open(path, encoding="utf-8") as f:
        text = f.read()
    p = Report()
    p.feed(text)
    p.close()
    for ident in ("outcome", "run", "steps", "variables", "log"):
        if ident not in p.ids:
            fail("the report has no #%s" % ident)
    if p.scripts or p.external:
        fail("the report is not self-contained: %d script(s), links %r" % (p.scripts, p.external))
    if o.outcome is not None and o.outcome not in "".join(p.text):
        fail("the report does not say %s" % o.outcome)
    if o.image:
        pngs = [i for i in p.images if i.get("src", "").startswith("data:image/png;base64,")]
        if not pngs:
            return fail("the report holds no embedded PNG")
        from PIL import Image
        data = base64.b64decode(pngs[0]["src"].split(",", 1)[1])
        with Image.open(io.BytesIO(data)) as im:
            im.load()
            if im.size != (1280, 1024) or (str(im.size[0]), str(im.size[1])) != (pngs[0].get("width"), pngs[0].get("height")):
                fail("the report's image is %r (said %s x %s), expected the 1280 x 1024 screen" %
                     (im.size, pngs[0].get("width"), pngs[0].get("height")))


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--dir", required=True)
    ap.add_argument("--junit")
    ap.add_argument("--json")
    ap.add_argument("--html")
    ap.add_argument("--artifacts")
    ap.add_argument("--runs", type=int)
    ap.add_argument("--outcome")
    ap.add_argument("--exit", type=int)
    ap.add_argument("--steps", type=int)
    ap.add_argument("--cases", type=int)
    ap.add_argument("--failure-step", type=int)
    ap.add_argument("--image", action="store_true")
    ap.add_argument("--var", action="append")
    ap.add_argument("--log-has")
    ap.add_argument("--message-has")
    ap.add_argument("--suites", type=int)
    ap.add_argument("--junit-elsewhere", action="store_true")
    ap.add_argument("--child")
    ap.add_argument("--child-outcome")
    ap.add_argument("--child-log-has")
    o = ap.parse_args()
    failures = []

    def fail(message):
        failures.append(message)

    sets = []
    if o.artifacts:
        runs = sorted(glob.glob(os.path.join(o.dir, o.artifacts, "*")))
        if o.runs is not None and len(runs) != o.runs:
            fail("%d run folders in %s, expected %d: %r" % (len(runs), o.artifacts, o.runs, runs))
        for run in runs:
            if not re.fullmatch(r".+-\d{8}-\d{6}-\d+", os.path.basename(run)):
                fail("the run folder %s is not <script>-<yyyyMMdd-HHmmss>-<pid>" % os.path.basename(run))
            # A JUnit file named elsewhere on the line is not in the folder.
            names = ("run.log", "result.json", "report.html") + (() if o.junit_elsewhere else ("junit.xml",))
            for name in names:
                if not os.path.isfile(os.path.join(run, name)):
                    fail("%s has no %s" % (run, name))
            sets.append((None if o.junit_elsewhere else os.path.join(run, "junit.xml"),
                         os.path.join(run, "result.json"), os.path.join(run, "report.html")))
    else:
        sets.append(tuple(os.path.join(o.dir, n) if n else None for n in (o.junit, o.json, o.html)))
    for junit, js, report in sets:
        for path, check in ((junit, check_junit), (js, check_json), (report, check_html)):
            if not path:
                continue
            if not os.path.isfile(path):
                fail("missing result file %s" % path)
                continue
            try:
                check(path, o, fail)
            except Exception as e:  # a file that does not parse
                fail("%s: %s: %s" % (path, type(e).__name__, e))
    for f in failures:
        print(f)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
