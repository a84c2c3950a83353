#!/usr/bin/env python3
"""Builds ZantoRunner.chm from the Markdown pages under docs/help: each page
becomes an HTML topic of the same name (saveresult.md is "saveresult.htm"),
the contents follow the links of index.md, and the index lists every action.

    make-chm.py PAGES-FOLDER WORK-FOLDER OUTPUT.chm
"""
import html
import os
import re
import shutil
import subprocess
import sys

import markdown

STYLE = """body { font-family: Tahoma, Verdana, Arial, sans-serif; font-size: 10pt; margin: 12px; }
h1 { font-size: 16pt; color: #1f4e79; } h2 { font-size: 12pt; color: #1f4e79; border-bottom: 1px solid #ccc; }
table { border-collapse: collapse; margin: 6px 0; } th, td { border: 1px solid #bbb; padding: 2px 6px; vertical-align: top; }
th { background: #e8eef5; } code, pre { font-family: Consolas, "Courier New", monospace; background: #f4f4f4; }
pre { padding: 6px; }"""


def topic_name(page):
    return os.path.splitext(page)[0] + ".htm"


def to_html(text, title):
    body = markdown.markdown(text, extensions=["tables", "fenced_code"])
    # Links between pages name the Markdown files; in the help they are topics.
    body = re.sub(r'href="([a-z0-9]+)\.md(#[a-z0-9]*)?"', lambda m: 'href="%s.htm%s"' % (m.group(1), m.group(2) or ""),
                  body)
    return ("<html><head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\">"
            "<title>%s</title><style>%s</style></head><body>\n%s\n</body></html>\n" % (html.escape(title), STYLE, body))


def sitemap_item(name, local):
    return ('<li><object type="text/sitemap"><param name="Name" value="%s"><param name="Local" value="%s"></object>\n'
            % (html.escape(name, quote=True), local))


def main():
    folder, work, output = sys.argv[1:4]
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    pages = sorted(p for p in os.listdir(folder) if p.endswith(".md"))
    titles, keywords = {}, []
    for page in pages:
        text = open(os.path.join(folder, page), encoding="utf-8").read()
        m = re.search(r"^# (.+)$", text, re.M)
        title = m.group(1).strip() if m else os.path.splitext(page)[0]
        titles[page] = title
        for anchor, name in re.findall(r'<a id="([a-z0-9]+)"></a>\s*## (.+)', text):
            keywords.append((name.strip(), "%s#%s" % (topic_name(page), anchor)))
        with open(os.path.join(work, topic_name(page)), "w", encoding="utf-8") as f:
            f.write(to_html(text, title))
    # The contents: the start page, then the pages in the order index.md
    # links them, then any page it does not link.
    index_text = open(os.path.join(folder, "index.md"), encoding="utf-8").read()
    order = ["index.md"]
    for link in re.findall(r"\]\(([a-z0-9]+\.md)\)", index_text):
        if link in titles and link not in order:
            order.append(link)
    order += [p for p in pages if p not in order]
    with open(os.path.join(work, "contents.hhc"), "w", encoding="utf-8") as f:
        f.write("<html><body><ul>\n")
        for page in order:
            f.write(sitemap_item(titles[page], topic_name(page)))
        f.write("</ul></body></html>\n")
    with open(os.path.join(work, "index.hhk"), "w", encoding="utf-8") as f:
        f.write("<html><body><ul>\n")
        for name, local in sorted(keywords, key=lambda k: k[0].lower()):
            f.write(sitemap_item(name, local))
        f.write("</ul></body></html>\n")
    name = os.path.basename(output)
    with open(os.path.join(work, "help.hhp"), "w", encoding="utf-8") as f:
        f.write("[OPTIONS]\nCompiled file=%s\nContents file=contents.hhc\nIndex file=index.hhk\n"
                "Default topic=index.htm\nTitle=ZantoRunner Help\nLanguage=0x409 English (United States)\n\n"
                "[FILES]\n" % name)
        for page in order:
            f.write(topic_name(page) + "\n")
        # The pictures the pages show, beside them.
        for picture in sorted(p for p in os.listdir(folder) if p.endswith(".png")):
            shutil.copyfile(os.path.join(folder, picture), os.path.join(work, picture))
            f.write(picture + "\n")
    r = subprocess.run(["chmcmd", "--no-html-scan", "help.hhp"], cwd=work, capture_output=True, text=True)
    built = os.path.join(work, name)
    if r.returncode != 0 or not os.path.exists(built):
        sys.stderr.write(r.stdout + r.stderr)
        return 1
    shutil.copyfile(built, output)
    return 0


if __name__ == "__main__":
    sys.exit(main())
