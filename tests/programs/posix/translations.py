#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Takes message texts through gettext's own tools and back.

usage: translations.py MOXMSG
"""

import gettext
import os
import pathlib
import random
import resource
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

if shutil.which("msgfmt") is None or shutil.which("msgen") is None:
    print("skipped: gettext is not installed")
    sys.exit(77)

moxmsg = pathlib.Path(sys.argv.pop(1)).resolve()


def escaped(text):
    names = {"\n": "\\n", "\t": "\\t", "\\": "\\\\"}
    text = "".join(names.get(c, c) for c in text)
    return text.replace(" ", "\\ ") if text != text.strip() else text


class Translations(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        os.chdir(self.folder)

    def run_tool(self, *words, status=0):
        run = subprocess.run(words, capture_output=True, check=False, text=True, errors="surrogateescape")
        self.assertEqual(run.returncode, status, f"{words}: {run.stdout}{run.stderr}")
        return run

    def write_source(self, texts):
        lines = [f"{number} {escaped(text)}\n" for number, text in texts.items()]
        (self.folder / "texts").write_text("".join(lines), encoding="utf-8")

    def template(self):
        self.run_tool(moxmsg, "-source", "texts", "-formats", "po", "-output", "x.pot")
        return (self.folder / "x.pot").read_text(encoding="utf-8")

    def listed(self, name="messages"):
        out = self.run_tool(moxmsg, "-file", name).stdout
        return dict(line.split(" ", 1) for line in out.splitlines())

    def test_texts_survive_the_whole_way(self):
        pieces = ["%s", "%d", "%%", "%2$s %1$d", '"', "\\", "\n", "\t", "ä", "漢", " ", "a", "\x7f", "\x01", "#", "'"]
        for seed in range(12):
            chance = random.Random(seed)
            texts = {chance.randrange(15872): "a".join("".join(chance.choices(pieces, k=chance.randrange(7)))
                                                                for _ in range(2)) for _ in range(30)}
            texts = {number: text for number, text in texts.items() if len(text.encode()) < 120}
            self.write_source(texts)
            pot = self.template()
            self.assertEqual(pot.count("\n#, c-format\n"), sum("%" in text for text in texts.values()))
            # English is a translation, too; here each text gets a mark.
            self.run_tool("msgen", "-o", "en.po", "x.pot")
            self.run_tool("msgfilter", "--keep-header", "-i", "en.po", "-o", "x.po", "sed", "-z", "s/a/»a/")
            endian = chance.choice(["little", "big"])
            self.run_tool("msgfmt", "--endianness=" + endian, "-o", "x.mo", "x.po")
            self.run_tool(moxmsg, "-source", "texts", "-merge", "x.mo", "-output", "messages")
            with open("x.mo", "rb") as file:
                oracle = gettext.GNUTranslations(file)
            expected = {number: oracle.pgettext(str(number), text) for number, text in texts.items()}
            self.assertEqual({number for number in texts if texts[number] == expected[number]}, set())
            self.assertEqual(self.listed(), self.listing_of(expected))

    def listing_of(self, texts):
        """The texts as a listing shows them, by way of a message file that is made of bytes alone."""
        lines = [f"{number} " + "".join(f"\\x{byte:02x}" for byte in text.encode()) + "\n"
                 for number, text in texts.items()]
        (self.folder / "bytes").write_text("".join(lines), encoding="utf-8")
        self.run_tool(moxmsg, "-source", "bytes", "-output", "bytes.msg")
        return self.listed("bytes.msg")

    def merge(self, po, status, check="--check-format"):
        (self.folder / "x.po").write_text('msgid ""\nmsgstr "Content-Type: text/plain; charset=UTF-8\\n"\n' + po,
                                          encoding="utf-8")
        self.run_tool("msgfmt", *([check] if check else []), "-o", "x.mo", "x.po")
        return self.run_tool(moxmsg, "-source", "texts", "-merge", "x.mo", "-output", "messages", status=status).stderr

    def test_the_way_of_the_manual(self):
        self.write_source({1: "one", 2: "%d of %s", 3: "100%"})
        self.template()
        self.run_tool("msginit", "--no-translator", "-l", "de", "-i", "x.pot", "-o", "de.po")
        self.run_tool("msgmerge", "-U", "de.po", "x.pot")
        self.run_tool("msgfmt", "--check", "-o", "x.mo", "de.po")
        self.run_tool(moxmsg, "-source", "texts", "-merge", "x.mo", "-output", "messages")
        self.assertEqual(self.listed(), {"1": "one", "2": "%d of %s", "3": "100%"})
        po = "de.po: is a PO file: msgfmt --check makes the MO file of it\n"
        mo = "x.mo: is an MO file: -merge takes its texts for those of -source\n"
        for words, said in ((("-source", "texts", "-merge", "de.po"), po), (("-source", "de.po"), po),
                            (("-source", "x.mo"), mo), (("-file", "x.mo"), mo),
                            (("-file", "messages", "-merge", "x.mo"), mo)):
            self.assertEqual(self.run_tool(moxmsg, *words, status=1).stderr, said)

    def test_what_is_not_translated_stays(self):
        self.write_source({1: "one", 2: "two %d", 3: "three", 4: "four", 5: "five"})
        gone = 'msgctxt "9"\nmsgid "nine"\nmsgstr "neun"\n'
        said = self.merge(gone + 'msgctxt "1"\nmsgid "one"\nmsgstr "eins"\n'
                          '#, fuzzy, c-format\nmsgctxt "2"\nmsgid "two %d"\nmsgstr "zwei %d"\n'
                          'msgctxt "3"\nmsgid "three before"\nmsgstr "drei"\n'
                          'msgctxt "4"\nmsgid "four"\nmsgid_plural "fours"\nmsgstr[0] "vier"\nmsgstr[1] "viere"\n'
                          'msgctxt "word"\nmsgid "five"\nmsgstr "x"\nmsgid "five"\nmsgstr "y"\n', 0)
        self.assertEqual(said, "x.mo: the translation of 3 is of another text and is not used\n"
                               "x.mo: the translation of 9 is of no text and is not used\n")
        self.assertEqual(self.listed(), {"1": "eins", "2": "two %d", "3": "three", "4": "vier", "5": "five"})

    def test_faults_leave_the_old_file(self):
        self.write_source({1: "one %s", 2: "two"})
        good = 'msgctxt "2"\nmsgid "two"\nmsgstr "zwei"\n'
        self.merge(good, 0)
        before = (self.folder / "messages").read_bytes()
        sound = (self.folder / "x.mo").read_bytes()
        said = self.merge('msgctxt "1"\nmsgid "one %s"\nmsgstr "eins %d"\n' + good, 1, check=None)
        self.assertEqual(said, "x.mo: the arguments of 1 (%d) are others in texts:1 (%s)\n")
        said = self.merge('#, c-format\nmsgctxt "1"\nmsgid "one %s"\nmsgstr "eins %Id"\n' + good, 1, check=None)
        self.assertEqual(said, "x.mo: has 1 texts with conversions of the system's own, as %Id\n")
        said = self.merge('msgctxt "2"\nmsgid "two"\nmsgstr "' + "z" * 128 + '"\n', 1)
        self.assertEqual(said, "x.mo: the text of 2 has 128 bytes, 127 fit\n")
        for length, told in (0, "is empty\n"), (len(sound) - 1, "is damaged: "):
            (self.folder / "x.mo").write_bytes(sound[:length])
            said = self.run_tool(moxmsg, "-source", "texts", "-merge", "x.mo", "-output", "messages", status=1).stderr
            self.assertTrue(said.startswith("x.mo: " + told), said)
        self.assertEqual((self.folder / "messages").read_bytes(), before)

    def test_a_small_file_does_not_fill_the_memory(self):
        self.write_source({7: "seven"})
        count, text = 1 << 15, b"7\4" + b"a" * (1 << 19)
        for offset in (28 + 8 * count, 1 << 30):
            head = struct.pack("<7I", 0x950412DE, 0, count, 28, 28, 0, 0)
            tables = struct.pack("<II", len(text), offset) * count
            (self.folder / "x.mo").write_bytes(head + tables + text + b"\0")
            said = self.run_tool(moxmsg, "-source", "texts", "-merge", "x.mo", status=1).stderr
            self.assertLess(len(said.splitlines()), 20)
            self.assertIn("x.mo: is damaged: ", said)
        # In KiB; gettext's tools and a sanitizer have their part.
        self.assertLess(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss, 1 << 20)

    def test_templates_that_cannot_be(self):
        (self.folder / "texts").write_bytes(b"1 one\n2 t\xe9xt\n3 \xe0\x80\x80\n")
        said = self.run_tool(moxmsg, "-source", "texts", "-formats", "po", "-output", "x.pot", status=1).stderr
        self.assertEqual(said, "".join(f"texts:{n}: the text of {n} is no UTF-8, which translators need\n" for n in (2, 3)))
        self.assertFalse((self.folder / "x.pot").exists())
        self.run_tool(moxmsg, "-source", "texts", "-formats", "xml", status=2)


if __name__ == "__main__":
    unittest.main()
