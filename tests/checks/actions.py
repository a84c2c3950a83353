#!/usr/bin/env python3
"""Every action of the catalogue is run by a scenario: a script under
tests/scenario (or an example, which runs as one) holds a step of it.

    actions.py SOURCE-ROOT

The actions are read from the catalogue's own table (ActionCatalogue in
src/script/catalogue.cpp; a category's row has a code of 100000 and up). A
step names an action when its <action> is the action's name. A few actions
are kept under another one's name (a new "Start Hidden" is a "Start" step
with the option "Hidden"); how the program stores each new step is on the
help's pages, which help.topics keeps equal to the program's tables. Such a
step counts when it has that action and those options. Where the stored step
cannot tell the actions apart (a "Start Browser" is a "Start" of the browser
program), the scenario says which it runs with a "covers: NAME" line in its
directives, next to a step of the stored action.
"""
import glob
import html
import os
import re
import sys


def catalogue(root):
    source = open(os.path.join(root, "src", "script", "catalogue.cpp"), encoding="latin-1").read()
    start = source.index("ActionCatalogue[]")
    table = source[start:source.index("};", start)]
    rows = re.findall(r'\{"((?:[^"\\]|\\.)*)",\s*(\d+),', table)
    return [name.replace('\\"', '"') for name, code in rows if int(code) < 100000]


def stored_forms(root):
    """Action name -> (stored action, stored options or None), from the help's pages."""
    forms = {}
    for page in glob.glob(os.path.join(root, "docs", "help", "*.md")):
        text = open(page, encoding="utf-8").read()
        for m in re.finditer(r"\n## (.*?)\n(.*?)```xml\n(.*?)```", text, re.S):
            action = re.search(r"<action>(.*?)</action>", m.group(3))
            options = re.search(r"<options>(.*?)</options>", m.group(3))
            if action:
                forms[html.unescape(m.group(1))] = (html.unescape(action.group(1)),
                                                    html.unescape(options.group(1)) if options else None)
    return forms


def scenario_steps(root):
    """(script, [(action, options)], {names of covers: lines}) for each script the real program runs."""
    scripts = sorted(glob.glob(os.path.join(root, "tests", "scenario", "**", "*.zxm"), recursive=True) +
                     glob.glob(os.path.join(root, "examples", "*.zxm")))
    for script in scripts:
        text = open(script, encoding="latin-1").read()
        steps = []
        for step in re.findall(r"<step>(.*?)</step>", text, re.S):
            action = re.search(r"<action>(.*?)</action>", step, re.S)
            options = re.search(r"<options>(.*?)</options>", step, re.S)
            if action:
                steps.append((html.unescape(action.group(1)).strip(),
                              html.unescape(options.group(1)) if options else ""))
        comment = re.search(r"<!--(.*?)-->", text, re.S)
        covers = set()
        if comment:
            covers = {line.strip()[len("covers:"):].strip() for line in comment.group(1).splitlines()
                      if line.strip().startswith("covers:")}
        yield script, steps, covers


def main():
    root = sys.argv[1]
    actions = catalogue(root)
    forms = stored_forms(root)
    scripts = list(scenario_steps(root))
    missing, unknown = [], []
    for name in actions:
        stored, options = forms.get(name, (name, None))
        covered = False
        for _, steps, covers in scripts:
            for action, step_options in steps:
                if action.lower() == name.lower():
                    covered = True
                elif action.lower() == stored.lower() and stored.lower() != name.lower():
                    if options and options.lower() in step_options.lower():
                        covered = True
                    elif not options and name in covers:
                        covered = True
            if covered:
                break
        if not covered:
            missing.append(name)
    known = {a.lower() for a in actions}
    for script, _, covers in scripts:
        unknown += ["%s: covers: %s" % (os.path.relpath(script, root), c) for c in covers if c.lower() not in known]
    if len(actions) < 100:
        print("read only %d actions from the catalogue's table" % len(actions))
        return 1
    for name in missing:
        print("no scenario runs the action %r" % name)
    for line in unknown:
        print("%s is no action of the catalogue" % line)
    print("%d of %d actions run by a scenario" % (len(actions) - len(missing), len(actions)))
    return 1 if missing or unknown else 0


if __name__ == "__main__":
    sys.exit(main())
