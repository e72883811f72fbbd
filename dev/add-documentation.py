#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Puts texts of documentation keys into a file of resources/documentation, sorted by key.

add-documentation.py FILE.ts < lines of the form "key<TAB>text"
"""
import re
import sys
from xml.sax.saxutils import escape

path = sys.argv[1]
text = open(path, encoding="utf-8").read()
pattern = re.compile(
    r"    <message>\n        <source>(.*?)</source>\n        <translation>.*?</translation>\n    </message>\n",
    re.S)
known = {match.group(1): match.group(0) for match in pattern.finditer(text)}
first, last = text.index("    <message>"), text.rindex("</context>")
for line in sys.stdin:
    key, _, words = line.rstrip("\n").partition("\t")
    if not words:
        continue
    key = escape(key)
    known[key] = ("    <message>\n        <source>%s</source>\n        <translation>%s</translation>\n"
                  "    </message>\n" % (key, escape(words)))
open(path, "w", encoding="utf-8").write(
    text[:first] + "".join(known[key] for key in sorted(known)) + text[last:])
