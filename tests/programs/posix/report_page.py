#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Opens a report's page in a browser.

usage: report_page.py BIN PROJECT        (the folder of moxreport, a project)

Ends with 77 where no browser is installed; with MOX_ALL_READERS=1 in the environment that
is a failure.
"""

import html.parser
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest
import urllib.parse

programs, sample = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
browser = shutil.which("chromium")
if browser is None:
    print("skipped: no browser is installed")
    sys.exit(1 if os.environ.get("MOX_ALL_READERS") == "1" else 77)


class Page(html.parser.HTMLParser):
    """Elements with attributes, and texts, in their order, as far as they say something."""

    def __init__(self, text):
        super().__init__()
        self.events, self.ids, self.targets, self.hidden = [], [], [], False
        self.feed(text)
        self.close()

    def handle_starttag(self, tag, attributes):
        self.hidden = tag in ("style", "script")
        self.events.append((tag, sorted(attributes)))
        self.ids += [value for name, value in attributes if name == "id"]
        self.targets += [value for name, value in attributes if name == "href"]

    def handle_endtag(self, tag):
        self.hidden = False
        self.events.append(("/" + tag,))

    def handle_data(self, data):
        if data.strip() and not self.hidden:
            if self.events and self.events[-1][0] == "text":
                data = self.events.pop()[1] + data
            self.events.append(("text", data.strip()))


class ReportPage(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        here = pathlib.Path(self.folder.name)
        project = here / "plant"
        shutil.copytree(sample, project)
        evil = "</td><script>document.title='hacked'<!--\x1b&amp;\"'\n\u202e \udcff"
        hostile = os.fsencode(project / "hostile") + b"/" + os.fsencode(evil.replace("/", "_"))
        os.makedirs(hostile)
        (project / "hostile" / "javascript:alert(1)").write_text("")
        pathlib.Path(os.fsdecode(hostile + b"/\xe4\xf6 100% #?.dgm")).write_text("")
        self.page = here / "report.html"
        subprocess.run([programs / "moxreport", "-projdir", project, "-output", self.page, "-path", "-Quiet"],
                       check=True, env={"HOME": str(here)})

    def test_a_browser_shows_what_it_says(self):
        # The sandbox wants rights that containers do not give; the page is our own.
        run = subprocess.run([browser, "--headless", "--no-sandbox", "--disable-gpu",
                              "--user-data-dir=" + self.folder.name + "/profile", "--dump-dom",
                              self.page.as_uri()], capture_output=True, timeout=120, check=True)
        written, shown = Page(self.page.read_text()), Page(run.stdout.decode())
        # The browser repairs what is wrong: nothing was.
        self.assertEqual(written.events, shown.events)
        self.assertIn(("text", "Project plant"), shown.events)
        self.assertEqual([event for event in shown.events if event[0] in ("script", "iframe", "img")], [])
        self.assertEqual(len(shown.ids), len(set(shown.ids)))
        within = [target[1:] for target in shown.targets if target.startswith("#")]
        self.assertGreater(len(within), 10)
        self.assertEqual(set(within) - set(shown.ids), set())
        # Each other link leads to the file whose name it is.
        for target in shown.targets:
            if not target.startswith("#"):
                self.assertTrue(target.startswith("file:///"))
                self.assertTrue(os.path.lexists(urllib.parse.unquote_to_bytes(target[7:])), target)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=1)
