#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The table of benchmarks and its pictures, from programs that make their results up.

usage: bench_table.py SCRIPTS
"""

import json
import math
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as xml

scripts = pathlib.Path(sys.argv.pop(1))
areas = "strings containers util config messages app files formats documents services settings".split()

# Stands for a benchmark program: takes its options and gives the results of a file. Beside
# other rows in its process everything of ours takes three times as long.
program = '''#!{python}
import json, pathlib, re, sys
options = dict(word.split("=", 1) for word in sys.argv[1:])
made_up = json.loads(pathlib.Path(__file__).with_suffix(".json").read_text())
chosen = [entry for entry in made_up if re.search(options["--benchmark_filter"], entry["run_name"])]
rows = {{re.sub("/[^/]*", "", entry["run_name"], count=1) for entry in chosen}}
for entry in chosen:
    entry["cpu_time"] *= 3 if len(rows) > 1 and "/moxtools" in entry["run_name"] else 1
with open(pathlib.Path(__file__).with_suffix(".log"), "a") as log:
    print(len(rows), file=log)
context = {{"date": "2026-01-02T03:04:05+00:00", "num_cpus": 2, "mhz_per_cpu": 1000}}
pathlib.Path(options["--benchmark_out"]).write_text(json.dumps({{"context": context, "benchmarks": chosen}}))
'''


def entry(name, time, family=0):
    return {"run_name": name, "run_type": "iteration", "cpu_time": time, "real_time": time * 100,
            "time_unit": "ns", "family_index": family}


usual = [entry("find/moxtools/10", 20), entry("find/std/10", 40), entry("find/qt/10", 30),
         entry("find/moxtools/1000", 400), entry("find/std/1000", 100),
         entry("a<b & c+d/moxtools", 8, 1), entry("a<b & c+d/std", 1, 1),
         entry("alone/moxtools", 5, 2)]
# By hand: 20/30, 400/100 and 8/1; the work without a peer has no ratio.
usual_ratios = [20 / 30, 4, 8]


class BenchTable(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.top = pathlib.Path(self.folder.name)
        (self.top / "build/bin").mkdir(parents=True)
        for area in areas:
            self.make_up(area, usual if area == "util" else usual[:2])
        self.page = self.top / "performance.md"
        self.page.write_text("before\n<!-- table: begin -->\nold\n<!-- table: end -->\nbehind\n")

    def make_up(self, area, entries):
        path = self.top / "build/bin" / f"bench_{area}"
        path.write_text(program.format(python=sys.executable))
        path.chmod(0o755)
        path.with_suffix(".json").write_text(json.dumps(entries))

    def run_table(self, *words):
        return subprocess.run([sys.executable, scripts / "bench_table.py", *words[:-1],
                               self.top / "build/bin", *words[-1]], capture_output=True, text=True)

    def test_rows_are_decided_in_processes_of_their_own(self):
        result = self.run_table(["util"])
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        lines = result.stdout.splitlines()
        rows = [re.split(r"  +", line.strip()) for line in lines[3:7]]
        self.assertEqual(rows, [["find", "10", "20 ns", "30 ns (qt)", "0.67", "0.50", "2.00"],
                                ["find", "1,000", "400 ns", "100 ns (std)", "4.00", "12.00"],
                                ["a<b & c+d", "8 ns", "1 ns (std)", "8.00", "24.00"],
                                ["alone", "5 ns"]])
        mean = math.prod(usual_ratios) ** (1 / 3)
        self.assertEqual(lines[7], f"geometric mean {mean:.2f} of the best peer, ahead in 1 of 3 rows")
        log = (self.top / "build/bin" / "bench_util.log").read_text().split()
        self.assertEqual(log, ["4", "1", "1", "1", "1"])
        self.assertEqual(self.run_table("--quick", ["util"]).stdout, "util: 4 rows\n")
        self.assertEqual(len((self.top / "build/bin" / "bench_util.log").read_text().split()), 6)

    def test_pages_and_pictures(self):
        readme = self.top / "README.md"
        readme.write_text("x<!-- table: begin --><!-- table: end -->y")
        result = self.run_table("--write", self.page, "--summary", readme, [])
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        page = self.page.read_text()
        self.assertTrue(page.startswith("before\n<!-- table: begin -->\nTaken on 2026-01-02, 2 cores"))
        self.assertTrue(page.endswith("<!-- table: end -->\nbehind\n"))
        self.assertNotIn("old", page)
        self.assertIn("| find | 1,000 | 400 ns | 100 ns (std) | 4.00 |  | 12.00 |\n", page)
        pictures = re.findall(r"!\[.*\]\((.*)\)", page)
        self.assertEqual(pictures, ["bench/areas.svg"] + [f"bench/{area}.svg" for area in areas])
        self.assertIn("(bench/areas.svg)", readme.read_text())
        self.assertIn("in 11 of 13 rows", readme.read_text())
        self.check_picture(self.top / "bench/util.svg", ["find 10", "find 1,000", "a<b & c+d"], usual_ratios)
        means = [math.prod(usual_ratios) ** (1 / 3) if area == "util" else 20 / 40 for area in areas]
        labels = [f"{area} ({3 if area == 'util' else 1})" for area in areas]
        self.check_picture(self.top / "bench/areas.svg", labels, means)

    def check_picture(self, path, labels, ratios):
        space = "{http://www.w3.org/2000/svg}"
        picture = xml.parse(path).getroot()
        shown = [text.text for text in picture.iter(space + "text")]
        for label, ratio in zip(labels, ratios):
            self.assertIn(label, shown)
            self.assertIn(f"{ratio:.2f}", shown)
        bars = list(picture.iter(space + "rect"))[1:]  # behind the background
        self.assertEqual(len(bars), len(ratios))
        one = next(line for line in picture.iter(space + "line") if line.get("stroke") == "#555").get("x1")
        scale = [float(bar.get("width")) / abs(math.log(ratio)) for bar, ratio in zip(bars, ratios)]
        self.assertLess(max(scale) - min(scale), 0.5, "lengths are logarithms")
        for bar, ratio in zip(bars, ratios):
            start, width = float(bar.get("x")), float(bar.get("width"))
            self.assertAlmostEqual(start + width if ratio < 1 else start, float(one), delta=0.11)

    def test_nothing_is_published_of_what_is_not_whole(self):
        before = self.page.read_text()
        result = self.run_table("--write", self.page, ["util"])
        self.assertEqual(result.stderr, "bench_table.py: strings has not been measured\n")
        self.make_up("util", usual + [entry("other/std/1", 3, 3)])
        result = self.run_table("--write", self.page, [])
        self.assertEqual(result.returncode, 1)
        self.assertIn("other 1: no row of ours\n", result.stderr)
        self.make_up("util", [])
        self.assertIn("util: nothing was measured\n", self.run_table(["util"]).stderr)
        self.assertEqual(self.page.read_text(), before)
        self.make_up("util", usual)
        unmarked = self.top / "README.md"
        unmarked.write_text("no markers")
        result = self.run_table("--write", self.page, "--summary", unmarked, [])
        self.assertIn("has no markers", result.stderr)
        self.assertEqual(self.page.read_text(), before)
        self.assertFalse((self.top / "bench").joinpath("areas.svg").exists())


unittest.main()
