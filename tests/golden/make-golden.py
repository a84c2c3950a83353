#!/usr/bin/env python3
"""Writes the golden scripts of the encoding tests (tests/unit/encoding_test.cpp).

Each file is in the exact form the program writes, so that a load and a save
with no change gives it back byte for byte.
"""
import os

HERE = os.path.dirname(os.path.abspath(__file__))


def cp1252(text):
    # Windows maps the five bytes that Windows-1252 leaves unassigned to
    # U+0081, U+008D, U+008F, U+0090 and U+009D, and back.
    return b"".join(bytes([ord(c)]) if c in "\x81\x8d\x8f\x90\x9d" else c.encode("cp1252") for c in text)


def from_cp1252(data):
    return "".join(chr(b) if b in (0x81, 0x8D, 0x8F, 0x90, 0x9D) else bytes([b]).decode("cp1252") for b in data)


def step(action, text=None, values=(), output=None, comment=None):
    lines = ["<step>", "\t<action>%s</action>" % action]
    if text:
        lines.append("\t<text>%s</text>" % text)
    for i, v in enumerate(values):
        lines.append("\t<value%d>%s</value%d>" % (i + 1, v, i + 1))
    if output:
        lines.append('\t<output value="%s">Variable</output>' % output)
    if comment:
        lines.append("\t<comment>%s</comment>" % comment)
    lines.append("</step>")
    return "".join(line + "\r\n" for line in lines)


def document(steps):
    return '<?xml version="1.0" ?>\r\n<ZantoRunner>\r\n' + "".join(steps) + "</ZantoRunner>"


# Every byte 0x80-0xFF, as Windows-1252 reads it.
high = from_cp1252(bytes(range(0x80, 0x100)))
quarters = [high[i:i + 32] for i in range(0, 128, 32)]
legacy = document([
    step("Comment", comment="Every byte from 0x80 to 0xFF: " + high),
    step("Create/Set Variable", text=high, output="Gr\u00fc\u00dfe", comment="\u00c6r\u00f8 \u20ac \u2013 " + high),
    step("Replace Text", text="Fa\u00e7ade \u00bd \u2020", values=quarters, output="r\u00e9sultat"),
])
unicode_steps = [
    step("Comment", comment="Z\u00fcrich \u2013 \u0394 \u2013 \u6771\u4eac \u2013 \U0001F600, \u00d8deg\u00e5rd"),
    step("Activate", text="Z\u00fcrich \u2013 \u0394 \u2013 \u6771\u4eac \u2013 \U0001F600"),
    step("Create/Set Variable", text="\u041f\u0440\u0438\u0432\u0435\u0442 \u05e9\u05dc\u05d5\u05dd \u0645\u0631\u062d\u0628\u0627",
         values=["Rechnungen 2026 \u2013 M\u00fcller", "\u00e9\u00e8 &amp; \u6771"], output="\u5909\u6570"),
]
files = {
    "cp1252.zxm": cp1252(legacy),
    "utf8.zxm": document(unicode_steps).encode("utf-8"),
    "utf8_mark.zxm": b"\xef\xbb\xbf" + document(unicode_steps).encode("utf-8"),
    # The legacy script once a "\u6771" is added to the end of its second
    # step's text: UTF-8 without a mark.
    "cp1252_east.saved.zxm": legacy.replace("<text>" + high + "</text>", "<text>" + high + "\u6771</text>").encode("utf-8"),
}
for name, data in files.items():
    with open(os.path.join(HERE, name), "wb") as f:
        f.write(data)
