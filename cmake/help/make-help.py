#!/usr/bin/env python3
"""Writes the help's generated pages (Markdown) from helpdump.exe's output and
the failure texts in the sources: a page for each category of the catalogue,
with every action of it, and the page of variables and macros. The other
pages under docs/help are written by hand.

    make-help.py DUMP SOURCE-ROOT OUT-FOLDER

The test help.topics runs this into a scratch folder and fails when the pages
under docs/help differ from what it writes, so the help follows the program.
"""
import os
import re
import sys

GENERATED = "<!-- Written by cmake/help/make-help.py from the program's own tables; run ./dev.sh help after a change. -->"

# Where each category's handler writes its failure texts.
FAILURE_SOURCES = {
    2: ["system/runprogram.cpp", "system/services.cpp", "system/processes.cpp", "system/launch.cpp"],
    3: ["desktop/windowstep.cpp", "desktop/searchfields.cpp", "desktop/windowmatch.cpp", "desktop/windowcontrol.cpp"],
    4: ["desktop/keyboard.cpp", "desktop/keypress.cpp", "desktop/bufferedtype.cpp", "desktop/playbackhook.cpp"],
    5: ["desktop/menus.cpp"],
    6: ["desktop/mouse.cpp", "desktop/imagesearch.cpp"],
    7: ["desktop/waits.cpp"],
    8: ["desktop/prompts.cpp", "desktop/popups.cpp", "desktop/inputbox.cpp", "desktop/filedialogs.cpp",
        "desktop/picture.cpp"],
    9: ["desktop/recordings.cpp"],
    10: ["system/fileactions.cpp", "system/filemoves.cpp", "system/filelines.cpp", "system/folders.cpp",
         "system/fileassoc.cpp"],
    11: ["net/runningscript.cpp", "net/internet.cpp", "net/internethandle.cpp", "net/fetch.cpp", "net/ftp.cpp",
         "net/mail.cpp", "net/ping.cpp"],
    12: ["net/database.cpp", "net/resultset.cpp"],
    13: ["run/flow.cpp", "run/loopstack.cpp"],
    14: ["run/flow.cpp"],
    15: ["system/systemstep.cpp", "system/registrystep.cpp", "system/display.cpp", "system/session.cpp",
         "run/variables.cpp"],
    16: ["run/functions.cpp", "run/textops.cpp"],
    17: ["system/nativecall.cpp"],
}

ROW_KINDS = {1: "text", 2: "text (lines)", 3: "password", 4: "number", 5: "check box", 6: "list",
             7: "recording"}
FIELD_NAMES = {1: "text", 2: "comment", 3: "options", 4: "timeout", 13: "output", 14: "output_value",
               15: "onfail", 16: "onfail_value"}
ROWF_REQUIRED = 0x8000
ROWF_INNER_CHECK = 0x200


def unfield(text):
    out, i = [], 0
    while i < len(text):
        c = text[i]
        if c == "\\" and i + 1 < len(text):
            out.append({"t": "\t", "n": "\n", "r": "\r", "\\": "\\"}.get(text[i + 1], text[i + 1]))
            i += 2
        else:
            out.append(c)
            i += 1
    return "".join(out)


def slug(name):
    """The file or anchor name of a title: its letters and digits, in lower case."""
    return re.sub(r"[^a-z0-9]", "", name.lower())


def cell(text):
    return text.replace("|", "\\|").replace("\r", " ").replace("\n", " ").replace("<", "&lt;")


def read_dump(path):
    categories, macros, current = [], [], None
    with open(path, encoding="latin-1") as f:
        for line in f:
            parts = [unfield(p) for p in line.rstrip("\r\n").split("\t")]
            kind = parts[0]
            if kind == "C":
                categories.append({"id": int(parts[1]), "name": parts[2], "summary": parts[3], "actions": []})
            elif kind == "A":
                current = {"category": int(parts[1]), "name": parts[2], "summary": parts[4], "defaults": {},
                           "rows": [], "xml": ""}
                categories[-1]["actions"].append(current)
            elif kind == "D":
                current["defaults"][parts[1]] = parts[2]
            elif kind == "R":
                current["rows"].append({"label": parts[1], "type": int(parts[2]), "field": int(parts[3]),
                                        "flags": int(parts[4]), "choices": parts[5], "help": parts[6]})
            elif kind == "X":
                current["xml"] = parts[1]
            elif kind == "M":
                macros.append((parts[1], parts[2]))
    return categories, macros


def failure_texts(root, category):
    """The literal failure texts the category's handlers write, in source order."""
    texts = []
    pattern = re.compile(r'(?:FailStep\(|StepFailureText,\s*STEP_FAILURE_TEXT_SIZE,)\s*((?:"(?:[^"\\]|\\.)*"\s*)+)')
    for name in FAILURE_SOURCES.get(category, []):
        path = os.path.join(root, "src", name)
        if not os.path.exists(path):
            continue
        source = open(path, encoding="latin-1").read()
        for m in pattern.finditer(source):
            literal = "".join(re.findall(r'"((?:[^"\\]|\\.)*)"', m.group(1)))
            literal = literal.replace('\\"', '"').replace("\\r", "").replace("\\n", " ").replace("\\t", " ")
            literal = re.sub(r"%[-0-9.]*(?:l|ll|z)?[sdux]", "...", literal).strip()
            if literal and literal not in texts:
                texts.append(literal)
    return texts


def tag_of(field):
    return FIELD_NAMES.get(field) or ("value%d" % (field - 4) if 5 <= field <= 12 else "")


def default_of(action, row):
    d = action["defaults"]
    name = tag_of(row["field"])
    value = d.get(name, "")
    if row["type"] == 5:
        word = row["choices"]
        return "on" if word and word.lower() in value.lower() else "off"
    return value


