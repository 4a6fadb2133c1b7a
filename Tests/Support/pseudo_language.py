#!/usr/bin/env python3
"""Makes a language for tests from a translation: pseudo_language.py KIND LANGUAGE FROM.ts TO.ts

`foreign` says each text in the letters of the source, but wide ones: what is seen in plain letters has not been
translated. `mirrored` keeps the translation, and runs from right to left.
"""

import re
import sys
import xml.etree.ElementTree as ET

WIDE = 0xFEE0  # from "A" to U+FF21, "FULLWIDTH LATIN CAPITAL LETTER A"
PLACE_OR_LETTER = re.compile(r"%\d|%n|[A-Za-z]")


def foreign(text):
    def widen(found):
        return found[0] if len(found[0]) > 1 else chr(ord(found[0]) + WIDE)
    return PLACE_OR_LETTER.sub(widen, text)


def main(kind, language, source, target):
    tree = ET.parse(source)
    root = tree.getroot()
    root.set("language", language)
    for message in root.iter("message"):
        translation = message.find("translation")
        for form in translation.findall("numerusform") or [translation]:
            if kind == "foreign":
                form.text = foreign(message.find("source").text)
    if kind == "mirrored":
        context = ET.SubElement(root, "context")
        ET.SubElement(context, "name").text = "QGuiApplication"
        message = ET.SubElement(context, "message")
        ET.SubElement(message, "source").text = "QT_LAYOUT_DIRECTION"
        ET.SubElement(message, "translation").text = "RTL"
    tree.write(target, encoding="utf-8", xml_declaration=True)


if __name__ == "__main__":
    main(*sys.argv[1:])