def action_section(action, used):
    anchor = slug(action["name"]) or "action"
    while anchor in used:
        anchor += "x"
    used.add(anchor)
    out = ['<a id="%s"></a>' % anchor, "", "## %s" % action["name"], "", action["summary"], ""]
    own = [r for r in action["rows"] if r["field"] not in (2, 13, 14, 15, 16, 17, 19)]
    if own:
        out += ["| Field | In the file | Kind | Default | What it is |", "|---|---|---|---|---|"]
        for r in own:
            kind = ROW_KINDS.get(r["type"], "text")
            if r["flags"] & ROWF_REQUIRED:
                kind += ", required"
            helptext = r["help"]
            if r["type"] == 6 and r["choices"]:
                helptext += " (one of: %s)" % ", ".join(c for c in r["choices"].split(";") if c)
            tag = tag_of(r["field"])
            out.append("| %s | %s | %s | %s | %s |" % (cell(r["label"]), "`<%s>`" % tag if tag else "", kind,
                                                       cell(default_of(action, r)), cell(helptext)))
        out.append("")
    else:
        out += ["No fields of its own.", ""]
    notes = []
    if any(r["field"] == 13 for r in action["rows"]):
        saved = action["defaults"].get("output", "")
        notes.append("Saves its result as [Save Result](saveresult.md) says" +
                     (" (by default to: %s)." % saved if saved else "."))
    if any(r["field"] == 15 for r in action["rows"]):
        notes.append("When it fails: \"%s\" unless the step says otherwise; see [Failure modes](failures.md)." %
                     action["defaults"].get("onfail", "Display Error and Stop"))
    else:
        notes.append("It cannot fail, so it has no failure settings.")
    out += notes + [""]
    if action["xml"]:
        out += ["A new step of this action, as the script file holds it:", "", "```xml"]
        out += [line.replace("\t", "  ") for line in action["xml"].replace("\r", "").split("\n")]
        out += ["```", ""]
    return out


def category_page(category, root, categories):
    actions = [a for c in categories for a in c["actions"] if a["category"] == category["id"]]
    elsewhere = [a for a in category["actions"] if a["category"] != category["id"]]
    out = [GENERATED, "", "# %s" % category["name"], "", category["summary"], ""]
    used = set()
    out.append("Actions: " + ", ".join("[%s](#%s)" % (a["name"], slug(a["name"])) for a in actions) + ".")
    out.append("")
    for a in elsewhere:
        home = next(c for c in categories if c["id"] == a["category"])
        out += ["The tree shows \"%s\" here too; it is a %s action, described under [%s](%s.md#%s)." %
                (a["name"], home["name"], home["name"], slug(home["name"]), slug(a["name"])), ""]
    for a in actions:
        out += action_section(a, used)
    texts = failure_texts(root, category["id"])
    if texts:
        out += ["## Failure texts", "",
                "What a failing step of this category can say (\"...\" stands for a name or number of the step):", ""]
        out += ["- `%s`" % t.replace("`", "'") for t in texts]
        out.append("")
    return "\n".join(out)


def macros_page(macros):
    out = [GENERATED, "", "# Variables and macros", "",
           "Every text field of a step is translated before the step uses it. A `%` followed by a name is "
           "replaced: first by the user variable of that name (set by \"Create/Set Variable\", a step's "
           "[Save Result](saveresult.md), or `%name=value` on the command line), else by one of the texts "
           "below. A name ends at the first character that cannot be part of it, so write `%total`, not "
           "`%total%`. Functions can be written inside a text too, such as `Uppercase(%name)`.", ""]
    for group, items in macros:
        out += ["## %s" % group, "", "| Text | Means |", "|---|---|"]
        for item in items.split("|"):
            if item == "-":
                continue
            text, _, caption = item.partition("\t")
            out.append("| `%s` | %s |" % (cell(text), cell(caption)))
        out.append("")
    return "\n".join(out)


def index_page(categories):
    out = [GENERATED, "", "# ZantoRunner Help", "",
           "ZantoRunner runs scripts: flat lists of steps, each one action, kept in a `.zxm` file. "
           "Build a script in the editor by double-clicking actions in the tree on the left, set each "
           "step's fields in the properties palette on the right, and run it with F5, from the "
           "[command line](commandline.md), or as a compiled EXE.", "",
           "- [The editor](editor.md): its window, keys, toolbar, Options sheet and Variables palette",
           "- [The command line](commandline.md): switches and exit codes",
           "- [Runs for a scheduler or a CI server](fleet.md): JUnit, JSON, the run report, parameters",
           "- [Variables and macros](macros.md)",
           "- [Save Result](saveresult.md): where a step's result goes",
           "- [Failure modes](failures.md): what happens when a step fails",
           "- [Debugging a script](debugging.md): pause, step, fix and go on",
           "- [Languages and encodings](unicode.md): scripts and texts in any language",
           "- [Finding images](imagesearch.md): picture files, similarity, screen scales and why a search missed",
           "- [Record as Steps](recordsteps.md): do the work once and get readable steps",
           "",
           "## The actions", "", "| Category | What it is for |", "|---|---|"]
    for c in categories:
        out.append("| [%s](%s.md) | %s |" % (c["name"], slug(c["name"]), cell(c["summary"])))
    out.append("")
    return "\n".join(out)


def main():
    dump, root, folder = sys.argv[1:4]
    categories, macros = read_dump(dump)
    os.makedirs(folder, exist_ok=True)
    pages = {"index.md": index_page(categories), "macros.md": macros_page(macros)}
    for c in categories:
        pages[slug(c["name"]) + ".md"] = category_page(c, root, categories)
    for name, text in pages.items():
        with open(os.path.join(folder, name), "w", encoding="utf-8", newline="\n") as f:
            f.write(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
